// The tables of a file, one row each.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/table.h>

#include <array>
#include <cstddef>
#include <string>

namespace VESKA::workshop {

struct TableInfo {
  Table table;
  const char* key;     ///< in a file's JSON document
  const char* name;    ///< for people
  const char* field;   ///< of the file's header, that names the table; null when it has its place
  unsigned char flag;  ///< for loading it; 0 when it is always loaded
  bool is_left_out = false;  ///< from the file when it is empty
};

/// In the order in which they are written.
inline constexpr std::array kTables{
    TableInfo{Table::kFile, "file", "file", nullptr, 0},
    TableInfo{Table::kHeader, "header", "header", nullptr, 0},
    TableInfo{Table::kPlayLists, "play_lists", "play list table", nullptr, 0},
    TableInfo{Table::kMovie, "movie", "movie table", "M_AVFIT_SA", CVMGInfo::kLoadMovie},
    TableInfo{Table::kStill, "still", "still table", "S_AVFIT_SA", CVMGInfo::kLoadStill},
    TableInfo{Table::kOriginalChain, "original_chain", "original chain", "ORG_PGCI_SA", 0},
    TableInfo{Table::kUserChains, "user_chains", "user chain table", "UD_PGCIT_SA",
              CVMGInfo::kLoadUserChains, true},
    TableInfo{Table::kTexts, "texts", "text data", "TXTDT_MG_SA", CVMGInfo::kLoadTexts, true},
    TableInfo{Table::kManufacturers, "manufacturers", "manufacturer table", "MNFIT_SA",
              CVMGInfo::kLoadManufacturers, true}};

constexpr std::size_t IndexOf(Table table) { return static_cast<std::size_t>(table); }
constexpr const TableInfo& InfoOf(Table table) { return kTables[IndexOf(table)]; }

/// The pointer of a table: "/movie"; empty for the file.
std::string PointerOf(Table table);

/// True when `pointer` is `to` or a place in it.
bool IsWithin(std::string_view pointer, std::string_view to);

/// The name of one item of a list: "entry" of "entries".
std::string Singular(std::string_view list);

}  // namespace VESKA::workshop
