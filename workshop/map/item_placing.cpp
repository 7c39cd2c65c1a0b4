#include <algorithm>
#include <optional>

#include "map/index_walk.h"

namespace VESKA::workshop {
namespace {

class ItemPlacing {
 public:
  ItemPlacing(Walk& walk, const Index& index, const Room& room, const ItemKind& kind)
      : walk_(walk), index_(index), room_(room), kind_(kind) {}

  std::vector<Item> Place();

 private:
  std::string PointerOf(std::size_t i) const {
    return walk_.PointerOf(index_.info.item, static_cast<std::uint32_t>(i + 1));
  }
  void ReadItems();
  bool StartsWell(std::size_t i) const;
  bool EndsWell(std::size_t i, std::uint64_t end) const;
  void Relocate();
  std::size_t RelocateFrom(std::size_t first);
  void FindOverlaps();
  void FitLast(Item& item) const;
  void FindGap();
  void ReportLost();
  void ReportOrder();

  Walk& walk_;
  const Index& index_;
  const Room& room_;
  const ItemKind& kind_;
  std::vector<Item> items_;
};

std::vector<Item> ItemPlacing::Place() {
  ReadItems();
  Relocate();
  FindOverlaps();
  FindGap();
  ReportLost();
  ReportOrder();
  return std::move(items_);
}

void ItemPlacing::ReadItems() {
  items_ = ItemsOf(walk_, index_);
  for (Item& item : items_) {
    // Only a structure that takes no bytes can stand at the end.
    item.lost =
        item.at < index_.behind || item.at + (index_.info.least != 0 ? 1 : 0) > walk_.FileEnd();
    if (!item.lost) item.end = kind_.end(item, item.at);
  }
}

/// True when the item starts where the one before it ends.
bool ItemPlacing::StartsWell(std::size_t i) const {
  if (i == 0) return items_[0].at == index_.behind;
  return !items_[i - 1].lost && items_[i].at == items_[i - 1].end;
}

/// True when item `i`, ending at `end`, ends where the next one starts.
bool ItemPlacing::EndsWell(std::size_t i, std::uint64_t end) const {
  if (i + 1 < items_.size()) return end == items_[i + 1].stated;
  return end == room_.own || end == room_.next || walk_.IsTableStart(end);
}

/// Looks for items whose address is wrong: what follows the item before ends where the item behind
/// starts.
void ItemPlacing::Relocate() {
  for (std::size_t i = 0; i < items_.size();) {
    const bool anchored = !items_[i].lost && (StartsWell(i) || EndsWell(i, items_[i].end));
    i = anchored ? i + 1 : RelocateFrom(i);
  }
}

/// Tries this for the items from `first` on, as many as name no place. Returns the next to look
/// at.
std::size_t ItemPlacing::RelocateFrom(std::size_t first) {
  if (first > 0 && items_[first - 1].lost) return first + 1;
  std::uint64_t at = first == 0 ? index_.behind : items_[first - 1].end;
  std::vector<std::uint64_t> ends;
  for (std::size_t i = first; i < items_.size(); ++i) {
    const std::uint64_t end = kind_.end(items_[i], at);
    if (end > walk_.FileEnd()) break;
    ends.push_back(end);
    if (EndsWell(i, end)) {
      at = first == 0 ? index_.behind : items_[first - 1].end;
      for (std::size_t k = first; k <= i; ++k) {
        Item& item = items_[k];
        if (item.stated != at) {
          walk_.Report(Code::kElsewhere, item.pointer, PointerOf(k),
                       AddressText(index_, item.stated), std::to_string(at - index_.base));
        }
        item.at = at;
        item.end = at = ends[k - first];
        item.lost = false;
      }
      return i + 1;
    }
    if (i + 1 < items_.size() && !items_[i + 1].lost) break;
    at = end;
  }
  return first + 1;
}

/// Of two that overlap, one that ends where its successor starts is right, and the other's address
/// wrong. Otherwise the counts of the first are wrong.
void ItemPlacing::FindOverlaps() {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (!items_[i].lost && items_[i].end > items_[i].at) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return items_[a].at < items_[b].at; });

  const auto lose = [&](std::size_t i, std::size_t other) {
    items_[i].lost = true;
    walk_.Report(Code::kOverlap, items_[i].pointer, PointerOf(i),
                 AddressText(index_, items_[i].stated) + ", which is in " +
                     Singular(InfoOf(index_.info.item).key) + " " + std::to_string(other + 1));
  };
  std::optional<std::size_t> last;
  for (const std::size_t i : order) {
    if (last && items_[i].at < items_[*last].end) {
      const bool starts_well = StartsWell(*last);
      const bool same_start = items_[i].at == items_[*last].at;
      if (EndsWell(*last, items_[*last].end) || (same_start && starts_well)) {
        lose(i, *last);
        continue;
      }
      if (!starts_well || same_start) {
        lose(*last, i);
      } else {
        items_[*last].fit = {items_[i].at, true};
      }
      last = i;
    } else if (!last || items_[i].end >= items_[*last].end) {
      last = i;
    }
  }
  if (last) FitLast(items_[*last]);
}

/// The last item has to end where something else starts.
void ItemPlacing::FitLast(Item& item) const {
  if (item.fit.end != 0) return;
  if (item.end <= room_.next || item.at >= room_.next || item.end == room_.own ||
      walk_.IsTableStart(item.end)) {
    return;
  }
  item.fit = {room_.own > item.at && room_.own <= room_.next ? room_.own : room_.next, true};
}

/// In an index whose items follow each other but for one gap, that gap may be what a count lacks.
void ItemPlacing::FindGap() {
  if (items_.empty() || !StartsWell(0)) return;
  std::optional<std::size_t> gap;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (items_[i].lost || items_[i].fit.end != 0) return;
    const bool is_last = i + 1 == items_.size();
    const bool is_well =
        is_last ? room_.own == 0 || EndsWell(i, items_[i].end) : items_[i].end == items_[i + 1].at;
    if (is_well) continue;
    if (gap) return;
    gap = i;
  }
  if (!gap) return;
  Item& item = items_[*gap];
  const std::uint64_t end = *gap + 1 < items_.size() ? items_[*gap + 1].at : room_.own;
  if (item.end < end && end <= walk_.FileEnd() && !walk_.Image().IsZero(item.end, end - item.end)) {
    item.fit = {end, false};
  }
}

void ItemPlacing::ReportLost() {
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const Item& item = items_[i];
    if (!item.lost || (item.stated >= index_.behind && item.stated < walk_.FileEnd())) continue;
    const std::string pointer = PointerOf(i);
    const bool is_cut = item.stated >= walk_.FileEnd() && item.stated < walk_.claimed_end;
    walk_.Report(
        is_cut ? Code::kPastFile : Code::kAddressOutside, item.pointer, pointer,
        AddressText(index_, item.stated) + (item.stated < std::min(index_.behind, walk_.FileEnd())
                                                ? ", where the index itself stands"
                                                : ", past the end of the file"));
  }
}

void ItemPlacing::ReportOrder() {
  for (std::size_t i = 1; i < items_.size(); ++i) {
    if (items_[i].lost || items_[i - 1].lost || items_[i].at >= items_[i - 1].at) continue;
    walk_.Report(Code::kOrder, items_[i].pointer, PointerOf(i),
                 AddressText(index_, items_[i].stated) + ", before " +
                     Singular(InfoOf(index_.info.item).key) + " " + std::to_string(i));
    return;
  }
}

}  // namespace

std::vector<Item> PlaceItems(Walk& walk, const Index& index, const Room& room,
                             const ItemKind& kind) {
  return ItemPlacing(walk, index, room, kind).Place();
}

}  // namespace VESKA::workshop
