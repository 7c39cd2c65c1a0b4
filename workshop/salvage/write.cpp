#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void AppendNumber(Bytes& bytes, unsigned width, std::uint64_t number) {
  bytes.resize(bytes.size() + width);
  SetBigEndian(bytes.data() + bytes.size() - width, width, number);
}

/// Sets a field of the record that stands at `at`.
void Set(Bytes& bytes, std::size_t at, Part record, const char* name, std::uint64_t value) {
  const Field& field = FieldNamed(InfoOf(record).fields, name);
  SetBigEndian(&bytes[at + field.offset], field.width, value);
}

/// Appends a header that as yet counts nothing.
void AppendHeader(Bytes& bytes, const Kept& header) {
  const std::size_t at = bytes.size();
  Append(bytes, header.bytes);
  const bool is_still =
      header.part == Part::kStillCellInfo;  // which counts as that of a movie cell
  const Part part = is_still ? Part::kMovieCellInfo : header.part;
  for (const PartInfo& info : Parts()) {
    if (info.counted.in == part) Set(bytes, at, part, info.counted.by, 0);
  }
}

Bytes BytesOf(const Kept& kept);

/// Appends an index, whose addresses count from the header, and what it names; nothing where there
/// is nothing. The header counts that, or tells that an index with its own count is there.
void AppendIndex(Bytes& bytes, std::size_t header, const Kept& index) {
  std::vector<Bytes> items;
  for (const Kept& item : index.parts) {
    if (!item.is_lost || item.part == Part::kTextSet) items.push_back(BytesOf(item));
  }
  if (items.empty()) return;
  const PartInfo& part = InfoOf(index.part);
  const bool has_own = !part.fields.empty();
  Set(bytes, header, part.counted.in, part.counted.by, has_own ? 1 : items.size());
  if (has_own) AppendNumber(bytes, part.fields[0].width, items.size());
  const IndexInfo& info = IndexInfoOf(index.part);
  std::uint64_t at = bytes.size() + items.size() * (info.width + info.size_width) - header;
  for (const Bytes& item : items) {
    AppendNumber(bytes, info.width, at);
    AppendNumber(bytes, info.size_width, item.size());
    at += item.size();
  }
  for (const Bytes& item : items) Append(bytes, item);
}

/// A table or an item: each header counts what stands behind it.
Bytes BytesOf(const Kept& kept) {
  Bytes bytes = kept.bytes;
  std::size_t header = 0;
  for (const Kept& part : kept.parts) {
    const PartInfo& info = InfoOf(part.part);
    if (info.role == Role::kHeader) {
      header = bytes.size();
      AppendHeader(bytes, part);
    } else if (info.role == Role::kIndex) {
      AppendIndex(bytes, header, part);
    } else {
      Append(bytes, part.bytes);
      if (info.counted.by != nullptr) {
        Set(bytes, header, info.counted.in, info.counted.by, part.count);
      }
    }
  }
  return bytes;
}

}  // namespace

Bytes Write(const KeptTables& tables) {
  Bytes image = tables[IndexOf(Table::kHeader)].bytes;
  for (const TableInfo& row : kTables) {
    if (row.table <= Table::kHeader) continue;
    Bytes table = BytesOf(tables[IndexOf(row.table)]);
    const bool is_empty = table.size() == RecordSize(HeaderOf(row.table));
    if (row.table == Table::kManufacturers) {  // where the last information ends
      Set(table, 0, Part::kManufacturerHeader, "MNFIT_EA", table.size() - 1);
    }
    const bool is_there = !is_empty || !row.is_left_out;
    if (row.field != nullptr) {
      Set(image, 0, Part::kFileHeader, row.field, is_there ? image.size() : 0);
    }
    if (is_there) Append(image, table);
  }
  return image;
}

}  // namespace VESKA::workshop
