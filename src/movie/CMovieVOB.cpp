#include <veska/CMovieVOB.h>

#include "frame/image.h"

namespace VESKA {

CMovieVOB::~CMovieVOB() = default;

void CMovieVOB::Clear() {
  header_ = {};
  seamless_ = {};
  audio_gaps_ = {};
  time_map_.Clear();
}

bool CMovieVOB::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CMovieVOB::Read(const ImageReader& image) {
  std::uint64_t end = image.Copy(0, header_);
  seamless_ = {};
  audio_gaps_ = {};
  if (header_.HasSeamlessInfo()) end = image.Copy(end, seamless_);
  if (header_.HasAudioGaps()) end = image.Copy(end, audio_gaps_);
  time_map_.Read(image.At(end));
}

unsigned long CMovieVOB::GetDataSize() const {
  if (IsEmpty()) return 0;
  return SizeOf<tag_M_VOB_GI>() + SizeOf<tag_SMLI>(header_.HasSeamlessInfo() ? 1 : 0) +
         SizeOf<tag_AGAPI>(header_.HasAudioGaps() ? 1 : 0) + time_map_.GetDataSize();
}

void CMovieVOB::GetData(unsigned char* out) { Write(ImageWriter(out)); }

std::uint64_t CMovieVOB::Write(const ImageWriter& out) const {
  if (IsEmpty()) return 0;
  std::uint64_t end = out.Put(0, header_);
  if (header_.HasSeamlessInfo()) end = out.Put(end, seamless_);
  if (header_.HasAudioGaps()) end = out.Put(end, audio_gaps_);
  return end + time_map_.Write(out.At(end));
}

bool CMovieVOB::operator==(const CMovieVOB& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && (!header_.HasSeamlessInfo() || seamless_ == other.seamless_) &&
         (!header_.HasAudioGaps() || audio_gaps_ == other.audio_gaps_) &&
         time_map_ == other.time_map_;
}

}  // namespace VESKA
