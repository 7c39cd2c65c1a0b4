/// Lists of items: start addresses in a row, then the tables that they point to.
#pragma once

#include <veska/RecordList.h>

#include <cstdint>

#include "frame/image.h"

namespace VESKA {

/// The width of a start address in the file in bytes.
inline constexpr unsigned long kAddressSize = 4;

/// Fills `items` with `count` items whose addresses stand packed at `pointers`, and reads each
/// item's table there. Both count from the start of `image`.
template <auto Address, auto Table, class Item, int Limit>
void ReadItems(const ImageReader& image, std::uint64_t pointers, int count,
               RecordList<Item, Limit>& items) {
  const auto n = static_cast<std::uint64_t>(count);
  const unsigned char* pointer = image.Bytes(pointers, kAddressSize * n);
  image.Spend(items.BlockSize(count));
  items.Renew(count);
  const int renewed = items.Count();
  for (int i = 0; i < count; ++i, pointer += kAddressSize) {
    Item& item = i < renewed ? *items.Get(i) : items.AddReserved();
    item.*Address = FromFile<std::uint32_t>(pointer);
    (item.*Table).Read(image.At(item.*Address));
  }
}

/// Completes each item's table and gives it its address, the first one right behind the addresses.
/// Returns the address behind the last table.
template <auto Address, auto Table, class Item, int Limit>
unsigned long CompleteItems(unsigned long pointers, RecordList<Item, Limit>& items) {
  unsigned long address = pointers + kAddressSize * static_cast<unsigned long>(items.Count());
  for (Item& item : items) {
    item.*Address = static_cast<std::uint32_t>(address);
    (item.*Table).AutoComplete();
    address += (item.*Table).GetDataSize();
  }
  return address;
}

/// Writes the addresses as stored at `pointers`, and the tables back to back behind them. Returns
/// the position behind the last table.
template <auto Address, auto Table, class Item, int Limit>
std::uint64_t WriteItems(const ImageWriter& out, std::uint64_t pointers,
                         const RecordList<Item, Limit>& items) {
  std::uint64_t position = pointers + kAddressSize * static_cast<std::uint64_t>(items.Count());
  for (const Item& item : items) {
    out.PutLong(pointers, item.*Address);
    const std::uint64_t size = (item.*Table).Write(out.At(position));
    if (size == 0) out.Refuse();  // its address would name what follows
    pointers += kAddressSize;
    position += size;
  }
  return position;
}

}  // namespace VESKA
