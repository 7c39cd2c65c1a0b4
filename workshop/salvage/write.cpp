#include <veska/records.h>

#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

constexpr unsigned kAddress = 4;
constexpr unsigned kShortAddress = 2;

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void AppendNumber(Bytes& bytes, unsigned width, std::uint64_t number) {
  bytes.resize(bytes.size() + width);
  SetBigEndian(&bytes[bytes.size() - width], width, number);
}

/// Appends to a table an index, whose addresses count from the table's start, and what it names.
void AppendIndex(Bytes& table, const std::vector<Bytes>& items, unsigned width,
                 bool with_sizes = false) {
  std::uint64_t at = table.size() + items.size() * (with_sizes ? 2 * width : width);
  for (const Bytes& item : items) {
    AppendNumber(table, width, at);
    if (with_sizes) AppendNumber(table, width, item.size());
    at += item.size();
  }
  for (const Bytes& item : items) Append(table, item);
}

/// The same with the count of the items before the index, where there are any.
void AppendCounted(Bytes& table, const std::vector<Bytes>& items) {
  if (items.empty()) return;
  AppendNumber(table, sizeof(tag_M_AVFI_GI::M_VOBI_SRP_Ns), items.size());
  AppendIndex(table, items, kAddress);
}

Bytes MovieTable(const Kept& kept) {
  Bytes table = kept.movie.header;
  SetField<tag_M_AVFITI>(table, "M_AVFI_Ns", kept.vobs.empty() ? 0 : 1);
  SetField<tag_M_AVFITI>(table, "M_VOB_STI_Ns",
                         kept.movie.records.size() / kFileSize<tag_M_VOB_STI>);
  Append(table, kept.movie.records);
  AppendCounted(table, kept.vobs);
  return table;
}

Bytes StillTable(const Kept& kept) {
  Bytes table = kept.still.header;
  SetField<tag_S_AVFITI>(table, "S_AVFI_Ns", kept.groups.empty() ? 0 : 1);
  SetField<tag_S_AVFITI>(table, "S_AAFI_Ns", kept.audio_groups.empty() ? 0 : 1);
  SetField<tag_S_AVFITI>(table, "S_VOB_STI_Ns",
                         kept.still.records.size() / kFileSize<tag_S_VOB_STI>);
  SetField<tag_S_AVFITI>(table, "S_A_ATR_Ns", kept.audio_streams.size() / kFileSize<tag_S_A_ATR>);
  Append(table, kept.still.records);
  AppendCounted(table, kept.groups);
  Append(table, kept.audio_streams);
  AppendCounted(table, kept.audio_groups);
  return table;
}

Bytes Chain(const KeptChain& kept) {
  Bytes chain = kept.header;
  std::vector<Bytes> cells;
  for (const auto& cell : kept.cells) {
    if (cell) cells.push_back(*cell);
  }
  SetField<tag_PGC_GI>(chain, "PG_Ns", kept.programs.size() / kFileSize<tag_PGI>);
  SetField<tag_PGC_GI>(chain, "CI_SRP_Ns", cells.size());
  Append(chain, kept.programs);
  AppendIndex(chain, cells, kAddress);
  return chain;
}

Bytes UserChains(const Kept& kept) {
  Bytes table = kept.user_header;
  std::vector<Bytes> chains;
  for (const KeptChain& chain : kept.user_chains) chains.push_back(Chain(chain));
  SetField<tag_UD_PGCITI>(table, "UD_PGCI_Ns", chains.size());
  AppendIndex(table, chains, kAddress);
  return table;
}

Bytes Texts(const Kept& kept) {
  Bytes table = kept.text_header;
  SetField<tag_TXTDITI>(table, "IT_TXT_SRP_Ns", kept.text_sets.size());
  AppendIndex(table, kept.text_sets, kShortAddress, true);
  return table;
}

Bytes Manufacturers(const Kept& kept) {
  Bytes table = kept.manufacturer_header;
  SetField<tag_MNFITI>(table, "MNFI_Ns", kept.manufacturers.size());
  AppendIndex(table, kept.manufacturers, kShortAddress);
  SetField<tag_MNFITI>(table, "MNFIT_EA", table.size() - 1);  // where the last information ends
  return table;
}

}  // namespace

Bytes Write(const Kept& kept) {
  Bytes image = kept.header;
  Bytes play_lists = kept.play_lists.header;
  SetField<tag_PL_SRPTI>(play_lists, "PL_SRP_Ns",
                         kept.play_lists.records.size() / kFileSize<tag_PL_SRP>);
  Append(image, play_lists);
  Append(image, kept.play_lists.records);
  const auto add = [&](Table table, bool is_there, Bytes (*make)(const Kept&)) {
    SetField<tag_VMGI_MAT_HEADER>(image, InfoOf(table).field, is_there ? image.size() : 0);
    if (is_there) Append(image, make(kept));
  };
  add(Table::kMovie, true, MovieTable);
  add(Table::kStill, true, StillTable);
  add(Table::kOriginalChain, true, [](const Kept& all) { return Chain(all.original); });
  add(Table::kUserChains, !kept.user_chains.empty(), UserChains);
  add(Table::kTexts, !kept.text_sets.empty(), Texts);
  add(Table::kManufacturers, !kept.manufacturers.empty(), Manufacturers);
  return image;
}

}  // namespace VESKA::workshop
