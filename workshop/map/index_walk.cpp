#include "map/index_walk.h"

#include <algorithm>

namespace VESKA::workshop {

Index IndexAt(const Walk& walk, Part part, std::uint64_t header, std::uint64_t at) {
  const auto own = InfoOf(part).fields;
  if (own.empty()) return {IndexInfoOf(part), walk.CountOf(part, header), at, at, header};
  return {IndexInfoOf(part), walk.Number(own[0], at), at, at + own[0].width, header};
}

std::uint64_t Address(const Walk& walk, const Index& index, std::uint64_t i) {
  return index.base + walk.Image().Number(index.Pointer(i), index.info.width);
}

std::string AddressText(const Index& index, std::uint64_t address) {
  return std::string(index.info.address) + " is " + std::to_string(address - index.base);
}

bool IsOrderly(Walk& walk, const Index& index, std::uint64_t first, std::uint64_t count,
               std::uint64_t end) {
  std::uint64_t free = index.Pointer(count);
  for (std::uint64_t i = first; i < count; ++i) {
    walk.Spend(index.Stride());
    const std::uint64_t address = Address(walk, index, i);
    if (address < free) return false;
    free = address + index.info.least;
  }
  return free <= end;
}

std::optional<std::uint64_t> ImpliedCount(Walk& walk, const Index& index, std::uint64_t end) {
  const std::uint64_t first = Address(walk, index, 0);
  if (!walk.Image().Holds(index.addresses, index.info.width) || first <= index.addresses ||
      (first - index.addresses) % index.Stride() != 0)
    return {};
  const std::uint64_t count = (first - index.addresses) / index.Stride();
  if (count > index.count.largest || !IsOrderly(walk, index, 0, count, end)) return {};
  return count;
}

// --- How many addresses there are
// -----------------------------------------------------------------

namespace {

bool AddressesInRange(Walk& walk, const Index& index) {
  const std::uint64_t count = index.count.value;
  if (count == 0 || index.Pointer(count) > walk.claimed_end) return false;
  for (std::uint64_t i = 0; i < count && index.Pointer(i) < walk.FileEnd(); ++i) {
    walk.Spend(index.Stride());
    const std::uint64_t address = Address(walk, index, i);
    if (address < index.Pointer(count) || address >= walk.claimed_end) return false;
  }
  return true;
}

bool IndexStands(Walk& walk, const Index& index, std::uint64_t end) {
  return ImpliedCount(walk, index, end).has_value() || AddressesInRange(walk, index);
}

std::uint64_t CountOf(Walk& walk, const Index& index, const Room& room) {
  std::uint64_t count = index.count.value;
  const auto implied = ImpliedCount(walk, index, room.next);
  // With fewer addresses than stated the first address may be what is wrong.
  const bool first_is_wrong =
      implied && *implied < count && IsOrderly(walk, index, 1, count, room.next);
  if (implied && *implied != count && !first_is_wrong) {
    walk.ReportCount(index.count, *implied);
    count = *implied;
  }
  return count;
}

}  // namespace

std::uint64_t BlocksBefore(Walk& walk, const FileNumber& blocks, const Room& room,
                           const std::function<Index(std::uint64_t n)>& place) {
  const Index stated = place(blocks.value);
  const bool is_empty =
      stated.count.value == 0 && (stated.addresses == room.own || stated.addresses == room.next);
  if (is_empty || IndexStands(walk, stated, room.next)) return blocks.value;
  std::optional<std::uint64_t> found;
  for (std::uint64_t n = 0; n <= 0xFF; ++n) {
    if (!ImpliedCount(walk, place(n), room.next)) continue;
    if (found) return blocks.value;
    found = n;
  }
  if (!found) return blocks.value;
  walk.ReportCount(blocks, *found);
  return *found;
}

void AddIndex(Walk& walk, Index& index, const Room& room) {
  const std::uint64_t count = CountOf(walk, index, room);
  const std::uint64_t there =
      walk.Image().At(index.addresses, index.Stride() * count).size() / index.Stride();
  if (count == 0) {
    const std::int32_t added =
        walk.Add(index.info.index, index.start, index.addresses - index.start);
    Structure& structure = walk.Map().structures[static_cast<std::size_t>(added)];
    structure.count = structure.counted = 0;
  }
  index.count.value = count;
  walk.AddCounted(index.info.index, index.start, index.Pointer(there) - index.start, index.count,
                  there);
  index.count.value = there;
  index.behind = index.Pointer(count);
}

std::vector<Item> ItemsOf(Walk& walk, const Index& index) {
  const std::uint64_t n = index.count.value;
  walk.Spend(sizeof(Item) / 8 * n);
  std::vector<Item> items(static_cast<std::size_t>(n));
  for (std::uint64_t i = 0; i < n; ++i) {
    Item& item = items[static_cast<std::size_t>(i)];
    item.pointer = index.Pointer(i);
    item.stated = item.at = Address(walk, index, i);
  }
  return items;
}

// --- Where they lead
// ------------------------------------------------------------------------------

std::uint64_t WalkIndex(Walk& walk, Index index, const Room& room, const ItemKind& kind,
                        std::optional<std::uint64_t>* size) {
  AddIndex(walk, index, room);
  std::vector<Item> items = PlaceItems(walk, index, room, kind);

  std::uint64_t end = index.Pointer(index.count.value);
  std::uint64_t sum = end - index.start;
  bool complete = true;
  bool is_cut = end != index.behind;
  for (std::size_t i = 0; i < items.size(); ++i) {
    Item& item = items[i];
    const auto number = static_cast<std::uint32_t>(i + 1);
    if (item.lost) {
      walk.AddLost(index.info.item, number);
      complete = false;
      continue;
    }
    item.room = room;
    if (i + 1 < items.size() && !items[i + 1].lost && items[i + 1].at > item.at) {
      item.room = {items[i + 1].at, items[i + 1].at};
    }
    const std::size_t position = walk.Map().structures.size();
    const std::uint64_t item_end = kind.walk(item, number);
    is_cut = is_cut || walk.Map().structures[position].state == State::kCut;
    sum += item_end - item.at;
    end = std::max(end, item_end);
  }
  if (is_cut) sum = walk.FileEnd() - index.start;
  if (size != nullptr && (complete || is_cut)) *size = sum;
  return end;
}

}  // namespace VESKA::workshop
