#include <veska/CTextSet.h>

#include "frame/image.h"

namespace VESKA {

constexpr unsigned long kTextHeader = kFileSize<tag_IT_TXT>;

CTextSet::~CTextSet() = default;

bool CTextSet::Parse(unsigned char* const data, unsigned long size) {
  return ParseTable(*this, data, std::uint64_t{size});
}

// Behind the records lies what was read, so that the texts take one copy, and an unchanged set goes
// back as it came.
void CTextSet::Read(const ImageReader& image, std::uint64_t size) {
  int count = 0;
  std::uint64_t end = 0;
  for (; end < size; ++count) {
    if (count == 0xFFFF) throw std::bad_alloc();
    end += kTextHeader + image.Byte(end + 1);
  }
  const unsigned char* from = image.Bytes(0, end);
  image.Spend(records_.BlockSize(count, end));

  unsigned char* next = records_.Load(count, end);
  if (end != 0) std::memcpy(next, from, static_cast<std::size_t>(end));
  for (tag_IT_TXT& record : records_) {
    record = {next[0], next[1], next[1] != 0 ? next + kTextHeader : nullptr};
    next += kTextHeader + record.length;
  }
}

std::span<const unsigned char> CTextSet::AsRead() const {
  const std::span<const unsigned char> read = records_.Spare();
  const unsigned char* next = read.data();
  std::size_t left = read.size();
  for (const tag_IT_TXT& record : records_) {
    const std::size_t size = kTextHeader + record.length;
    if (size > left || next[0] != record.code || next[1] != record.length ||
        (record.length != 0 && record.text != next + kTextHeader)) {
      return {};
    }
    next += size;
    left -= size;
  }
  return read.first(read.size() - left);
}

void CTextSet::SetNode(int i, const tag_IT_TXT& from) {
  tag_IT_TXT* record = GetNode(i);
  if (record == nullptr) return;
  const std::uint8_t code = from.code;
  const std::size_t length = from.text != nullptr ? from.length : 0;
  if (records_.SetBlock(*record, from.text, length)) record->code = code;
}

unsigned long CTextSet::GetDataSize() const {
  unsigned long size = 0;
  for (const tag_IT_TXT& record : records_) size += kTextHeader + record.length;
  return size;
}

void CTextSet::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CTextSet::Write(const ImageWriter& out) const {
  if (const auto read = AsRead(); !read.empty()) {
    out.PutBytes(0, read.data(), read.size());
    return;
  }
  std::uint64_t position = 0;
  for (const tag_IT_TXT& record : records_) {
    out.Put(position, record);
    position += kTextHeader;
    if (record.text == nullptr) continue;
    out.PutBytes(position, record.text, record.length);
    position += record.length;
  }
}

}  // namespace VESKA
