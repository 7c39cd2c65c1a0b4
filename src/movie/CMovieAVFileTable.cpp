#include <veska/CMovieAVFileTable.h>

#include "frame/image.h"

namespace VESKA {
namespace {

unsigned long AVFileOffset(int streams) {
  return SizeOf<tag_M_AVFITI>() + SizeOf<tag_M_VOB_STI>(streams);
}

}  // namespace

CMovieAVFileTable::~CMovieAVFileTable() = default;

void CMovieAVFileTable::Clear() {
  header_ = {};
  streams_.Clear();
  av_file_.Clear();
}

bool CMovieAVFileTable::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CMovieAVFileTable::Read(const ImageReader& image) {
  image.Copy(0, header_);
  image.CopyAll(sizeof header_, header_.M_VOB_STI_Ns, streams_);
  if (!HasMovieAVFile()) return av_file_.Clear();
  av_file_.Read(image, AVFileOffset(GetStreamCount()));
}

void CMovieAVFileTable::AutoComplete() {
  const unsigned long base = AVFileOffset(GetStreamCount());
  header_.M_AVFI_Ns = av_file_.IsEmpty() ? 0 : 1;
  header_.M_VOB_STI_Ns = static_cast<std::uint8_t>(GetStreamCount());
  av_file_.AutoComplete(base);
  header_.M_AVFIT_EA = static_cast<std::uint32_t>(base + av_file_.GetDataSize() - 1);
}

void CMovieAVFileTable::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CMovieAVFileTable::Write(const ImageWriter& out) const {
  out.Put(0, header_);
  out.PutAll(sizeof header_, streams_);
  av_file_.Write(out.At(AVFileOffset(GetStreamCount())));
}

}  // namespace VESKA
