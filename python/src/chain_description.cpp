// The program chains and their cells.
#include <cstring>

#include "description.h"
#include "making.h"
#include "values.h"

namespace veska_python {
namespace {

using namespace VESKA;

const Type& ProgramType() {
  static const Type type = Plain<tag_PGI>("Program", "A program of a chain.");
  return type;
}

template <class Entry>
Type EntryPointType(const char* name, const char* doc) {
  Type made = Plain<Entry>(name, doc);
  made.blocks = {{"block", kEntryBlockSize, kEntryBlockSize,
                  [](void* item) -> std::optional<std::span<const unsigned char>> {
                    const auto* block = At<Entry>(item).block;
                    if (block == nullptr) return std::nullopt;
                    return std::span(block, kEntryBlockSize);
                  },
                  [](void*, int, void* item, std::span<const unsigned char> bytes) {
                    unsigned char* block = At<Entry>(item).block;
                    if (block == nullptr) {
                      throw py::value_error(
                          "block: this entry point was made without one; insert one with an EP_TY "
                          "that has a block");
                    }
                    std::memmove(block, bytes.data(), bytes.size());
                  }}};
  return made;
}

const Type& MovieEntryType() {
  static const Type type =
      EntryPointType<tag_M_C_EPI>("MovieEntryPoint", "An entry point of a movie cell.");
  return type;
}

const Type& StillEntryPointType() {
  static const Type type =
      EntryPointType<tag_S_C_EPI>("StillEntryPoint", "An entry point of a still cell.");
  return type;
}

/// An entry point has a block when its type says so, and when it is copied from one that has.
Form EntryFormAsked(py::dict& fields) {
  if (!fields.contains("EP_TY")) return CELL_ENTRY_SHORT;
  const auto type = NumberOf(fields["EP_TY"], "EP_TY", 0xFF);
  return IsLongEntry(static_cast<std::uint8_t>(type)) ? CELL_ENTRY_LONG : CELL_ENTRY_SHORT;
}

template <class Cell, class Entry, const Type& (*EntryType)()>
Type CellType(const char* name, const char* doc, const char* kind) {
  Type made = WithHeader<Cell>(name, doc);
  List entries = ListOf<Entries, Cell>("entries", kWord);
  HasItems<Entry, EntryType>(entries);
  entries.asked = EntryFormAsked;
  entries.form_of = [](const Item& item) -> Form {
    return At<Entry>(item.address).block != nullptr ? CELL_ENTRY_LONG : CELL_ENTRY_SHORT;
  };
  entries.copy = [](void*, int, void* to, const void* from) {
    auto& entry = At<Entry>(to);
    unsigned char* const block = entry.block;
    entry = At<Entry>(from);
    if (block != nullptr) std::memcpy(block, entry.block, kEntryBlockSize);
    entry.block = block;
  };
  made.lists = {entries};
  made.kind = kind;
  return made;
}

constexpr const char* kKinds[] = {"movie", "still"};

const Type& MovieCellType() {
  static const Type type = CellType<CMovieCell, tag_M_C_EPI, MovieEntryType>(
      "MovieCell", "A cell of movie material.", kKinds[CELL_MOVIE]);
  return type;
}

const Type& StillCellType() {
  static const Type type = CellType<CStillCell, tag_S_C_EPI, StillEntryPointType>(
      "StillCell", "A cell of still pictures.", kKinds[CELL_STILL]);
  return type;
}

Item CellItem(void* got) {
  CBaseCell* const cell = At<tag_C_ITEM>(got).CI;
  if (cell->GetType() == CELL_MOVIE) return {&MovieCellType(), static_cast<CMovieCell*>(cell)};
  return {&StillCellType(), static_cast<CStillCell*>(cell)};
}

Form CellFormAsked(py::dict& fields) {
  const py::object kind = fields.attr("pop")("kind", py::none());
  for (const Form form : {CELL_MOVIE, CELL_STILL}) {
    if (kind.equal(py::str(kKinds[form]))) return form;
  }
  throw py::value_error("a new cell needs kind=\"movie\" or kind=\"still\"");
}

Form CellFormOf(const Item& item) {
  return item.type == &MovieCellType() ? CELL_MOVIE : CELL_STILL;
}

void CopyCell(void* chain, int i, void* to, const void* from) {
  if (CellItem(At<CPGCInfo>(chain).GetCellNode(i)).type == &MovieCellType()) {
    At<CMovieCell>(to) = At<CMovieCell>(from);
  } else {
    At<CStillCell>(to) = At<CStillCell>(from);
  }
}

void CopyChain(void*, int, void* to, const void* from) {
  At<CPGCInfo>(to) = At<CPGCInfo>(from);
  CopyAddresses(At<CPGCInfo>(from), At<CPGCInfo>(to));
}

}  // namespace

void CopyAddresses(const CPGCInfo& from, CPGCInfo& to) {
  auto cell = to.Cells().begin();
  for (const tag_C_ITEM& item : from.Cells()) (*cell++).CI_SA = item.CI_SA;
}

const Type& ChainType() {
  static const Type type = [] {
    Type made = WithHeader<CPGCInfo>("Chain", "A program chain.");
    List programs = ListOf<Programs, CPGCInfo>("programs", kByte);
    HasItems<tag_PGI, ProgramType>(programs);
    programs.move = [](void* chain, int from, int to) {
      return At<CPGCInfo>(chain).MovePGNodes(from, from, to - from);
    };
    List cells = ListOf<Cells, CPGCInfo>("cells", kWord);
    cells.types = {&MovieCellType(), &StillCellType()};
    cells.item = CellItem;
    cells.asked = CellFormAsked;
    cells.form_of = CellFormOf;
    cells.copy = CopyCell;
    cells.move = [](void* chain, int from, int to) {
      return At<CPGCInfo>(chain).MoveCellNodes(from, from, to - from);
    };
    made.lists = {programs, cells};
    return made;
  }();
  return type;
}

const Type& UserChainsType() {
  static const Type type = [] {
    Type made = WithHeader<CUserPGCTable>("UserChains", "The user-defined program chains.");
    List chains = ListOf<Nodes, CUserPGCTable>("chains", kByte);
    HasItems<tag_UD_PGCI_ITEM, ChainType>(
        chains, [](auto& item) -> auto& { return item.UD_PGCI; });
    chains.copy = CopyChain;
    made.lists = {chains};
    return made;
  }();
  return type;
}

}  // namespace veska_python
