#include "index_walk.h"

#include <algorithm>

namespace veska_tool {

std::uint64_t IndexWalk::Address(const Index& index, std::uint64_t i) const {
  return index.base + image_.Number(index.Pointer(i), index.width);
}

bool IndexWalk::IsTableStart(std::uint64_t offset) const {
  return std::binary_search(table_starts_.begin(), table_starts_.end(), offset);
}

// --- How many addresses there are ----------------------------------------------------------------

bool IndexWalk::IsOrderly(const Index& index, std::uint64_t first, std::uint64_t count,
                          std::uint64_t end) {
  std::uint64_t free = index.Pointer(count);
  for (std::uint64_t i = first; i < count; ++i) {
    Spend(index.stride);
    const std::uint64_t address = Address(index, i);
    if (address < free) return false;
    free = address + index.least;
  }
  return free <= end;
}

std::optional<std::uint64_t> IndexWalk::ImpliedCount(const Index& index, std::uint64_t end) {
  const std::uint64_t first = Address(index, 0);
  if (first <= index.addresses || (first - index.addresses) % index.stride != 0) return {};
  const std::uint64_t count = (first - index.addresses) / index.stride;
  if (count > index.largest || !IsOrderly(index, 0, count, end)) return {};
  return count;
}

bool IndexWalk::AddressesInRange(const Index& index) {
  const std::uint64_t count = index.count.value;
  if (count == 0 || index.Pointer(count) > claimed_end_) return false;
  for (std::uint64_t i = 0; i < count && index.Pointer(i) < FileEnd(); ++i) {
    Spend(index.stride);
    const std::uint64_t address = Address(index, i);
    if (address < index.Pointer(count) || address >= claimed_end_) return false;
  }
  return true;
}

bool IndexWalk::IndexStands(const Index& index, std::uint64_t end) {
  return ImpliedCount(index, end).has_value() || AddressesInRange(index);
}

std::uint64_t IndexWalk::BlocksBefore(const FileNumber& blocks, const Room& room,
                                      const std::function<Index(std::uint64_t n)>& place) {
  const Index stated = place(blocks.value);
  const bool is_empty =
      stated.count.value == 0 && (stated.addresses == room.own || stated.addresses == room.next);
  if (is_empty || IndexStands(stated, room.next)) return blocks.value;
  std::optional<std::uint64_t> found;
  for (std::uint64_t n = 0; n <= 0xFF; ++n) {
    if (!ImpliedCount(place(n), room.next)) continue;
    if (found) return blocks.value;
    found = n;
  }
  if (!found) return blocks.value;
  ReportCount(blocks, *found);
  return *found;
}

std::uint64_t IndexWalk::CountOf(const Index& index, const Room& room) {
  std::uint64_t count = index.count.value;
  const auto implied = ImpliedCount(index, room.next);
  // With fewer addresses than stated the first address may be what is wrong.
  const bool first_is_wrong = implied && *implied < count && IsOrderly(index, 1, count, room.next);
  if (implied && *implied != count && !first_is_wrong) {
    ReportCount(index.count, *implied);
    count = *implied;
  }
  return count;
}

std::uint64_t IndexWalk::AddIndex(const Index& index, const Room& room) {
  const std::uint64_t count = CountOf(index, room);
  const std::uint64_t there =
      image_.At(index.addresses, index.stride * count).size() / index.stride;
  if (count == 0) {
    const std::int32_t added = Add(index.part, index.start, index.addresses - index.start);
    Structure& structure = map_.structures[static_cast<std::size_t>(added)];
    structure.count = structure.counted = 0;
  }
  AddCounted(index.part, index.start, index.Pointer(there) - index.start,
             {index.count.name, index.count.offset, count}, there);
  return there;
}

// --- Where they lead -----------------------------------------------------------------------------

std::uint64_t IndexWalk::WalkIndex(Index index, const Room& room, const ItemKind& kind,
                                   std::optional<std::uint64_t>* size) {
  index.count.value = AddIndex(index, room);
  const std::uint64_t n = index.count.value;

  std::vector<Item> items = ReadItems(index, kind);
  Relocate(index, items, room, kind);
  FindOverlaps(index, items, room);
  FindGap(index, items, room);
  ReportLost(index, items);
  ReportOrder(index, items);

  std::uint64_t end = index.Pointer(n);
  std::uint64_t sum = end - index.start;
  bool complete = true;
  for (std::size_t i = 0; i < items.size(); ++i) {
    Item& item = items[i];
    const auto number = static_cast<std::uint32_t>(i + 1);
    if (item.lost) {
      AddLost(index.item, number);
      complete = false;
      continue;
    }
    item.room = room;
    if (i + 1 < items.size() && !items[i + 1].lost && items[i + 1].at > item.at) {
      item.room = {items[i + 1].at, items[i + 1].at};
    }
    const std::uint64_t item_end = kind.walk(item, number);
    sum += item_end - item.at;
    end = std::max(end, item_end);
  }
  if (size != nullptr && complete) *size = sum;
  return end;
}

std::vector<Item> IndexWalk::ReadItems(const Index& index, const ItemKind& kind) {
  const std::uint64_t n = index.count.value;
  Spend(sizeof(Item) / 8 * n);
  std::vector<Item> items(static_cast<std::size_t>(n));
  for (std::uint64_t i = 0; i < n; ++i) {
    Item& item = items[static_cast<std::size_t>(i)];
    item.pointer = index.Pointer(i);
    item.stated = item.at = Address(index, i);
    // Only a structure that takes no bytes can stand at the end.
    item.lost = item.at < index.Pointer(n) || item.at + (index.least != 0 ? 1 : 0) > FileEnd();
    if (!item.lost) item.end = kind.end(item, item.at);
  }
  return items;
}

/// True when the item starts where the one before it ends.
bool IndexWalk::StartsWell(const Index& index, const std::vector<Item>& items,
                           std::size_t i) const {
  if (i == 0) return items[0].at == index.Pointer(items.size());
  return !items[i - 1].lost && items[i].at == items[i - 1].end;
}

/// True when item `i`, ending at `end`, ends where the next one starts.
bool IndexWalk::EndsWell(const std::vector<Item>& items, std::size_t i, std::uint64_t end,
                         const Room& room) const {
  if (i + 1 < items.size()) return end == items[i + 1].stated;
  return end == room.own || end == room.next || IsTableStart(end);
}

/// Looks for items whose address is wrong: what follows the item before ends where the item behind
/// starts.
void IndexWalk::Relocate(const Index& index, std::vector<Item>& items, const Room& room,
                         const ItemKind& kind) {
  for (std::size_t i = 0; i < items.size();) {
    const bool anchored =
        !items[i].lost && (StartsWell(index, items, i) || EndsWell(items, i, items[i].end, room));
    i = anchored ? i + 1 : RelocateFrom(i, index, items, room, kind);
  }
}

/// Tries this for the items from `first` on, as many as name no place. Returns the next to look at.
std::size_t IndexWalk::RelocateFrom(std::size_t first, const Index& index, std::vector<Item>& items,
                                    const Room& room, const ItemKind& kind) {
  if (first > 0 && items[first - 1].lost) return first + 1;
  std::uint64_t at = first == 0 ? index.Pointer(items.size()) : items[first - 1].end;
  std::vector<std::uint64_t> ends;
  for (std::size_t i = first; i < items.size(); ++i) {
    const std::uint64_t end = kind.end(items[i], at);
    if (end > FileEnd()) break;
    ends.push_back(end);
    if (EndsWell(items, i, end, room)) {
      at = first == 0 ? index.Pointer(items.size()) : items[first - 1].end;
      for (std::size_t k = first; k <= i; ++k) {
        Item& item = items[k];
        if (item.stated != at) {
          Report(Code::kElsewhere, item.pointer,
                 PathOf(index.item, static_cast<std::uint32_t>(k + 1)),
                 AddressText(index, item.stated), std::to_string(at - index.base));
        }
        item.at = at;
        item.end = at = ends[k - first];
        item.lost = false;
      }
      return i + 1;
    }
    if (i + 1 < items.size() && !items[i + 1].lost) break;
    at = end;
  }
  return first + 1;
}

/// Of two that overlap, one that ends where its successor starts is right, and the other's address
/// wrong. Otherwise the counts of the first are wrong.
void IndexWalk::FindOverlaps(const Index& index, std::vector<Item>& items, const Room& room) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!items[i].lost && items[i].end > items[i].at) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return items[a].at < items[b].at; });

  const auto lose = [&](std::size_t i, std::size_t other) {
    items[i].lost = true;
    Report(Code::kOverlap, items[i].pointer, PathOf(index.item, static_cast<std::uint32_t>(i + 1)),
           AddressText(index, items[i].stated) + ", which is in " + InfoOf(index.item).name + " " +
               std::to_string(other + 1));
  };
  std::optional<std::size_t> last;
  for (const std::size_t i : order) {
    if (last && items[i].at < items[*last].end) {
      const bool starts_well = StartsWell(index, items, *last);
      const bool same_start = items[i].at == items[*last].at;
      if (EndsWell(items, *last, items[*last].end, room) || (same_start && starts_well)) {
        lose(i, *last);
        continue;
      }
      if (!starts_well || same_start) {
        lose(*last, i);
      } else {
        items[*last].fit = {items[i].at, true};
      }
      last = i;
    } else if (!last || items[i].end >= items[*last].end) {
      last = i;
    }
  }
  if (!last || items[*last].fit.end != 0) return;
  Item& item = items[*last];
  if (item.end <= room.next || item.at >= room.next || item.end == room.own ||
      IsTableStart(item.end)) {
    return;
  }
  item.fit = {room.own > item.at && room.own <= room.next ? room.own : room.next, true};
}

/// In an index whose items follow each other but for one gap, that gap may be what a count lacks.
void IndexWalk::FindGap(const Index& index, std::vector<Item>& items, const Room& room) {
  if (items.empty() || !StartsWell(index, items, 0)) return;
  std::optional<std::size_t> gap;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].lost || items[i].fit.end != 0) return;
    const bool is_last = i + 1 == items.size();
    const bool is_well = is_last ? room.own == 0 || EndsWell(items, i, items[i].end, room)
                                 : items[i].end == items[i + 1].at;
    if (is_well) continue;
    if (gap) return;
    gap = i;
  }
  if (!gap) return;
  Item& item = items[*gap];
  const std::uint64_t end = *gap + 1 < items.size() ? items[*gap + 1].at : room.own;
  if (item.end < end && end <= FileEnd() && !image_.IsZero(item.end, end - item.end)) {
    item.fit = {end, false};
  }
}

void IndexWalk::ReportLost(const Index& index, const std::vector<Item>& items) {
  const std::uint64_t first = index.Pointer(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Item& item = items[i];
    if (!item.lost || (item.stated >= first && item.stated < FileEnd())) continue;
    const std::string path = PathOf(index.item, static_cast<std::uint32_t>(i + 1));
    const bool is_cut = item.stated >= FileEnd() && item.stated < claimed_end_;
    Report(
        is_cut ? Code::kPastFile : Code::kAddressOutside, item.pointer, path,
        AddressText(index, item.stated) + (item.stated < first ? ", where the index itself stands"
                                                               : ", past the end of the file"));
  }
}

void IndexWalk::ReportOrder(const Index& index, const std::vector<Item>& items) {
  for (std::size_t i = 1; i < items.size(); ++i) {
    if (items[i].lost || items[i - 1].lost || items[i].at >= items[i - 1].at) continue;
    Report(Code::kOrder, items[i].pointer, PathOf(index.item, static_cast<std::uint32_t>(i + 1)),
           AddressText(index, items[i].stated) + ", before " + InfoOf(index.item).name + " " +
               std::to_string(i));
    return;
  }
}

std::string IndexWalk::AddressText(const Index& index, std::uint64_t address) const {
  return std::string(index.address_name) + " is " + std::to_string(address - index.base);
}

}  // namespace veska_tool
