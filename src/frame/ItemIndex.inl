/// The operations of ItemIndex, for the three classes that instantiate it.
#pragma once

#include <veska/ItemIndex.h>

#include <cstdint>
#include <cstring>

#include "frame/image.h"
#include "frame/items.h"

namespace VESKA {

/// The one field of the header, which each index has by another name.
template <class Header>
int CountIn(const Header& header) {
  std::uint16_t count = 0;
  static_assert(sizeof header == sizeof count);
  std::memcpy(&count, &header, sizeof count);
  return count;
}

template <class Header, class Item, auto Address, auto Table>
void ItemIndex<Header, Item, Address, Table>::Clear() {
  header_ = {};
  items_.Clear();
}

template <class Header, class Item, auto Address, auto Table>
bool ItemIndex<Header, Item, Address, Table>::Parse(unsigned char* const table,
                                                    unsigned long offset) {
  return ParseTable(*this, table, offset);
}

template <class Header, class Item, auto Address, auto Table>
void ItemIndex<Header, Item, Address, Table>::Read(const ImageReader& table, unsigned long offset) {
  const ImageReader image = table.At(offset);
  image.Copy(0, header_);
  ReadItems<Address, Table>(table, std::uint64_t{offset} + sizeof header_, image.Word(0), items_);
}

template <class Header, class Item, auto Address, auto Table>
void ItemIndex<Header, Item, Address, Table>::AutoComplete(unsigned long base) {
  header_ = {static_cast<std::uint16_t>(items_.Count())};
  CompleteItems<Address, Table>(base + sizeof header_, items_);
}

template <class Header, class Item, auto Address, auto Table>
unsigned long ItemIndex<Header, Item, Address, Table>::GetDataSize() const {
  if (IsEmpty()) return 0;
  unsigned long size = sizeof header_;
  int left = CountIn(header_);
  for (const Item& item : items_) {
    if (left-- == 0) break;
    size += kAddressSize + (item.*Table).GetDataSize();
  }
  return size;
}

template <class Header, class Item, auto Address, auto Table>
void ItemIndex<Header, Item, Address, Table>::GetData(unsigned char* out) {
  Write(ImageWriter(out));
}

template <class Header, class Item, auto Address, auto Table>
std::uint64_t ItemIndex<Header, Item, Address, Table>::Write(const ImageWriter& out) const {
  if (IsEmpty()) return 0;
  out.Put(0, header_);
  const std::uint64_t end = WriteItems<Address, Table>(out, sizeof header_, items_);
  return items_.Count() == CountIn(header_) ? end : GetDataSize();
}

template <class Header, class Item, auto Address, auto Table>
bool ItemIndex<Header, Item, Address, Table>::operator==(const ItemIndex& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && items_ == other.items_;
}

}  // namespace VESKA
