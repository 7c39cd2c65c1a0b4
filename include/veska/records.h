/// The records and enumerations of the management information file.
///
/// A record is byte for byte the structure that stands in the file: packed, reserved bytes
/// included. In memory its numbers are in host order; byte strings keep their file bytes.
/// `layouts.h` lists the fields of every record once more as data, for code that walks them.
///
/// Read and assign the fields by value; never bind a reference or a pointer to one, since they lie
/// unaligned. Fields that the format names bear its abbreviations: `_Ns` a count, `_SA` a start
/// address, `_EA` an end address (inclusive: size - 1), `_SZ` a size, all in bytes. A field without
/// a name of its own is called by what is known of it and by its offset: `number_64`,
/// `reserved_16`.
///
/// Two records are equal when they would stand the same in a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace VESKA {

/// The kind of a cell: `CMovieCell` or `CStillCell`. Any value but 0 is taken as a still cell.
enum tag_CELL_TYPE : int { CELL_MOVIE = 0, CELL_STILL = 1 };

/// The bits of `C_TY` that hold the kind of a cell.
inline constexpr unsigned kCellKindBits = 0xE0;

/// The kind that `C_TY` names: 000 is a movie cell, all others are still cells (001 is the format's
/// own).
constexpr tag_CELL_TYPE CellKind(std::uint8_t C_TY) {
  return (C_TY & kCellKindBits) == 0 ? CELL_MOVIE : CELL_STILL;
}

/// The kind of a new entry point of a cell. Any value but 1 is taken as short.
enum tag_CELL_ENTRY_TYPE : int {
  CELL_ENTRY_SHORT = 0,  ///< without block
  CELL_ENTRY_LONG = 1    ///< with a block of 128 bytes
};

#pragma pack(push, 1)

/// A clock value: the low 32 bits of the system clock reference base in units of 1/90,000 s and the
/// extension in units of 1/27,000,000 s (0 to 299 when taken from a pack header, ISO/IEC 13818-1).
struct tag_SCR {
  std::uint32_t base;
  std::uint16_t ext;

  bool operator==(const tag_SCR&) const = default;
};
static_assert(sizeof(tag_SCR) == 6);

/// A point in a cell of the original program chain.
///
/// Where `cell` names a movie cell, the position is two numbers in host order, a 32-bit base and a
/// 16-bit extension. Where it names a still cell or no cell, the six bytes of the position are the
/// file's own, never converted; the same goes for the programs of user-defined program chains.
struct tag_CELL_POINT {
  std::uint16_t cell;  ///< 1-based position in the cell list; 0xFFFF for none
  std::uint32_t position;
  std::uint16_t position_ext;

  bool operator==(const tag_CELL_POINT&) const = default;
};
static_assert(sizeof(tag_CELL_POINT) == 8);

/// The header of the management information file. Addresses count from the start of the file.
struct tag_VMGI_MAT_HEADER {
  unsigned char
      VMG_ID[12];        ///< "DVD_RTR_VMG0" without terminator; the host writes it into a new file
  std::uint32_t VMG_EA;  ///< end address of the whole file; derived
  unsigned char reserved_16[12];
  std::uint32_t VMGI_MAT_EA;  ///< end address of the header with the play list table; derived
  unsigned char reserved_32[32];
  std::uint16_t number_64;
  unsigned char reserved_66[4];
  tag_CELL_POINT cell_point_70;
  unsigned char reserved_78[7];
  tag_CELL_POINT cell_point_85;
  unsigned char text_93[128];  ///< the disc's name on many discs; the library gives it no meaning
  unsigned char reserved_221[35];
  std::uint32_t M_AVFIT_SA;  ///< movie AV file information table; derived
  std::uint32_t S_AVFIT_SA;  ///< still picture AV file information table; derived
  unsigned char reserved_264[4];
  std::uint64_t number_268;
  unsigned char reserved_276[28];
  std::uint32_t ORG_PGCI_SA;  ///< original program chain information; derived
  std::uint32_t UD_PGCIT_SA;  ///< user-defined program chain table, 0 when there is none; derived
  unsigned char reserved_312[40];
  std::uint32_t TXTDT_MG_SA;  ///< text data manager, 0 when there is none; derived
  std::uint32_t MNFIT_SA;     ///< manufacturer information table, 0 when there is none; derived
  unsigned char reserved_360[152];

  bool operator==(const tag_VMGI_MAT_HEADER&) const = default;
};
static_assert(sizeof(tag_VMGI_MAT_HEADER) == 512);

/// The header of the play list search pointer table.
struct tag_PL_SRPTI {
  unsigned char reserved_0[3];
  std::uint8_t PL_SRP_Ns;    ///< number of play lists, 0 to 255; derived
  std::uint32_t PL_SRPT_EA;  ///< end address of the table, from its start; derived

  bool operator==(const tag_PL_SRPTI&) const = default;
};
static_assert(sizeof(tag_PL_SRPTI) == 8);

/// One play list.
struct tag_PL_SRP {
  unsigned char reserved_0[8];
  unsigned char text_8[128];  ///< the play list's name on many discs; not interpreted
  std::uint16_t number_136;
  tag_CELL_POINT cell_point;

  bool operator==(const tag_PL_SRP&) const = default;
};
static_assert(sizeof(tag_PL_SRP) == 146);

/// The header of a program chain information.
struct tag_PGC_GI {
  std::uint8_t reserved_0;
  std::uint8_t PG_Ns;       ///< number of programs, 0 to 255; derived
  std::uint16_t CI_SRP_Ns;  ///< number of cells, 0 to 65,535; derived

  bool operator==(const tag_PGC_GI&) const = default;
};
static_assert(sizeof(tag_PGC_GI) == 4);

/// One program: the next `C_Ns` cells of the chain's cell list.
struct tag_PGI {
  std::uint8_t reserved_0;
  std::uint8_t reserved_1;
  std::uint16_t C_Ns;         ///< number of cells of this program; the host's to keep in step
  unsigned char text_4[128];  ///< the program's name on many discs; not interpreted
  std::uint16_t number_132;
  tag_CELL_POINT cell_point;

  bool operator==(const tag_PGI&) const = default;
};
static_assert(sizeof(tag_PGI) == 142);

/// The general information of a movie cell.
struct tag_M_C_GI {
  std::uint8_t reserved_0;
  std::uint8_t C_TY;  ///< bits 7 to 5: 000, set by AutoComplete; bits 4 to 0 not interpreted
  std::uint16_t number_2;
  std::uint16_t C_EPI_Ns;  ///< number of entry points, 0 to 65,535; derived
  tag_SCR time_6;
  tag_SCR time_12;

  bool operator==(const tag_M_C_GI&) const = default;
};
static_assert(sizeof(tag_M_C_GI) == 18);

/// The general information of a still cell.
struct tag_S_C_GI {
  std::uint8_t reserved_0;
  std::uint8_t C_TY;  ///< bits 7 to 5: 001, set by AutoComplete; bits 4 to 0 not interpreted
  std::uint16_t number_2;
  std::uint16_t C_EPI_Ns;  ///< number of entry points, 0 to 65,535; derived
  unsigned char reserved_6[2];

  bool operator==(const tag_S_C_GI&) const = default;
};
static_assert(sizeof(tag_S_C_GI) == 8);

/// The length in bytes of the block of a long entry point.
inline constexpr unsigned kEntryBlockSize = 128;

/// True when `EP_TY` calls an entry point long: bits 7 and 6 are not 00. (01 is the format's own;
/// 10 and 11 are read, sized and written in the same way.)
constexpr bool IsLongEntry(std::uint8_t EP_TY) { return (EP_TY & 0xC0) != 0; }

/// True when two separate blocks of `size` bytes hold the same; null holds nothing.
inline bool SameBlock(const unsigned char* a, const unsigned char* b, std::size_t size) {
  return a == b || (a != nullptr && b != nullptr && std::memcmp(a, b, size) == 0);
}

/// True when the blocks of two entry points would stand the same in a file. A long entry without
/// block is written as one with 128 zero bytes.
inline bool SameEntryBlock(std::uint8_t EP_TY, const unsigned char* a, const unsigned char* b) {
  static constexpr unsigned char kZero[kEntryBlockSize] = {};
  const unsigned char* none = IsLongEntry(EP_TY) ? kZero : nullptr;
  return SameBlock(a != nullptr ? a : none, b != nullptr ? b : none, kEntryBlockSize);
}

/// An entry point of a movie cell: 7 bytes in the file, 135 when long.
struct tag_M_C_EPI {
  std::uint8_t EP_TY;  ///< bits 7 and 6: 00 short, 01 long; the others are not interpreted
  tag_SCR time_1;
  unsigned char*
      block;  ///< 128 bytes owned by the cell, or null; not the host's to free or replace

  /// Equal when both would stand the same in a file.
  bool operator==(const tag_M_C_EPI& other) const {
    return EP_TY == other.EP_TY && time_1 == other.time_1 &&
           SameEntryBlock(EP_TY, block, other.block);
  }
};
static_assert(sizeof(tag_M_C_EPI) == 7 + sizeof(void*));

/// An entry point of a still cell: 2 bytes in the file, 130 when long.
struct tag_S_C_EPI {
  std::uint8_t EP_TY;  ///< as in `tag_M_C_EPI`
  std::uint8_t reserved_1;
  unsigned char* block;  ///< as in `tag_M_C_EPI`

  /// Equal when both would stand the same in a file.
  bool operator==(const tag_S_C_EPI& other) const {
    return EP_TY == other.EP_TY && reserved_1 == other.reserved_1 &&
           SameEntryBlock(EP_TY, block, other.block);
  }
};
static_assert(sizeof(tag_S_C_EPI) == 2 + sizeof(void*));

/// The header of the movie AV file information table.
struct tag_M_AVFITI {
  unsigned char reserved_0[2];
  std::uint8_t M_AVFI_Ns;     ///< 1 when the movie AV file information is present; derived
  std::uint8_t M_VOB_STI_Ns;  ///< number of stream records, 0 to 255; derived
  std::uint32_t M_AVFIT_EA;   ///< end address of the table, from its start; derived

  bool operator==(const tag_M_AVFITI&) const = default;
};
static_assert(sizeof(tag_M_AVFITI) == 8);

/// The attributes of a movie stream, in file byte order.
struct tag_M_VOB_STI {
  unsigned char bytes_0[60];

  bool operator==(const tag_M_VOB_STI&) const = default;
};
static_assert(sizeof(tag_M_VOB_STI) == 60);

/// The header of the movie AV file information.
struct tag_M_AVFI_GI {
  std::uint16_t M_VOBI_SRP_Ns;  ///< number of movie VOBs, 0 to 65,535; derived

  bool operator==(const tag_M_AVFI_GI&) const = default;
};
static_assert(sizeof(tag_M_AVFI_GI) == 2);

/// The general information of a movie VOB.
struct tag_M_VOB_GI {
  unsigned char
      VOB_TY[2];  ///< flags in file order; byte 1: 0x80 seamless block, 0x78 audio gap block
  unsigned char bytes_2[7];  ///< not interpreted; a recording time (5 bytes) on many discs
  tag_SCR time_9;
  tag_SCR time_15;
  std::uint16_t number_21;

  /// True when the file holds the seamless information of the VOB.
  bool HasSeamlessInfo() const { return (VOB_TY[1] & 0x80) != 0; }
  /// True when the file holds the audio gap information of the VOB.
  bool HasAudioGaps() const { return (VOB_TY[1] & 0x78) != 0; }

  bool operator==(const tag_M_VOB_GI&) const = default;
};
static_assert(sizeof(tag_M_VOB_GI) == 23);

/// The seamless information of a movie VOB.
struct tag_SMLI {
  tag_SCR time_0;
  tag_SCR time_6;

  bool operator==(const tag_SMLI&) const = default;
};
static_assert(sizeof(tag_SMLI) == 12);

/// The audio gap information of a movie VOB.
struct tag_AGAPI {
  tag_SCR time_0;
  tag_SCR time_6;
  std::uint16_t number_12;
  std::uint16_t number_14;

  bool operator==(const tag_AGAPI&) const = default;
};
static_assert(sizeof(tag_AGAPI) == 16);

/// The header of a time map.
struct tag_TMAP_GI {
  std::uint16_t TM_ENT_Ns;     ///< number of time entries, 0 to 65,535; derived
  std::uint16_t VOBU_ENT_Ns;   ///< number of VOBU entries, 0 to 65,535; derived
  std::uint16_t TM_OSF;        ///< time offset; not interpreted
  std::uint32_t VOBU_ADR_OSF;  ///< address offset; not interpreted

  bool operator==(const tag_TMAP_GI&) const = default;
};
static_assert(sizeof(tag_TMAP_GI) == 10);

/// A time entry of a time map.
struct tag_TM_ENT {
  std::uint16_t number_0;
  std::uint8_t number_2;
  std::uint32_t number_3;

  bool operator==(const tag_TM_ENT&) const = default;
};
static_assert(sizeof(tag_TM_ENT) == 7);

/// A VOBU entry of a time map.
struct tag_VOBU_ENT {
  std::uint8_t number_0;
  std::uint16_t word_1;  ///< bits 15 to 10 `VOBU_PB_TM`, bits 9 to 0 `VOBU_SZ`

  /// Playback time in video fields, 0 to 63.
  unsigned VOBU_PB_TM() const { return word_1 >> 10U; }
  /// Size in packs of 2,048 bytes, 0 to 1,023.
  unsigned VOBU_SZ() const { return word_1 & 0x3FFU; }

  bool operator==(const tag_VOBU_ENT&) const = default;
};
static_assert(sizeof(tag_VOBU_ENT) == 3);

/// The header of the still picture AV file information table.
struct tag_S_AVFITI {
  std::uint8_t S_AVFI_Ns;     ///< 1 when the still AV file information is present; derived
  std::uint8_t S_AAFI_Ns;     ///< 1 when the additional audio file information is present; derived
  std::uint8_t S_VOB_STI_Ns;  ///< number of stream attribute blocks, 0 to 255; derived
  std::uint8_t S_A_ATR_Ns;    ///< number of additional audio attribute blocks, 0 to 255; derived
  std::uint32_t S_AVFIT_EA;   ///< end address of the table, from its start; derived

  bool operator==(const tag_S_AVFITI&) const = default;
};
static_assert(sizeof(tag_S_AVFITI) == 8);

/// The attributes of a still picture stream, in file byte order.
struct tag_S_VOB_STI {
  unsigned char bytes_0[54];

  bool operator==(const tag_S_VOB_STI&) const = default;
};
static_assert(sizeof(tag_S_VOB_STI) == 54);

/// The attributes of an additional audio stream, in file byte order.
struct tag_S_A_ATR {
  unsigned char bytes_0[2];

  bool operator==(const tag_S_A_ATR&) const = default;
};
static_assert(sizeof(tag_S_A_ATR) == 2);

/// The header of the still AV file information.
struct tag_S_AVFI_GI {
  std::uint16_t S_VOGI_SRP_Ns;  ///< number of still VOB groups, 0 to 65,535; derived

  bool operator==(const tag_S_AVFI_GI&) const = default;
};
static_assert(sizeof(tag_S_AVFI_GI) == 2);

/// The general information of a still VOB group.
struct tag_S_VOG_GI {
  std::uint8_t S_VOB_Ns;  ///< number of entries, 0 to 255; derived
  unsigned char VOG_GI_BYTES[11];
  std::uint32_t VOG_GI_DWORD;
  std::uint16_t VOG_GI_WORD;

  bool operator==(const tag_S_VOG_GI&) const = default;
};
static_assert(sizeof(tag_S_VOG_GI) == 18);

/// One still VOB, in one of four forms that bits 7 and 6 of its type name. In memory every entry
/// has the 9 bytes of the longest form; those beyond its own form carry nothing.
struct tag_S_VOB_ENT {
  /// What form 1 adds: the first extension.
  struct Form1 {
    std::uint16_t EXT1_PCKs;  ///< packs of the first extension
    std::uint16_t EXT1_WORD;
  };
  /// What form 2 adds: the second extension.
  struct Form2 {
    std::uint16_t EXT2_WORD;
    std::uint8_t EXT2_BYTE;
  };
  /// What form 3 adds: both.
  struct Form3 {
    std::uint16_t EXT1_PCKs;
    std::uint16_t EXT1_WORD;
    std::uint16_t EXT2_WORD;
    std::uint8_t EXT2_BYTE;
  };

  std::uint8_t S_VOB_ENT_TY;  ///< bits 7 and 6 the form, bits 5 to 0 not interpreted
  std::uint8_t PCKs;          ///< number of packs
  union {
    Form1 form1;
    Form2 form2;
    Form3 form3;
  };

  /// The entry's form, 0 to 3: bit 0 set with a first extension, bit 1 with a second one.
  unsigned Form() const { return S_VOB_ENT_TY >> 6U; }
  /// The size of the entry in the file: 2, 6, 5 or 9 bytes.
  unsigned Size() const {
    return 2U + ((Form() & 1U) != 0 ? 4U : 0U) + ((Form() & 2U) != 0 ? 3U : 0U);
  }

  /// Equal when both would stand the same in a file.
  bool operator==(const tag_S_VOB_ENT& other) const {
    return S_VOB_ENT_TY == other.S_VOB_ENT_TY && std::memcmp(this, &other, Size()) == 0;
  }
};
static_assert(sizeof(tag_S_VOB_ENT) == 9);

/// The header of the additional audio file information.
struct tag_S_AAFI_GI {
  std::uint16_t S_AAGI_SRP_Ns;  ///< number of additional audio groups, 0 to 65,535; derived

  bool operator==(const tag_S_AAFI_GI&) const = default;
};
static_assert(sizeof(tag_S_AAFI_GI) == 2);

/// The general information of an additional audio group.
struct tag_S_AAG_GI {
  std::uint8_t AA_ENT_Ns;  ///< number of entries, 0 to 255; derived
  std::uint8_t AAG_GI_BYTE;
  std::uint32_t AAG_GI_DWORD;

  bool operator==(const tag_S_AAG_GI&) const = default;
};
static_assert(sizeof(tag_S_AAG_GI) == 6);

/// One additional audio entry.
struct tag_AA_ENT {
  std::uint8_t AA_ENT_BYTE;
  std::uint16_t PCKs;  ///< number of packs
  std::uint16_t AA_ENT_WORD;

  bool operator==(const tag_AA_ENT&) const = default;
};
static_assert(sizeof(tag_AA_ENT) == 5);

/// The header of the user-defined program chain table.
struct tag_UD_PGCITI {
  std::uint8_t reserved_0;
  std::uint8_t UD_PGCI_Ns;    ///< number of chains, 0 to 255; derived
  std::uint32_t UD_PGCIT_EA;  ///< end address of the table, from its start; derived

  bool operator==(const tag_UD_PGCITI&) const = default;
};
static_assert(sizeof(tag_UD_PGCITI) == 6);

/// The header of the text data manager.
struct tag_TXTDITI {
  std::uint8_t CHRS;  ///< character set code of the texts
  std::uint8_t reserved_1;
  std::uint16_t IT_TXT_SRP_Ns;  ///< number of text sets, 0 to 65,535; derived
  std::uint32_t TXTDT_MG_EA;    ///< end address of the manager, from its start; derived

  bool operator==(const tag_TXTDITI&) const = default;
};
static_assert(sizeof(tag_TXTDITI) == 8);

/// One text of a text set; in the file the text follows the two leading bytes.
struct tag_IT_TXT {
  std::uint8_t code;
  std::uint8_t length;  ///< of the text in bytes, 0 to 255
  unsigned char*
      text;  ///< `length` bytes owned by the set, no terminator; null when there are none

  /// Equal when both would stand the same in a file.
  bool operator==(const tag_IT_TXT& other) const {
    return code == other.code && length == other.length && SameBlock(text, other.text, length);
  }
};
static_assert(sizeof(tag_IT_TXT) == 2 + sizeof(void*));

/// The header of the manufacturer information table.
struct tag_MNFITI {
  std::uint16_t MNFI_Ns;   ///< number of manufacturer records, 0 to 65,535; derived
  std::uint32_t MNFIT_EA;  ///< end address of the table, from its start; derived
  unsigned char LAST_MNF_ID[32];

  bool operator==(const tag_MNFITI&) const = default;
};
static_assert(sizeof(tag_MNFITI) == 38);

/// One manufacturer information; in the file the data block follows the 37 leading bytes and its
/// length is not stored.
struct tag_A_MNFI {
  unsigned char MNF_ID[32];
  unsigned char MNF_FIELD_32[4];  ///< in file byte order
  std::uint8_t MNF_FIELD_36;
  std::uint32_t MNF_DATA_SZ;  ///< length of the data block in bytes
  unsigned char* MNF_DATA;    ///< the data block, null when it is empty

  /// Equal when both would stand the same in a file.
  bool operator==(const tag_A_MNFI& other) const {
    return std::memcmp(this, &other, offsetof(tag_A_MNFI, MNF_DATA)) == 0 &&
           SameBlock(MNF_DATA, other.MNF_DATA, MNF_DATA_SZ);
  }
};
static_assert(sizeof(tag_A_MNFI) == 41 + sizeof(void*));

/// One manufacturer information of the table, with its address.
struct tag_A_MNFI_ITEM {
  std::uint16_t MNFI_SA;  ///< start address, from the table's start; derived
  tag_A_MNFI A_MNFI;      ///< its data block is owned by the table

  bool operator==(const tag_A_MNFI_ITEM&) const = default;
};
static_assert(sizeof(tag_A_MNFI_ITEM) == 2 + sizeof(tag_A_MNFI));

#pragma pack(pop)

}  // namespace VESKA
