#include <veska/CStillAVFileTable.h>

#include "frame/image.h"

namespace VESKA {

CStillAVFileTable::~CStillAVFileTable() = default;

void CStillAVFileTable::Clear() {
  header_ = {};
  streams_.Clear();
  av_file_.Clear();
  audio_streams_.Clear();
  audio_file_.Clear();
}

bool CStillAVFileTable::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CStillAVFileTable::Read(const ImageReader& image) {
  image.Copy(0, header_);
  image.CopyAll(sizeof header_, header_.S_VOB_STI_Ns, streams_);
  unsigned long offset = SizeOf<tag_S_AVFITI>() + SizeOf<tag_S_VOB_STI>(header_.S_VOB_STI_Ns);
  if (HasStillAVFile()) {
    av_file_.Read(image, offset);
    offset += av_file_.GetDataSize();
  } else {
    av_file_.Clear();
  }
  image.CopyAll(offset, header_.S_A_ATR_Ns, audio_streams_);
  offset += SizeOf<tag_S_A_ATR>(header_.S_A_ATR_Ns);
  if (!HasAdditionalAFile()) return audio_file_.Clear();
  audio_file_.Read(image, offset);
}

void CStillAVFileTable::AutoComplete() {
  header_.S_VOB_STI_Ns = static_cast<std::uint8_t>(GetVOBStreamCount());
  header_.S_AVFI_Ns = av_file_.IsEmpty() ? 0 : 1;
  header_.S_A_ATR_Ns = static_cast<std::uint8_t>(GetAAStreamCount());
  header_.S_AAFI_Ns = audio_file_.IsEmpty() ? 0 : 1;

  unsigned long offset = SizeOf<tag_S_AVFITI>() + SizeOf<tag_S_VOB_STI>(header_.S_VOB_STI_Ns);
  av_file_.AutoComplete(offset);
  offset += av_file_.GetDataSize() + SizeOf<tag_S_A_ATR>(header_.S_A_ATR_Ns);
  audio_file_.AutoComplete(offset);
  offset += audio_file_.GetDataSize();
  header_.S_AVFIT_EA = static_cast<std::uint32_t>(offset - 1);
}

void CStillAVFileTable::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CStillAVFileTable::Write(const ImageWriter& out) const {
  out.Put(0, header_);
  if (header_.S_VOB_STI_Ns != 0) out.PutAll(sizeof header_, streams_);
  std::uint64_t offset = SizeOf<tag_S_AVFITI>() + SizeOf<tag_S_VOB_STI>(header_.S_VOB_STI_Ns);
  if (header_.S_AVFI_Ns == 1) offset += av_file_.Write(out.At(offset));
  if (header_.S_A_ATR_Ns != 0) out.PutAll(offset, audio_streams_);
  offset += SizeOf<tag_S_A_ATR>(header_.S_A_ATR_Ns);
  if (header_.S_AAFI_Ns == 1) audio_file_.Write(out.At(offset));
}

}  // namespace VESKA
