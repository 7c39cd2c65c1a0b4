#include <veska/CMovieVOB.h>

#include "frame/image.h"

namespace VESKA {
namespace {

constexpr unsigned kSeamlessOffset = sizeof(tag_M_VOB_GI);

unsigned AudioGapsOffset(const tag_M_VOB_GI& header) {
  return kSeamlessOffset + (header.HasSeamlessInfo() ? unsigned{sizeof(tag_SMLI)} : 0U);
}

}  // namespace

CMovieVOB::~CMovieVOB() = default;

void CMovieVOB::Clear() {
  header_ = {};
  seamless_ = {};
  audio_gaps_ = {};
  time_map_.Clear();
}

unsigned CMovieVOB::TimeMapOffset() const {
  return AudioGapsOffset(header_) + (header_.HasAudioGaps() ? unsigned{sizeof(tag_AGAPI)} : 0U);
}

bool CMovieVOB::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CMovieVOB::Read(const ImageReader& image) {
  Clear();
  image.Copy(0, header_);
  if (header_.HasSeamlessInfo()) image.Copy(kSeamlessOffset, seamless_);
  if (header_.HasAudioGaps()) image.Copy(AudioGapsOffset(header_), audio_gaps_);
  time_map_.Read(image.At(TimeMapOffset()));
}

unsigned long CMovieVOB::GetDataSize() const {
  return IsEmpty() ? 0 : TimeMapOffset() + time_map_.GetDataSize();
}

void CMovieVOB::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CMovieVOB::Write(const ImageWriter& out) const {
  if (IsEmpty()) return;
  out.Put(0, header_);
  if (header_.HasSeamlessInfo()) out.Put(kSeamlessOffset, seamless_);
  if (header_.HasAudioGaps()) out.Put(AudioGapsOffset(header_), audio_gaps_);
  time_map_.Write(out.At(TimeMapOffset()));
}

bool CMovieVOB::operator==(const CMovieVOB& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && (!header_.HasSeamlessInfo() || seamless_ == other.seamless_) &&
         (!header_.HasAudioGaps() || audio_gaps_ == other.audio_gaps_) &&
         time_map_ == other.time_map_;
}

}  // namespace VESKA
