// The walk over program chains, texts and manufacturer records.
#include <algorithm>

#include "map/index_walk.h"

namespace VESKA::workshop {

namespace {

constexpr std::uint64_t kInformationSize = kFileSize<tag_A_MNFI>;

std::uint64_t EndOfCell(Walk& walk, std::uint64_t at, bool is_still) {
  const std::uint64_t count = walk.CountOf(Part::kEntryPoints, at).value;
  return is_still ? EndOfEntries(walk, at + kFileSize<tag_S_C_GI>, count, StillEntryPointSize)
                  : EndOfEntries(walk, at + kFileSize<tag_M_C_GI>, count, MovieEntryPointSize);
}

std::uint64_t Cell(Walk& walk, const Item& item, std::uint32_t number) {
  return walk.AddWhole(Part::kCell, item.at, number, [&] {
    bool is_still = IsStillCell(walk.Image(), item.at);
    const std::uint64_t fit = item.fit.end;
    if (fit != 0 && EndOfCell(walk, item.at, is_still) != fit &&
        EndOfCell(walk, item.at, !is_still) == fit) {
      walk.Report(Code::kWrongCellKind, item.at + offsetof(tag_M_C_GI, C_TY), walk.Here(),
                  is_still ? "the kind is still" : "the kind is movie",
                  is_still ? "movie" : "still");
      is_still = !is_still;
    }
    const Part info = is_still ? Part::kStillCellInfo : Part::kMovieCellInfo;
    walk.Add(info, item.at);
    return AddEntries(walk, Part::kEntryPoints, item.at + RecordSize(info),
                      walk.CountOf(Part::kEntryPoints, item.at),
                      is_still ? StillEntryPointSize : MovieEntryPointSize, item.fit);
  });
}

std::uint64_t Chain(Walk& walk, std::uint64_t at, const Room& room) {
  walk.Add(Part::kChainHeader, at);
  const std::uint64_t programs_at = at + kFileSize<tag_PGC_GI>;
  const auto index_behind = [&](std::uint64_t programs) {
    return IndexAt(walk, Part::kCellIndex, at, programs_at + kFileSize<tag_PGI> * programs);
  };
  FileNumber programs = walk.CountOf(Part::kPrograms, at);
  programs.value = BlocksBefore(walk, programs, room, index_behind);
  walk.AddRun(Part::kPrograms, programs_at, programs);
  const ItemKind kind{
      [&walk](const Item&, std::uint64_t cell) {
        return EndOfCell(walk, cell, IsStillCell(walk.Image(), cell));
      },
      [&walk](const Item& item, std::uint32_t number) { return Cell(walk, item, number); }};
  return WalkIndex(walk, index_behind(programs.value), room, kind);
}

/// Where a chain ends is known only once it is walked.
std::uint64_t EndOfChain(Walk& walk, std::uint64_t at) {
  const Walk::Mark mark = walk.SetMark();
  const std::size_t cut_before = walk.Found().Count(Code::kPastFile);
  const std::uint64_t end = Chain(walk, at, {0, walk.claimed_end});
  const bool is_cut = walk.Found().Count(Code::kPastFile) != cut_before;
  walk.Return(mark);
  return is_cut ? walk.FileEnd() + 1 : end;
}

// --- Texts ---------------------------------------------------------------------------------------

FileNumber TextSetSize(Walk& walk, const Item& item) {
  return walk.Number(kTextPointerFields[1], item.pointer);
}

/// Where the texts that start at `at` end, the first time that they reach `end`.
std::uint64_t EndOfTexts(Walk& walk, std::uint64_t at, std::uint64_t end) {
  while (at < end && at < walk.FileEnd()) {
    walk.Spend(1);
    at += TextSize(walk.Image(), at);
  }
  return at;
}

std::uint64_t TextSet(Walk& walk, const Item& item, std::uint32_t number) {
  const FileNumber stated = TextSetSize(walk, item);
  std::uint64_t size = stated.value;
  const Fit& fit = item.fit;
  const bool has_other_end = fit.end > item.at && item.at + size != fit.end;
  const bool fits = has_other_end && EndOfTexts(walk, item.at, fit.end) == fit.end;
  if (fits || (has_other_end && fit.crowded)) {
    size = fit.end - item.at;
    walk.Report(Code::kCountAndRoom, stated.offset, walk.PointerOf(Part::kTextSet, number),
                Is(stated), fits ? std::to_string(size) : "");
  }
  walk.Add(Part::kTextSet, item.at, size, number);
  return item.at + size;
}

// --- Manufacturer records ------------------------------------------------------------------------

/// The records with their ends, which are the addresses of the next ones. Where two addresses
/// leave an information less than its fixed bytes, the one that does not fit in with the others is
/// wrong.
std::vector<Item> InformationsOf(Walk& walk, const Index& index, const Room& room) {
  const std::uint64_t n = index.count.value;
  std::vector<Item> items = ItemsOf(walk, index);
  const bool own_is_right =
      room.own != 0 && room.own <= room.next &&
      (IsOrderly(walk, index, 0, n, room.own) || !IsOrderly(walk, index, 0, n, room.next));
  const std::uint64_t end = own_is_right ? room.own : room.next;
  std::uint64_t free = index.behind;
  for (std::uint64_t i = 0; i < n; ++i) {
    Item& item = items[static_cast<std::size_t>(i)];
    item.end = i + 1 < n ? Address(walk, index, i + 1) : end;
    const std::uint64_t least = item.at + kInformationSize;
    const bool next_is_right = item.end >= free + 2 * kInformationSize && item.end <= end;
    item.lost = item.at < free || least > end || (least > item.end && next_is_right);
    if (!item.lost) {
      free = least;
      continue;
    }
    walk.Report(Code::kNegativeLength, item.pointer,
                walk.PointerOf(index.info.item, static_cast<std::uint32_t>(i + 1)),
                AddressText(index, item.stated),
                i == 0 && free < walk.FileEnd() ? std::to_string(free - index.base) : "");
  }
  for (std::size_t i = 0; i + 1 < items.size(); ++i) {
    if (items[i].lost || !items[i + 1].lost) continue;
    items[i].end = items[i].at + kInformationSize;
    items[i].fit.crowded = true;  // how much data there is, is not known
  }
  return items;
}

void Manufacturer(Walk& walk, const Item& item, std::uint32_t number) {
  if (item.lost) return walk.AddLost(Part::kManufacturer, number);
  walk.AddWhole(Part::kManufacturer, item.at, number, [&] {
    walk.Add(Part::kManufacturerInfo, item.at);
    const std::uint64_t data = item.at + kInformationSize;
    if (item.end > data) walk.Add(Part::kManufacturerData, data, item.end - data);
    if (item.fit.crowded) walk.SetState(State::kDoubtful);
    return item.end;
  });
}

}  // namespace

// --- The tables ----------------------------------------------------------------------------------

std::uint64_t OriginalChain(Walk& walk, std::uint64_t at, const Room& room) {
  return Chain(walk, at, room);
}

std::uint64_t UserChains(Walk& walk, std::uint64_t at, const Room& room) {
  const ItemKind chains{
      [&walk](const Item&, std::uint64_t chain) { return EndOfChain(walk, chain); },
      [&walk](const Item& item, std::uint32_t number) {
        return walk.AddWhole(Part::kUserChain, item.at, number,
                             [&] { return Chain(walk, item.at, item.room); });
      }};
  const Index index = IndexAt(walk, Part::kUserIndex, at, at + kFileSize<tag_UD_PGCITI>);
  return WalkIndex(walk, index, room, chains);
}

std::uint64_t Texts(Walk& walk, std::uint64_t at, const Room& room) {
  const ItemKind sets{
      [&walk](const Item& item, std::uint64_t set) { return set + TextSetSize(walk, item).value; },
      [&walk](const Item& item, std::uint32_t number) { return TextSet(walk, item, number); }};
  const Index index = IndexAt(walk, Part::kTextIndex, at, at + kFileSize<tag_TXTDITI>);
  return WalkIndex(walk, index, room, sets);
}

std::uint64_t Manufacturers(Walk& walk, std::uint64_t at, const Room& room) {
  Index index = IndexAt(walk, Part::kManufacturerIndex, at, at + kFileSize<tag_MNFITI>);
  AddIndex(walk, index, room);
  std::uint64_t end = index.Pointer(index.count.value);
  const std::vector<Item> items = InformationsOf(walk, index, room);
  for (std::size_t i = 0; i < items.size(); ++i) {
    Manufacturer(walk, items[i], static_cast<std::uint32_t>(i + 1));
    end = std::max(end, items[i].end);
  }
  return end;
}

}  // namespace VESKA::workshop
