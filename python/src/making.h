// How the tables of the library become descriptions.
#pragma once

#include <veska/CVMGInfo.h>

#include <type_traits>
#include <utility>

#include "description.h"

namespace veska_python {

template <class Object>
Object& At(void* address) {
  return *static_cast<Object*>(address);
}
template <class Object>
const Object& At(const void* address) {
  return *static_cast<const Object*>(address);
}

template <class Object>
bool Equal(const void* a, const void* b) {
  return At<Object>(a) == At<Object>(b);
}

/// The fields of a record; the record is what `Of` finds at the address, as of a table's header.
template <class Object, class Of>
void HasFields(Type& type, Of) {
  using Header = std::remove_cvref_t<decltype(Of{}(std::declval<Object&>()))>;
  type.record = [](void* address) -> Type::Bytes {
    // The header of most tables is read-only to a host, so that it leaves alone what is derived. A
    // field that is derived is read-only in Python.
    const void* header = &Of{}(At<Object>(address));
    return {VESKA::kFields<Header>, static_cast<unsigned char*>(const_cast<void*>(header))};
  };
  type.fields.assign(VESKA::kFields<Header>.begin(), VESKA::kFields<Header>.end());
}

inline constexpr auto kItself = [](auto& object) -> auto& { return object; };
inline constexpr auto kHeader = [](auto& object) -> const auto& { return object.GetHeader(); };

/// A record that is plain bytes.
template <class Record>
Type Plain(const char* name, const char* doc) {
  Type type{name, doc};
  HasFields<Record>(type, kItself);
  type.equal = Equal<Record>;
  return type;
}

/// A table with a header.
template <class Table>
Type WithHeader(const char* name, const char* doc) {
  Type type{name, doc};
  HasFields<Table>(type, kHeader);
  type.equal = Equal<Table>;
  return type;
}

// The operations on the lists of a table.

/// @cond the same five for each list
struct Nodes {
  static int Count(auto& table) { return table.GetCount(); }
  static auto* Get(auto& table, int i) { return table.GetNode(i); }
  static auto* Add(auto& table, Form) { return table.AddNode(); }
  static auto* Insert(auto& table, int i, Form) { return table.InsertNode(i); }
  static bool Delete(auto& table, int i) { return table.DeleteNode(i); }
};
struct Entries : Nodes {
  using Kind = VESKA::tag_CELL_ENTRY_TYPE;
  static auto* Add(auto& cell, Form form) { return cell.AddNode(static_cast<Kind>(form)); }
  static auto* Insert(auto& cell, int i, Form form) {
    return cell.InsertNode(i, static_cast<Kind>(form));
  }
};
struct Streams {
  static int Count(auto& table) { return table.GetStreamCount(); }
  static auto* Get(auto& table, int i) { return table.GetStreamNode(i); }
  static auto* Add(auto& table, Form) { return table.AddStreamNode(); }
  static auto* Insert(auto& table, int i, Form) { return table.InsertStreamNode(i); }
  static bool Delete(auto& table, int i) { return table.DeleteStreamNode(i); }
};
struct StillStreams {
  static int Count(auto& table) { return table.GetVOBStreamCount(); }
  static auto* Get(auto& table, int i) { return table.GetVOBStreamNode(i); }
  static auto* Add(auto& table, Form) { return table.AddVOBStreamNode(); }
  static auto* Insert(auto& table, int i, Form) { return table.InsertVOBStreamNode(i); }
  static bool Delete(auto& table, int i) { return table.DeleteVOBStreamNode(i); }
};
struct AudioStreams {
  static int Count(auto& table) { return table.GetAAStreamCount(); }
  static auto* Get(auto& table, int i) { return table.GetAAStreamNode(i); }
  static auto* Add(auto& table, Form) { return table.AddAAStreamNode(); }
  static auto* Insert(auto& table, int i, Form) { return table.InsertAAStreamNode(i); }
  static bool Delete(auto& table, int i) { return table.DeleteAAStreamNode(i); }
};
struct Times {
  static int Count(auto& map) { return map.GetTimeENCount(); }
  static auto* Get(auto& map, int i) { return map.GetTimeENNode(i); }
  static auto* Add(auto& map, Form) { return map.AddTimeENNode(); }
  static auto* Insert(auto& map, int i, Form) { return map.InsertTimeENNode(i); }
  static bool Delete(auto& map, int i) { return map.DeleteTimeENNode(i); }
};
struct Vobus {
  static int Count(auto& map) { return map.GetVobuENCount(); }
  static auto* Get(auto& map, int i) { return map.GetVobuENNode(i); }
  static auto* Add(auto& map, Form) { return map.AddVobuENNode(); }
  static auto* Insert(auto& map, int i, Form) { return map.InsertVobuENNode(i); }
  static bool Delete(auto& map, int i) { return map.DeleteVobuENNode(i); }
};
struct Programs {
  static int Count(auto& chain) { return chain.GetPGCount(); }
  static auto* Get(auto& chain, int i) { return chain.GetPGNode(i); }
  static auto* Add(auto& chain, Form) { return chain.AddPGNode(); }
  static auto* Insert(auto& chain, int i, Form) { return chain.InsertPGNode(i); }
  static bool Delete(auto& chain, int i) { return chain.DeletePGNode(i); }
};
struct Cells {
  using Kind = VESKA::tag_CELL_TYPE;
  static int Count(auto& chain) { return chain.GetCellCount(); }
  static auto* Get(auto& chain, int i) { return chain.GetCellNode(i); }
  static auto* Add(auto& chain, Form form) { return chain.AddCellNode(static_cast<Kind>(form)); }
  static auto* Insert(auto& chain, int i, Form form) {
    return chain.InsertCellNode(i, static_cast<Kind>(form));
  }
  static bool Delete(auto& chain, int i) { return chain.DeleteCellNode(i); }
};
/// @endcond

inline constexpr int kByte = 0xFF;
inline constexpr int kWord = 0xFFFF;

/// A list of `Owner`, which is that of the table that `Within` finds in it.
template <class Calls, class Owner, class Within = decltype(kItself)>
List ListOf(const char* name, int limit, Within = {}) {
  List list;
  list.name = name;
  list.limit = limit;
  list.count = [](void* owner) { return Calls::Count(Within{}(At<Owner>(owner))); };
  list.get = [](void* owner, int i) -> void* { return Calls::Get(Within{}(At<Owner>(owner)), i); };
  list.make = [](void* owner, int i, Form form) -> void* {
    auto& table = Within{}(At<Owner>(owner));
    return i == Calls::Count(table) ? Calls::Add(table, form) : Calls::Insert(table, i, form);
  };
  list.erase = [](void* owner, int i) { return Calls::Delete(Within{}(At<Owner>(owner)), i); };
  return list;
}

/// Its items are of one type, and `Of` finds the table or the record that counts in what the
/// library hands out.
template <class Got, const Type& (*Of)(), class Find = decltype(kItself)>
void HasItems(List& list, Find = {}) {
  using Object = std::remove_reference_t<decltype(Find{}(std::declval<Got&>()))>;
  list.types = {&Of()};
  list.item = [](void* got) { return Item{&Of(), &Find{}(At<Got>(got))}; };
  list.copy = [](void*, int, void* to, const void* from) { At<Object>(to) = At<Object>(from); };
  if constexpr (std::is_trivially_copyable_v<Object> && VESKA::kFields<Object>.size() != 0) {
    if constexpr (VESKA::kFileSize<Object> == sizeof(Object)) list.layout = VESKA::kFields<Object>;
  }
}

}  // namespace veska_python
