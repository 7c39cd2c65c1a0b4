#include <veska/CVMGI_MAT.h>

#include "frame/image.h"

namespace VESKA {

CVMGI_MAT::~CVMGI_MAT() = default;

void CVMGI_MAT::Clear() {
  header_ = {};
  play_lists_.Clear();
}

bool CVMGI_MAT::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CVMGI_MAT::Read(const ImageReader& image) {
  image.Copy(0, header_);
  play_lists_.Read(image.At(sizeof header_));
}

void CVMGI_MAT::AutoComplete() {
  play_lists_.AutoComplete();
  header_.VMGI_MAT_EA = static_cast<std::uint32_t>(GetDataSize() - 1);
}

unsigned long CVMGI_MAT::GetDataSize() const { return sizeof header_ + play_lists_.GetDataSize(); }

void CVMGI_MAT::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CVMGI_MAT::Write(const ImageWriter& out) const {
  out.Put(0, header_);
  play_lists_.Write(out.At(sizeof header_));
}

}  // namespace VESKA
