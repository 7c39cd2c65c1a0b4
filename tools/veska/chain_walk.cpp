// The walk over program chains, texts and manufacturer records.
#include <veska/records.h>

#include <algorithm>

#include "table_walk.h"

namespace veska_tool {

using namespace VESKA;

namespace {

constexpr unsigned kAddressSize = 4;
constexpr unsigned kTextPointerSize = 4;  // a 16-bit address, a 16-bit size
constexpr unsigned kShortAddressSize = 2;
constexpr std::uint64_t kInformationSize = kFileSize<tag_A_MNFI>;

template <class EntryPoint>
unsigned EntryPointSize(std::uint8_t type) {
  return static_cast<unsigned>(kFileSize<EntryPoint>) + (IsLongEntry(type) ? kEntryBlockSize : 0);
}

}  // namespace

unsigned MovieEntryPointSize(std::uint8_t type) { return EntryPointSize<tag_M_C_EPI>(type); }
unsigned StillEntryPointSize(std::uint8_t type) { return EntryPointSize<tag_S_C_EPI>(type); }

bool IsStillCell(const ImageBytes& image, std::uint64_t at) {
  return CellKind(image.Byte(at + offsetof(tag_M_C_GI, C_TY))) == CELL_STILL;
}

// --- Chains --------------------------------------------------------------------------------------

std::uint64_t TableWalk::OriginalChain(std::uint64_t at) {
  const std::uint64_t next = NextTable(at);
  return Chain(at, {next, next});
}

std::uint64_t TableWalk::UserChains(std::uint64_t at) {
  Add(Part::kUserHeader, at, kFileSize<tag_UD_PGCITI>);
  const FileNumber end_address = Number<tag_UD_PGCITI>("UD_PGCIT_EA", at);
  const std::uint64_t index_at = at + kFileSize<tag_UD_PGCITI>;
  const Index index{Part::kUserIndex,
                    Part::kUserChain,
                    kFileSize<tag_PGC_GI>,
                    "UD_PGCI_SA",
                    Number<tag_UD_PGCITI>("UD_PGCI_Ns", at),
                    0xFF,
                    index_at,
                    index_at,
                    kAddressSize,
                    kAddressSize,
                    at};
  const ItemKind chains{[this](const Item&, std::uint64_t chain) { return EndOfChain(chain); },
                        [this](const Item& item, std::uint32_t number) {
                          std::uint64_t end = 0;
                          AddWhole(Part::kUserChain, item.at, number,
                                   [&] { end = Chain(item.at, item.room); });
                          return end;
                        }};
  const std::uint64_t end = WalkIndex(index, RoomOf(at, end_address), chains);
  CheckEnd(end_address, at, end);
  return end;
}

/// Where a chain ends is known only once it is walked.
std::uint64_t TableWalk::EndOfChain(std::uint64_t at) {
  const Mark mark = SetMark();
  const std::size_t cut_before = findings_.Count(Code::kPastFile);
  const std::uint64_t end = Chain(at, {0, claimed_end_});
  const bool is_cut = findings_.Count(Code::kPastFile) != cut_before;
  Return(mark);
  return is_cut ? FileEnd() + 1 : end;
}

std::uint64_t TableWalk::Chain(std::uint64_t at, const Room& room) {
  Add(Part::kChainHeader, at, kFileSize<tag_PGC_GI>);
  const FileNumber cells = Number<tag_PGC_GI>("CI_SRP_Ns", at);
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
  FileNumber programs = Number<tag_PGC_GI>("PG_Ns", at);
  programs.value = BlocksBefore(programs, room, index_behind);
  AddRun(Part::kPrograms, programs_at, programs);
  const ItemKind kind{
      [this](const Item&, std::uint64_t cell) {
        return EndOfCell(cell, IsStillCell(image_, cell));
      },
      [this](const Item& item, std::uint32_t number) { return Cell(item, number); }};
  return WalkIndex(index_behind(programs.value), room, kind);
}

std::uint64_t TableWalk::EndOfCell(std::uint64_t at, bool is_still) {
  const std::uint64_t count = Number<tag_M_C_GI>("C_EPI_Ns", at).value;
  return is_still ? EndOfEntries(at + kFileSize<tag_S_C_GI>, count, StillEntryPointSize)
                  : EndOfEntries(at + kFileSize<tag_M_C_GI>, count, MovieEntryPointSize);
}
static_assert(offsetof(tag_M_C_GI, C_EPI_Ns) == offsetof(tag_S_C_GI, C_EPI_Ns) &&
              offsetof(tag_M_C_GI, C_TY) == offsetof(tag_S_C_GI, C_TY));

std::uint64_t TableWalk::Cell(const Item& item, std::uint32_t number) {
  std::uint64_t end = 0;
  AddWhole(Part::kCell, item.at, number, [&] {
    bool is_still = IsStillCell(image_, item.at);
    const std::uint64_t fit = item.fit.end;
    if (fit != 0 && EndOfCell(item.at, is_still) != fit && EndOfCell(item.at, !is_still) == fit) {
      const FileNumber kind = Number<tag_M_C_GI>("C_TY", item.at);
      Report(Code::kWrongCellKind, kind.offset, Here(),
             is_still ? "the kind is still" : "the kind is movie", is_still ? "movie" : "still");
      is_still = !is_still;
    }
    const Part info = is_still ? Part::kStillCellInfo : Part::kMovieCellInfo;
    Add(info, item.at, RecordSize(info));
    end = AddEntries(Part::kEntryPoints, item.at + RecordSize(info),
                     Number<tag_M_C_GI>("C_EPI_Ns", item.at), 0xFFFF,
                     is_still ? StillEntryPointSize : MovieEntryPointSize, item.fit);
  });
  return end;
}

// --- Texts ---------------------------------------------------------------------------------------

std::uint64_t TableWalk::Texts(std::uint64_t at) {
  Add(Part::kTextHeader, at, kFileSize<tag_TXTDITI>);
  const FileNumber end_address = Number<tag_TXTDITI>("TXTDT_MG_EA", at);
  const std::uint64_t index_at = at + kFileSize<tag_TXTDITI>;
  const Index index{Part::kTextIndex,
                    Part::kTextSet,
                    0,
                    "IT_TXT_SA",
                    Number<tag_TXTDITI>("IT_TXT_SRP_Ns", at),
                    0xFFFF,
                    index_at,
                    index_at,
                    kTextPointerSize,
                    kShortAddressSize,
                    at};
  const ItemKind sets{
      [this](const Item& item, std::uint64_t set) { return set + TextSetSize(item).value; },
      [this](const Item& item, std::uint32_t number) { return TextSet(item, number); }};
  const std::uint64_t end = WalkIndex(index, RoomOf(at, end_address), sets);
  CheckEnd(end_address, at, end);
  return end;
}

FileNumber TableWalk::TextSetSize(const Item& item) const {
  return NumberOf(kTextPointerFields[1], item.pointer);
}

std::uint64_t TableWalk::TextSet(const Item& item, std::uint32_t number) {
  const FileNumber stated = TextSetSize(item);
  std::uint64_t size = stated.value;
  const Fit& fit = item.fit;
  const bool has_other_end = fit.end > item.at && item.at + size != fit.end;
  if (has_other_end && EndOfTexts(item.at, fit.end) == fit.end) {
    size = fit.end - item.at;
    Report(Code::kCountAndRoom, stated.offset, PathOf(Part::kTextSet, number), Is(stated),
           std::to_string(size));
  } else if (has_other_end && fit.crowded) {
    Report(Code::kCountAndRoom, stated.offset, PathOf(Part::kTextSet, number), Is(stated));
    size = fit.end - item.at;
  }
  Add(Part::kTextSet, item.at, size, number);
  return item.at + size;
}

/// Where the texts that start at `at` end, the first time that they reach `end`.
std::uint64_t TableWalk::EndOfTexts(std::uint64_t at, std::uint64_t end) {
  while (at < end && at < FileEnd()) {
    Spend(1);
    at += kFileSize<tag_IT_TXT> + Number<tag_IT_TXT>("length", at).value;
  }
  return at;
}

// --- Manufacturer records -------------------------------------------------------------------

std::uint64_t TableWalk::Manufacturers(std::uint64_t at) {
  Add(Part::kManufacturerHeader, at, kFileSize<tag_MNFITI>);
  const FileNumber end_address = Number<tag_MNFITI>("MNFIT_EA", at);
  const Room room = RoomOf(at, end_address);
  const std::uint64_t index_at = at + kFileSize<tag_MNFITI>;
  Index index{Part::kManufacturerIndex,
              Part::kManufacturer,
              kInformationSize,
              "MNFI_SA",
              Number<tag_MNFITI>("MNFI_Ns", at),
              0xFFFF,
              index_at,
              index_at,
              kShortAddressSize,
              kShortAddressSize,
              at};
  const std::uint64_t n = index.count.value = AddIndex(index, room);
  std::uint64_t end = index.Pointer(n);
  const std::vector<Item> items = InformationsOf(index, room);
  for (std::size_t i = 0; i < items.size(); ++i) {
    Manufacturer(items[i], static_cast<std::uint32_t>(i + 1));
    end = std::max(end, items[i].end);
  }
  CheckEnd(end_address, at, end);
  return end;
}

/// The records with their ends, which are the addresses of the next ones. Where two addresses
/// leave an information less than its fixed bytes, the one that does not fit in with the others is
/// wrong.
std::vector<Item> TableWalk::InformationsOf(const Index& index, const Room& room) {
  const std::uint64_t n = index.count.value;
  Spend(sizeof(Item) / 8 * n);
  const bool own_is_right =
      room.own != 0 && room.own <= room.next &&
      (IsOrderly(index, 0, n, room.own) || !IsOrderly(index, 0, n, room.next));
  const std::uint64_t end = own_is_right ? room.own : room.next;
  std::vector<Item> items(static_cast<std::size_t>(n));
  std::uint64_t free = index.Pointer(n);
  for (std::uint64_t i = 0; i < n; ++i) {
    Item& item = items[static_cast<std::size_t>(i)];
    item.pointer = index.Pointer(i);
    item.stated = item.at = Address(index, i);
    item.end = i + 1 < n ? Address(index, i + 1) : end;
    const std::uint64_t least = item.at + kInformationSize;
    const bool next_is_right = item.end >= free + 2 * kInformationSize && item.end <= end;
    item.lost = item.at < free || least > end || (least > item.end && next_is_right);
    if (!item.lost) {
      free = least;
      continue;
    }
    Report(Code::kNegativeLength, item.pointer,
           PathOf(index.item, static_cast<std::uint32_t>(i + 1)), AddressText(index, item.stated),
           i == 0 ? std::to_string(free - index.base) : "");
  }
  for (std::size_t i = 0; i + 1 < items.size(); ++i) {
    if (items[i].lost || !items[i + 1].lost) continue;
    items[i].end = items[i].at + kInformationSize;
    items[i].fit.crowded =
        true;  // by an address that is wrong: how much data there is, is not known
  }
  return items;
}

void TableWalk::Manufacturer(const Item& item, std::uint32_t number) {
  if (item.lost) return AddLost(Part::kManufacturer, number);
  AddWhole(Part::kManufacturer, item.at, number, [&] {
    Add(Part::kManufacturerInfo, item.at, kInformationSize);
    const std::uint64_t data = item.at + kInformationSize;
    if (item.end > data) Add(Part::kManufacturerData, data, item.end - data);
    if (item.fit.crowded) SetState(State::kDoubtful);
  });
}

}  // namespace veska_tool
