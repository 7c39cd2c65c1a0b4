// The walk over program chains, texts and manufacturer records.
#include <veska/records.h>

#include <algorithm>

#include "map/index_walk.h"
#include "map/sizes.h"

namespace VESKA::workshop {

namespace {

constexpr unsigned kAddressSize = 4;
constexpr unsigned kTextPointerSize = 4;  // a 16-bit address, a 16-bit size
constexpr unsigned kShortAddressSize = 2;
constexpr std::uint64_t kInformationSize = kFileSize<tag_A_MNFI>;

std::uint64_t EndOfCell(Walk& walk, std::uint64_t at, bool is_still) {
  const std::uint64_t count = walk.build.Number<tag_M_C_GI>("C_EPI_Ns", at).value;
  return is_still
             ? EndOfEntries(walk.build, at + kFileSize<tag_S_C_GI>, count, StillEntryPointSize)
             : EndOfEntries(walk.build, at + kFileSize<tag_M_C_GI>, count, MovieEntryPointSize);
}

static_assert(offsetof(tag_M_C_GI, C_EPI_Ns) == offsetof(tag_S_C_GI, C_EPI_Ns) &&
              offsetof(tag_M_C_GI, C_TY) == offsetof(tag_S_C_GI, C_TY));

std::uint64_t Cell(Walk& walk, const Item& item, std::uint32_t number) {
  std::uint64_t end = 0;
  walk.build.AddWhole(Part::kCell, item.at, number, [&] {
    bool is_still = IsStillCell(walk.build.Image(), item.at);
    const std::uint64_t fit = item.fit.end;
    if (fit != 0 && EndOfCell(walk, item.at, is_still) != fit &&
        EndOfCell(walk, item.at, !is_still) == fit) {
      const FileNumber kind = walk.build.Number<tag_M_C_GI>("C_TY", item.at);
      walk.build.Report(Code::kWrongCellKind, kind.offset, walk.build.Here(),
                        is_still ? "the kind is still" : "the kind is movie",
                        is_still ? "movie" : "still");
      is_still = !is_still;
    }
    const Part info = is_still ? Part::kStillCellInfo : Part::kMovieCellInfo;
    walk.build.Add(info, item.at, RecordSize(info));
    end = AddEntries(walk.build, Part::kEntryPoints, item.at + RecordSize(info),
                     walk.build.Number<tag_M_C_GI>("C_EPI_Ns", item.at), 0xFFFF,
                     is_still ? StillEntryPointSize : MovieEntryPointSize, item.fit);
  });
  return end;
}

std::uint64_t Chain(Walk& walk, std::uint64_t at, const Room& room) {
  walk.build.Add(Part::kChainHeader, at, kFileSize<tag_PGC_GI>);
  const FileNumber cells = walk.build.Number<tag_PGC_GI>("CI_SRP_Ns", at);
  const std::uint64_t programs_at = at + kFileSize<tag_PGC_GI>;
  const auto index_behind = [&](std::uint64_t programs) {
    const std::uint64_t start = programs_at + kFileSize<tag_PGI> * programs;
    return Index{Part::kCellIndex,
                 Part::kCell,
                 kFileSize<tag_S_C_GI>,
                 "CI_SA",
                 cells,
                 0xFFFF,
                 start,
                 start,
                 kAddressSize,
                 kAddressSize,
                 at};
  };
  FileNumber programs = walk.build.Number<tag_PGC_GI>("PG_Ns", at);
  programs.value = BlocksBefore(walk, programs, room, index_behind);
  walk.build.AddRun(Part::kPrograms, programs_at, programs);
  const ItemKind kind{
      [&walk](const Item&, std::uint64_t cell) {
        return EndOfCell(walk, cell, IsStillCell(walk.build.Image(), cell));
      },
      [&walk](const Item& item, std::uint32_t number) { return Cell(walk, item, number); }};
  return WalkIndex(walk, index_behind(programs.value), room, kind);
}

/// Where a chain ends is known only once it is walked.
std::uint64_t EndOfChain(Walk& walk, std::uint64_t at) {
  const MapBuilder::Mark mark = walk.build.SetMark();
  const std::size_t cut_before = walk.build.Found().Count(Code::kPastFile);
  const std::uint64_t end = Chain(walk, at, {0, walk.claimed_end});
  const bool is_cut = walk.build.Found().Count(Code::kPastFile) != cut_before;
  walk.build.Return(mark);
  return is_cut ? walk.build.FileEnd() + 1 : end;
}

// --- Texts
// ----------------------------------------------------------------------------------------

FileNumber TextSetSize(Walk& walk, const Item& item) {
  return walk.build.NumberOf(kTextPointerFields[1], item.pointer);
}

/// Where the texts that start at `at` end, the first time that they reach `end`.
std::uint64_t EndOfTexts(Walk& walk, std::uint64_t at, std::uint64_t end) {
  while (at < end && at < walk.build.FileEnd()) {
    walk.build.Spend(1);
    at += TextSize(walk.build.Image(), at);
  }
  return at;
}

std::uint64_t TextSet(Walk& walk, const Item& item, std::uint32_t number) {
  const FileNumber stated = TextSetSize(walk, item);
  std::uint64_t size = stated.value;
  const Fit& fit = item.fit;
  const bool has_other_end = fit.end > item.at && item.at + size != fit.end;
  if (has_other_end && EndOfTexts(walk, item.at, fit.end) == fit.end) {
    size = fit.end - item.at;
    walk.build.Report(Code::kCountAndRoom, stated.offset,
                      walk.build.PointerOf(Part::kTextSet, number), Is(stated),
                      std::to_string(size));
  } else if (has_other_end && fit.crowded) {
    walk.build.Report(Code::kCountAndRoom, stated.offset,
                      walk.build.PointerOf(Part::kTextSet, number), Is(stated));
    size = fit.end - item.at;
  }
  walk.build.Add(Part::kTextSet, item.at, size, number);
  return item.at + size;
}

// --- Manufacturer records
// -------------------------------------------------------------------------

/// The records with their ends, which are the addresses of the next ones. Where two addresses
/// leave an information less than its fixed bytes, the one that does not fit in with the others is
/// wrong.
std::vector<Item> InformationsOf(Walk& walk, const Index& index, const Room& room) {
  const std::uint64_t n = index.count.value;
  walk.build.Spend(sizeof(Item) / 8 * n);
  const bool own_is_right =
      room.own != 0 && room.own <= room.next &&
      (IsOrderly(walk, index, 0, n, room.own) || !IsOrderly(walk, index, 0, n, room.next));
  const std::uint64_t end = own_is_right ? room.own : room.next;
  std::vector<Item> items(static_cast<std::size_t>(n));
  std::uint64_t free = index.behind;
  for (std::uint64_t i = 0; i < n; ++i) {
    Item& item = items[static_cast<std::size_t>(i)];
    item.pointer = index.Pointer(i);
    item.stated = item.at = Address(walk, index, i);
    item.end = i + 1 < n ? Address(walk, index, i + 1) : end;
    const std::uint64_t least = item.at + kInformationSize;
    const bool next_is_right = item.end >= free + 2 * kInformationSize && item.end <= end;
    item.lost = item.at < free || least > end || (least > item.end && next_is_right);
    if (!item.lost) {
      free = least;
      continue;
    }
    walk.build.Report(
        Code::kNegativeLength, item.pointer,
        walk.build.PointerOf(index.item, static_cast<std::uint32_t>(i + 1)),
        AddressText(index, item.stated),
        i == 0 && free < walk.build.FileEnd() ? std::to_string(free - index.base) : "");
  }
  for (std::size_t i = 0; i + 1 < items.size(); ++i) {
    if (items[i].lost || !items[i + 1].lost) continue;
    items[i].end = items[i].at + kInformationSize;
    items[i].fit.crowded =
        true;  // by an address that is wrong: how much data there is, is not known
  }
  return items;
}

void Manufacturer(Walk& walk, const Item& item, std::uint32_t number) {
  if (item.lost) return walk.build.AddLost(Part::kManufacturer, number);
  walk.build.AddWhole(Part::kManufacturer, item.at, number, [&] {
    walk.build.Add(Part::kManufacturerInfo, item.at, kInformationSize);
    const std::uint64_t data = item.at + kInformationSize;
    if (item.end > data) walk.build.Add(Part::kManufacturerData, data, item.end - data);
    if (item.fit.crowded) walk.build.SetState(State::kDoubtful);
  });
}

}  // namespace

// --- The tables
// -----------------------------------------------------------------------------------

std::uint64_t OriginalChain(Walk& walk, std::uint64_t at) {
  const std::uint64_t next = walk.NextTable(at);
  return Chain(walk, at, {next, next});
}

std::uint64_t UserChains(Walk& walk, std::uint64_t at) {
  walk.build.Add(Part::kUserHeader, at, kFileSize<tag_UD_PGCITI>);
  const FileNumber end_address = walk.build.Number<tag_UD_PGCITI>("UD_PGCIT_EA", at);
  const std::uint64_t index_at = at + kFileSize<tag_UD_PGCITI>;
  const Index index{Part::kUserIndex,
                    Part::kUserChain,
                    kFileSize<tag_PGC_GI>,
                    "UD_PGCI_SA",
                    walk.build.Number<tag_UD_PGCITI>("UD_PGCI_Ns", at),
                    0xFF,
                    index_at,
                    index_at,
                    kAddressSize,
                    kAddressSize,
                    at};
  const ItemKind chains{
      [&walk](const Item&, std::uint64_t chain) { return EndOfChain(walk, chain); },
      [&walk](const Item& item, std::uint32_t number) {
        std::uint64_t end = 0;
        walk.build.AddWhole(Part::kUserChain, item.at, number,
                            [&] { end = Chain(walk, item.at, item.room); });
        return end;
      }};
  const std::uint64_t end = WalkIndex(walk, index, walk.RoomOf(at, end_address), chains);
  CheckEnd(walk, end_address, at, end);
  return end;
}

std::uint64_t Texts(Walk& walk, std::uint64_t at) {
  walk.build.Add(Part::kTextHeader, at, kFileSize<tag_TXTDITI>);
  const FileNumber end_address = walk.build.Number<tag_TXTDITI>("TXTDT_MG_EA", at);
  const std::uint64_t index_at = at + kFileSize<tag_TXTDITI>;
  const Index index{Part::kTextIndex,
                    Part::kTextSet,
                    0,
                    "IT_TXT_SA",
                    walk.build.Number<tag_TXTDITI>("IT_TXT_SRP_Ns", at),
                    0xFFFF,
                    index_at,
                    index_at,
                    kTextPointerSize,
                    kShortAddressSize,
                    at};
  const ItemKind sets{
      [&walk](const Item& item, std::uint64_t set) { return set + TextSetSize(walk, item).value; },
      [&walk](const Item& item, std::uint32_t number) { return TextSet(walk, item, number); }};
  const std::uint64_t end = WalkIndex(walk, index, walk.RoomOf(at, end_address), sets);
  CheckEnd(walk, end_address, at, end);
  return end;
}

std::uint64_t Manufacturers(Walk& walk, std::uint64_t at) {
  walk.build.Add(Part::kManufacturerHeader, at, kFileSize<tag_MNFITI>);
  const FileNumber end_address = walk.build.Number<tag_MNFITI>("MNFIT_EA", at);
  const Room room = walk.RoomOf(at, end_address);
  const std::uint64_t index_at = at + kFileSize<tag_MNFITI>;
  Index index{Part::kManufacturerIndex,
              Part::kManufacturer,
              kInformationSize,
              "MNFI_SA",
              walk.build.Number<tag_MNFITI>("MNFI_Ns", at),
              0xFFFF,
              index_at,
              index_at,
              kShortAddressSize,
              kShortAddressSize,
              at};
  AddIndex(walk, index, room);
  std::uint64_t end = index.Pointer(index.count.value);
  const std::vector<Item> items = InformationsOf(walk, index, room);
  for (std::size_t i = 0; i < items.size(); ++i) {
    Manufacturer(walk, items[i], static_cast<std::uint32_t>(i + 1));
    end = std::max(end, items[i].end);
  }
  CheckEnd(walk, end_address, at, end);
  return end;
}

}  // namespace VESKA::workshop
