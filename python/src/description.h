// The tables of a file as Python sees them: which fields, tables and lists each one has. The names
// are those of the JSON document.
#pragma once

#include <pybind11/pybind11.h>
#include <veska/CPGCInfo.h>
#include <veska/layouts.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veska_python {

namespace py = pybind11;

struct Type;

/// A record or a table that stands at an address.
struct Item {
  const Type* type;
  void* address;
};

/// What a new item has to be told when it is made, such as its kind.
using Form = int;

/// A list of a table. `table` is the address of the one that it belongs to.
struct List {
  const char* name = nullptr;
  int limit = 0;
  std::vector<const Type*> types;  ///< of the items
  int (*count)(void* table) = nullptr;
  void* (*get)(void* table, int i) = nullptr;
  Item (*item)(void* got) = nullptr;
  /// Makes an item at position `i` or, where that is the end, behind the last; null without memory.
  void* (*make)(void* table, int i, Form form) = nullptr;
  bool (*erase)(void* table, int i) = nullptr;
  /// Gives the new item `to`, which is the one at `i`, the content of another one.
  void (*copy)(void* table, int i, void* to, const void* from) = nullptr;
  /// Moves an item; null in a list that has no such operation.
  bool (*move)(void* table, int from, int to) = nullptr;

  ///@{
  /// The form that a new item's fields ask for, and that of an item to copy; null where there is
  /// but one. What is no field is taken out of `fields`.
  Form (*asked)(py::dict& fields) = nullptr;
  Form (*form_of)(const Item& item) = nullptr;
  const char* asks = "";  ///< such arguments, for type checkers
  ///@}

  std::span<const VESKA::Field> layout = {};  ///< of records that are plain bytes; else empty
};

/// A table within another one.
struct Part {
  const char* name;
  const Type& (*type)();
  void* (*get)(void* owner);
  bool (*is_present)(void* owner) = nullptr;  ///< null: always
  bool is_list = false;                       ///< stands for its only list as well
  bool has_file_positions = false;
};

/// Bytes that a record owns beside its fields.
struct Block {
  const char* name;
  std::size_t least;
  std::size_t most;
  std::optional<std::span<const unsigned char>> (*get)(void* item);
  /// Raises ValueError where the item cannot take them.
  void (*set)(void* table, int i, void* item, std::span<const unsigned char> bytes);
};

/// A method that takes nothing and returns a number.
struct Sum {
  const char* name;
  unsigned long (*of)(void* table);
};

struct Type {
  const char* name;
  const char* doc;
  /// The fields and the bytes of the record, or of the table's header; null when it has none.
  struct Bytes {
    std::span<const VESKA::Field> fields;
    unsigned char* bytes;
  };
  Bytes (*record)(void* address) = nullptr;
  /// The fields that there can be: of a record of several forms, those of all.
  std::vector<VESKA::Field> fields = {};
  bool has_forms = false;
  const char* kind = nullptr;  ///< what `type` tells, where it tells anything
  std::vector<Part> parts = {};
  std::vector<List> lists = {};
  std::vector<Block> blocks = {};
  std::vector<Sum> sums = {};
  bool has_bitrate = false;
  bool (*equal)(const void* a, const void* b) = nullptr;
};

/// Gives the cells of a copied chain the addresses of the first one's, which a copy lacks.
void CopyAddresses(const VESKA::CPGCInfo& from, VESKA::CPGCInfo& to);

/// The file itself, at whose address stands a CVMGInfo.
const Type& FileType();

/// All but that, those first that stand in others.
std::vector<const Type*> AllTypes();

}  // namespace veska_python
