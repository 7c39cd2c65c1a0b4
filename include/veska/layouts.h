/// The fields of every record as data: name, offset, width and kind, in file order.
///
/// Whatever walks the fields of records (conversion of byte order, display, export, comparison) is
/// driven by these tables, so a field is described in one place. `kFields<Record>` lists the bytes
/// of a record that stand in the file; `kFileSize<Record>` is their number, which is
/// `sizeof(Record)` but for the records that end with a pointer to a separate block.
#pragma once

#include <veska/records.h>

#include <array>
#include <cstddef>
#include <span>

namespace VESKA {

/// What a field holds, and so how its bytes are converted between file and host order.
enum class FieldKind : unsigned char {
  kNumber,     ///< an unsigned number of 1, 2, 4 or 8 bytes, big-endian in the file
  kDerived,    ///< such a number that AutoComplete computes, or SetNode as the length of a text
  kClock,      ///< a `tag_SCR`: a 4-byte number, then a 2-byte number
  kCellPoint,  ///< a `tag_CELL_POINT`: a 2-byte number, then a position of 6 bytes that the file
               ///< object converts, since its layout depends on the cell that it points into
  kBytes,      ///< bytes that are never converted
  kText        ///< bytes that are never converted and often hold readable text
};

/// One field of a record.
struct Field {
  const char* name;
  unsigned offset;  ///< from the record's first byte
  unsigned width;   ///< in bytes
  FieldKind kind;
};

namespace layout {

/// A field as it is declared below; its width follows from where the next one starts.
struct Row {
  const char* name;
  std::size_t offset;
  FieldKind kind;
};

constexpr bool WidthFits(unsigned width, FieldKind kind) {
  switch (kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return width == 1 || width == 2 || width == 4 || width == 8;
    case FieldKind::kClock:
      return width == sizeof(tag_SCR);
    case FieldKind::kCellPoint:
      return width == sizeof(tag_CELL_POINT);
    default:
      return width > 0;
  }
}

/// Builds the table of a record of `size` bytes. A mistake in the rows does not compile.
template <std::size_t N>
consteval std::array<Field, N> Table(std::size_t size, const Row (&rows)[N]) {
  std::array<Field, N> fields{};
  for (std::size_t i = 0; i < N; ++i) {
    const std::size_t end = i + 1 < N ? rows[i + 1].offset : size;
    if ((i == 0 && rows[i].offset != 0) || end <= rows[i].offset) throw "rows out of order";
    const auto width = static_cast<unsigned>(end - rows[i].offset);
    if (!WidthFits(width, rows[i].kind)) throw "width does not fit the kind";
    fields[i] = {rows[i].name, static_cast<unsigned>(rows[i].offset), width, rows[i].kind};
  }
  return fields;
}

using enum FieldKind;

}  // namespace layout

/// The fields of `Record` that stand in the file.
template <class Record>
inline constexpr std::array<Field, 0> kFields{};

/// The number of bytes of `Record` that stand in the file.
template <class Record>
inline constexpr std::size_t kFileSize = kFields<Record>.back().offset
                                         + kFields<Record>.back().width;

template <>
inline constexpr auto kFields<tag_VMGI_MAT_HEADER> = layout::Table(
    sizeof(tag_VMGI_MAT_HEADER),
    {{"VMG_ID", offsetof(tag_VMGI_MAT_HEADER, VMG_ID), layout::kText},
     {"VMG_EA", offsetof(tag_VMGI_MAT_HEADER, VMG_EA), layout::kDerived},
     {"reserved_16", offsetof(tag_VMGI_MAT_HEADER, reserved_16), layout::kBytes},
     {"VMGI_MAT_EA", offsetof(tag_VMGI_MAT_HEADER, VMGI_MAT_EA), layout::kDerived},
     {"reserved_32", offsetof(tag_VMGI_MAT_HEADER, reserved_32), layout::kBytes},
     {"number_64", offsetof(tag_VMGI_MAT_HEADER, number_64), layout::kNumber},
     {"reserved_66", offsetof(tag_VMGI_MAT_HEADER, reserved_66), layout::kBytes},
     {"cell_point_70", offsetof(tag_VMGI_MAT_HEADER, cell_point_70), layout::kCellPoint},
     {"reserved_78", offsetof(tag_VMGI_MAT_HEADER, reserved_78), layout::kBytes},
     {"cell_point_85", offsetof(tag_VMGI_MAT_HEADER, cell_point_85), layout::kCellPoint},
     {"text_93", offsetof(tag_VMGI_MAT_HEADER, text_93), layout::kText},
     {"reserved_221", offsetof(tag_VMGI_MAT_HEADER, reserved_221), layout::kBytes},
     {"M_AVFIT_SA", offsetof(tag_VMGI_MAT_HEADER, M_AVFIT_SA), layout::kDerived},
     {"S_AVFIT_SA", offsetof(tag_VMGI_MAT_HEADER, S_AVFIT_SA), layout::kDerived},
     {"reserved_264", offsetof(tag_VMGI_MAT_HEADER, reserved_264), layout::kBytes},
     {"number_268", offsetof(tag_VMGI_MAT_HEADER, number_268), layout::kNumber},
     {"reserved_276", offsetof(tag_VMGI_MAT_HEADER, reserved_276), layout::kBytes},
     {"ORG_PGCI_SA", offsetof(tag_VMGI_MAT_HEADER, ORG_PGCI_SA), layout::kDerived},
     {"UD_PGCIT_SA", offsetof(tag_VMGI_MAT_HEADER, UD_PGCIT_SA), layout::kDerived},
     {"reserved_312", offsetof(tag_VMGI_MAT_HEADER, reserved_312), layout::kBytes},
     {"TXTDT_MG_SA", offsetof(tag_VMGI_MAT_HEADER, TXTDT_MG_SA), layout::kDerived},
     {"MNFIT_SA", offsetof(tag_VMGI_MAT_HEADER, MNFIT_SA), layout::kDerived},
     {"reserved_360", offsetof(tag_VMGI_MAT_HEADER, reserved_360), layout::kBytes}});

template <>
inline constexpr auto kFields<tag_PL_SRPTI> = layout::Table(
    sizeof(tag_PL_SRPTI), {{"reserved_0", offsetof(tag_PL_SRPTI, reserved_0), layout::kBytes},
                           {"PL_SRP_Ns", offsetof(tag_PL_SRPTI, PL_SRP_Ns), layout::kDerived},
                           {"PL_SRPT_EA", offsetof(tag_PL_SRPTI, PL_SRPT_EA), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_PL_SRP> = layout::Table(
    sizeof(tag_PL_SRP), {{"reserved_0", offsetof(tag_PL_SRP, reserved_0), layout::kBytes},
                         {"text_8", offsetof(tag_PL_SRP, text_8), layout::kText},
                         {"number_136", offsetof(tag_PL_SRP, number_136), layout::kNumber},
                         {"cell_point", offsetof(tag_PL_SRP, cell_point), layout::kCellPoint}});

template <>
inline constexpr auto kFields<tag_PGC_GI> = layout::Table(
    sizeof(tag_PGC_GI), {{"reserved_0", offsetof(tag_PGC_GI, reserved_0), layout::kNumber},
                         {"PG_Ns", offsetof(tag_PGC_GI, PG_Ns), layout::kDerived},
                         {"CI_SRP_Ns", offsetof(tag_PGC_GI, CI_SRP_Ns), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_PGI> = layout::Table(
    sizeof(tag_PGI), {{"reserved_0", offsetof(tag_PGI, reserved_0), layout::kNumber},
                      {"reserved_1", offsetof(tag_PGI, reserved_1), layout::kNumber},
                      {"C_Ns", offsetof(tag_PGI, C_Ns), layout::kNumber},
                      {"text_4", offsetof(tag_PGI, text_4), layout::kText},
                      {"number_132", offsetof(tag_PGI, number_132), layout::kNumber},
                      {"cell_point", offsetof(tag_PGI, cell_point), layout::kCellPoint}});

template <>
inline constexpr auto kFields<tag_M_C_GI> = layout::Table(
    sizeof(tag_M_C_GI), {{"reserved_0", offsetof(tag_M_C_GI, reserved_0), layout::kNumber},
                         {"C_TY", offsetof(tag_M_C_GI, C_TY), layout::kNumber},
                         {"number_2", offsetof(tag_M_C_GI, number_2), layout::kNumber},
                         {"C_EPI_Ns", offsetof(tag_M_C_GI, C_EPI_Ns), layout::kDerived},
                         {"time_6", offsetof(tag_M_C_GI, time_6), layout::kClock},
                         {"time_12", offsetof(tag_M_C_GI, time_12), layout::kClock}});

template <>
inline constexpr auto kFields<tag_S_C_GI> = layout::Table(
    sizeof(tag_S_C_GI), {{"reserved_0", offsetof(tag_S_C_GI, reserved_0), layout::kNumber},
                         {"C_TY", offsetof(tag_S_C_GI, C_TY), layout::kNumber},
                         {"number_2", offsetof(tag_S_C_GI, number_2), layout::kNumber},
                         {"C_EPI_Ns", offsetof(tag_S_C_GI, C_EPI_Ns), layout::kDerived},
                         {"reserved_6", offsetof(tag_S_C_GI, reserved_6), layout::kBytes}});

template <>
inline constexpr auto kFields<tag_M_C_EPI> = layout::Table(
    offsetof(tag_M_C_EPI, block), {{"EP_TY", offsetof(tag_M_C_EPI, EP_TY), layout::kNumber},
                                   {"time_1", offsetof(tag_M_C_EPI, time_1), layout::kClock}});

template <>
inline constexpr auto kFields<tag_S_C_EPI> =
    layout::Table(offsetof(tag_S_C_EPI, block),
                  {{"EP_TY", offsetof(tag_S_C_EPI, EP_TY), layout::kNumber},
                   {"reserved_1", offsetof(tag_S_C_EPI, reserved_1), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_M_AVFITI> = layout::Table(
    sizeof(tag_M_AVFITI), {{"reserved_0", offsetof(tag_M_AVFITI, reserved_0), layout::kBytes},
                           {"M_AVFI_Ns", offsetof(tag_M_AVFITI, M_AVFI_Ns), layout::kDerived},
                           {"M_VOB_STI_Ns", offsetof(tag_M_AVFITI, M_VOB_STI_Ns), layout::kDerived},
                           {"M_AVFIT_EA", offsetof(tag_M_AVFITI, M_AVFIT_EA), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_M_VOB_STI> = layout::Table(
    sizeof(tag_M_VOB_STI), {{"bytes_0", offsetof(tag_M_VOB_STI, bytes_0), layout::kBytes}});

template <>
inline constexpr auto kFields<tag_M_AVFI_GI> =
    layout::Table(sizeof(tag_M_AVFI_GI),
                  {{"M_VOBI_SRP_Ns", offsetof(tag_M_AVFI_GI, M_VOBI_SRP_Ns), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_M_VOB_GI> = layout::Table(
    sizeof(tag_M_VOB_GI), {{"VOB_TY", offsetof(tag_M_VOB_GI, VOB_TY), layout::kBytes},
                           {"bytes_2", offsetof(tag_M_VOB_GI, bytes_2), layout::kBytes},
                           {"time_9", offsetof(tag_M_VOB_GI, time_9), layout::kClock},
                           {"time_15", offsetof(tag_M_VOB_GI, time_15), layout::kClock},
                           {"number_21", offsetof(tag_M_VOB_GI, number_21), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_SMLI> =
    layout::Table(sizeof(tag_SMLI), {{"time_0", offsetof(tag_SMLI, time_0), layout::kClock},
                                     {"time_6", offsetof(tag_SMLI, time_6), layout::kClock}});

template <>
inline constexpr auto kFields<tag_AGAPI> = layout::Table(
    sizeof(tag_AGAPI), {{"time_0", offsetof(tag_AGAPI, time_0), layout::kClock},
                        {"time_6", offsetof(tag_AGAPI, time_6), layout::kClock},
                        {"number_12", offsetof(tag_AGAPI, number_12), layout::kNumber},
                        {"number_14", offsetof(tag_AGAPI, number_14), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_TMAP_GI> = layout::Table(
    sizeof(tag_TMAP_GI), {{"TM_ENT_Ns", offsetof(tag_TMAP_GI, TM_ENT_Ns), layout::kDerived},
                          {"VOBU_ENT_Ns", offsetof(tag_TMAP_GI, VOBU_ENT_Ns), layout::kDerived},
                          {"TM_OSF", offsetof(tag_TMAP_GI, TM_OSF), layout::kNumber},
                          {"VOBU_ADR_OSF", offsetof(tag_TMAP_GI, VOBU_ADR_OSF), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_TM_ENT> = layout::Table(
    sizeof(tag_TM_ENT), {{"number_0", offsetof(tag_TM_ENT, number_0), layout::kNumber},
                         {"number_2", offsetof(tag_TM_ENT, number_2), layout::kNumber},
                         {"number_3", offsetof(tag_TM_ENT, number_3), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_VOBU_ENT> = layout::Table(
    sizeof(tag_VOBU_ENT), {{"number_0", offsetof(tag_VOBU_ENT, number_0), layout::kNumber},
                           {"word_1", offsetof(tag_VOBU_ENT, word_1), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_S_AVFITI> = layout::Table(
    sizeof(tag_S_AVFITI), {{"S_AVFI_Ns", offsetof(tag_S_AVFITI, S_AVFI_Ns), layout::kDerived},
                           {"S_AAFI_Ns", offsetof(tag_S_AVFITI, S_AAFI_Ns), layout::kDerived},
                           {"S_VOB_STI_Ns", offsetof(tag_S_AVFITI, S_VOB_STI_Ns), layout::kDerived},
                           {"S_A_ATR_Ns", offsetof(tag_S_AVFITI, S_A_ATR_Ns), layout::kDerived},
                           {"S_AVFIT_EA", offsetof(tag_S_AVFITI, S_AVFIT_EA), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_S_VOB_STI> = layout::Table(
    sizeof(tag_S_VOB_STI), {{"bytes_0", offsetof(tag_S_VOB_STI, bytes_0), layout::kBytes}});

template <>
inline constexpr auto kFields<tag_S_A_ATR> = layout::Table(
    sizeof(tag_S_A_ATR), {{"bytes_0", offsetof(tag_S_A_ATR, bytes_0), layout::kBytes}});

template <>
inline constexpr auto kFields<tag_S_AVFI_GI> =
    layout::Table(sizeof(tag_S_AVFI_GI),
                  {{"S_VOGI_SRP_Ns", offsetof(tag_S_AVFI_GI, S_VOGI_SRP_Ns), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_S_VOG_GI> = layout::Table(
    sizeof(tag_S_VOG_GI), {{"S_VOB_Ns", offsetof(tag_S_VOG_GI, S_VOB_Ns), layout::kDerived},
                           {"VOG_GI_BYTES", offsetof(tag_S_VOG_GI, VOG_GI_BYTES), layout::kBytes},
                           {"VOG_GI_DWORD", offsetof(tag_S_VOG_GI, VOG_GI_DWORD), layout::kNumber},
                           {"VOG_GI_WORD", offsetof(tag_S_VOG_GI, VOG_GI_WORD), layout::kNumber}});

/// The fields of the four forms of a still VOB entry, form 0 to form 3.
inline constexpr auto kStillEntryForm0 =
    layout::Table(2, {{"S_VOB_ENT_TY", 0, layout::kNumber}, {"PCKs", 1, layout::kNumber}});
inline constexpr auto kStillEntryForm1 = layout::Table(6, {{"S_VOB_ENT_TY", 0, layout::kNumber},
                                                           {"PCKs", 1, layout::kNumber},
                                                           {"EXT1_PCKs", 2, layout::kNumber},
                                                           {"EXT1_WORD", 4, layout::kNumber}});
inline constexpr auto kStillEntryForm2 = layout::Table(5, {{"S_VOB_ENT_TY", 0, layout::kNumber},
                                                           {"PCKs", 1, layout::kNumber},
                                                           {"EXT2_WORD", 2, layout::kNumber},
                                                           {"EXT2_BYTE", 4, layout::kNumber}});
inline constexpr auto kStillEntryForm3 = layout::Table(9, {{"S_VOB_ENT_TY", 0, layout::kNumber},
                                                           {"PCKs", 1, layout::kNumber},
                                                           {"EXT1_PCKs", 2, layout::kNumber},
                                                           {"EXT1_WORD", 4, layout::kNumber},
                                                           {"EXT2_WORD", 6, layout::kNumber},
                                                           {"EXT2_BYTE", 8, layout::kNumber}});
inline constexpr std::array<std::span<const Field>, 4> kStillEntryFields{
    kStillEntryForm0, kStillEntryForm1, kStillEntryForm2, kStillEntryForm3};

template <>
inline constexpr auto kFields<tag_S_AAFI_GI> =
    layout::Table(sizeof(tag_S_AAFI_GI),
                  {{"S_AAGI_SRP_Ns", offsetof(tag_S_AAFI_GI, S_AAGI_SRP_Ns), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_S_AAG_GI> =
    layout::Table(sizeof(tag_S_AAG_GI),
                  {{"AA_ENT_Ns", offsetof(tag_S_AAG_GI, AA_ENT_Ns), layout::kDerived},
                   {"AAG_GI_BYTE", offsetof(tag_S_AAG_GI, AAG_GI_BYTE), layout::kNumber},
                   {"AAG_GI_DWORD", offsetof(tag_S_AAG_GI, AAG_GI_DWORD), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_AA_ENT> = layout::Table(
    sizeof(tag_AA_ENT), {{"AA_ENT_BYTE", offsetof(tag_AA_ENT, AA_ENT_BYTE), layout::kNumber},
                         {"PCKs", offsetof(tag_AA_ENT, PCKs), layout::kNumber},
                         {"AA_ENT_WORD", offsetof(tag_AA_ENT, AA_ENT_WORD), layout::kNumber}});

template <>
inline constexpr auto kFields<tag_UD_PGCITI> =
    layout::Table(sizeof(tag_UD_PGCITI),
                  {{"reserved_0", offsetof(tag_UD_PGCITI, reserved_0), layout::kNumber},
                   {"UD_PGCI_Ns", offsetof(tag_UD_PGCITI, UD_PGCI_Ns), layout::kDerived},
                   {"UD_PGCIT_EA", offsetof(tag_UD_PGCITI, UD_PGCIT_EA), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_TXTDITI> = layout::Table(
    sizeof(tag_TXTDITI), {{"CHRS", offsetof(tag_TXTDITI, CHRS), layout::kNumber},
                          {"reserved_1", offsetof(tag_TXTDITI, reserved_1), layout::kNumber},
                          {"IT_TXT_SRP_Ns", offsetof(tag_TXTDITI, IT_TXT_SRP_Ns), layout::kDerived},
                          {"TXTDT_MG_EA", offsetof(tag_TXTDITI, TXTDT_MG_EA), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_IT_TXT> = layout::Table(
    offsetof(tag_IT_TXT, text), {{"code", offsetof(tag_IT_TXT, code), layout::kNumber},
                                 {"length", offsetof(tag_IT_TXT, length), layout::kDerived}});

template <>
inline constexpr auto kFields<tag_MNFITI> = layout::Table(
    sizeof(tag_MNFITI), {{"MNFI_Ns", offsetof(tag_MNFITI, MNFI_Ns), layout::kDerived},
                         {"MNFIT_EA", offsetof(tag_MNFITI, MNFIT_EA), layout::kDerived},
                         {"LAST_MNF_ID", offsetof(tag_MNFITI, LAST_MNF_ID), layout::kText}});

template <>
inline constexpr auto kFields<tag_A_MNFI> =
    layout::Table(offsetof(tag_A_MNFI, MNF_DATA_SZ),
                  {{"MNF_ID", offsetof(tag_A_MNFI, MNF_ID), layout::kText},
                   {"MNF_FIELD_32", offsetof(tag_A_MNFI, MNF_FIELD_32), layout::kBytes},
                   {"MNF_FIELD_36", offsetof(tag_A_MNFI, MNF_FIELD_36), layout::kNumber}});

/// The fields of an item text search pointer, which stands in a `tag_IT_TXT_ITEM`.
inline constexpr auto kTextPointerFields =
    layout::Table(4, {{"IT_TXT_SA", 0, layout::kDerived}, {"IT_TXT_SZ", 2, layout::kDerived}});

}  // namespace VESKA
