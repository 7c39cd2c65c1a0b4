#include <veska/CTextSet.h>

#include "frame/image.h"

namespace VESKA {

constexpr unsigned long kTextHeader = kFileSize<tag_IT_TXT>;

CTextSet::~CTextSet() = default;

bool CTextSet::Parse(unsigned char* const data, unsigned long size) {
  return ParseTable(*this, data, std::uint64_t{size});
}

void CTextSet::Read(const ImageReader& image, std::uint64_t size) {
  Clear();
  int count = 0;
  std::uint64_t end = 0;
  for (; end < size; ++count) {
    if (count == 0xFFFF) throw std::bad_alloc();
    end += kTextHeader + image.Byte(end + 1);
  }
  image.Bytes(0, end);
  const std::uint64_t texts = end - kTextHeader * static_cast<std::uint64_t>(count);
  image.Spend(records_.BlockSize(count, texts));

  unsigned char* room = records_.Reserve(count, texts);
  for (std::uint64_t p = 0; p < end;) {
    tag_IT_TXT* record = records_.Add();
    p = image.Copy(p, *record);
    records_.SetFirstBlock(*record, image.Bytes(p, record->length), record->length, room);
    p += record->length;
  }
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
