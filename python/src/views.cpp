#include "views.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_map>

#include "description.h"
#include "errors.h"
#include "values.h"

namespace veska_python {
namespace {

using VESKA::Field;

/// The classes, which live as long as the interpreter.
std::unordered_map<const Type*, py::handle>& Classes() {
  static auto* const classes = new std::unordered_map<const Type*, py::handle>;
  return *classes;
}
py::handle& ListClass() {
  static py::handle list;
  return list;
}

/// The field of that name that the record has at present: in some records this depends on others.
const Field& Present(const Node& node, const Field& field) {
  if (!node.type()->has_forms) return field;
  for (const Field& one : node.type()->record(node.Live()).fields) {
    if (std::strcmp(one.name, field.name) == 0) return one;
  }
  throw py::attribute_error(std::string(field.name) +
                            ": what stands here has no such field, by its type");
}

py::object Property(py::object get, py::object set, const std::string& doc, bool is_text = false) {
  const py::object property = is_text ? py::module_::import("veska._values").attr("TextField")
                                      : py::module_::import("builtins").attr("property");
  return property(std::move(get), std::move(set), py::none(), doc);
}

py::object PropertyOf(const Field& field) {
  return Property(py::cpp_function([field](const View& view) {
                    return Get(*view.node, Present(*view.node, field));
                  }),
                  py::cpp_function([field](const View& view, const py::object& value) {
                    Set(*view.node, Present(*view.node, field), value);
                  }),
                  DocOf(field), field.kind == VESKA::FieldKind::kText);
}

py::object BlockValue(const Node& node, const Block& block) {
  const auto bytes = block.get(node.Live());
  if (!bytes) return py::none();
  return ToBytes(*bytes);
}

void SetBlock(const Node& node, const Block& block, py::handle value) {
  const std::string bytes = BytesOf(value, block.name);
  if (bytes.size() < block.least || bytes.size() > block.most) {
    throw py::value_error(std::string(block.name) + ": expected " + std::to_string(block.least) +
                          " to " + std::to_string(block.most) + " bytes, got " +
                          std::to_string(bytes.size()));
  }
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  void* const item = node.Live();
  block.set(node.parent()->Live(), node.Index(), item, {data, bytes.size()});
  const auto now = block.get(item);
  if (!now || now->size() != bytes.size()) throw std::bad_alloc();
  node.file().is_edited = true;
}

py::object PropertyOf(const Block& block) {
  return Property(
      py::cpp_function([&block](const View& view) { return BlockValue(*view.node, block); }),
      py::cpp_function([&block](const View& view, const py::object& value) {
        SetBlock(*view.node, block, value);
      }),
      "Bytes beside the fields.");
}

py::object PartValue(const NodePtr& node, const Part& part) {
  if (part.is_present != nullptr && !part.is_present(node->Live())) return py::none();
  return ViewOf(Node::PartOf(node, part));
}

py::object PropertyOf(const Part& part) {
  return Property(
      py::cpp_function([&part](const View& view) { return PartValue(view.node, part); }),
      py::none(), part.type().doc);
}

py::object PropertyOf(const List& list) {
  return Property(py::cpp_function([&list](const View& view) {
                    const bool is_itself = view.node->list() == &list;
                    return ViewOf(is_itself ? view.node : Node::ListOf(view.node, list));
                  }),
                  py::none(), "A list of at most " + std::to_string(list.limit) + ".");
}

void AddMethods(py::dict& members, const Type& type) {
  for (const Sum& sum : type.sums) {
    members[sum.name] =
        py::cpp_function([of = sum.of](const View& view) { return of(view.node->Live()); },
                         py::name(sum.name), py::is_method(py::none()));
  }
  if (type.has_bitrate) {
    const auto rate = py::arg("fields_per_second") = py::none();
    members["bitrate"] = py::cpp_function(
        [](const View& view, const py::object& of) { return BitrateOf(view.node, of); },
        py::name("bitrate"), py::is_method(py::none()), rate,
        "Two arrays: the second at which each VOBU that plays begins, and its Mbit a second.");
    members["seconds"] = py::cpp_function(
        [](const View& view, const py::object& of) { return SecondsOf(view.node, of); },
        py::name("seconds"), py::is_method(py::none()), rate, "The playing time.");
  }
}

/// Makes the class of a type: its members follow from the description.
void DefineClass(py::module_& module, const Type& type, py::handle base) {
  py::dict members = PartsOf(type);
  members["__slots__"] = py::tuple();
  members["__doc__"] = type.doc;
  members["__module__"] = "veska";
  for (const Field& field : type.fields) members[field.name] = PropertyOf(field);
  for (const Block& block : type.blocks) members[block.name] = PropertyOf(block);
  for (const List& list : type.lists) members[list.name] = PropertyOf(list);
  if (type.kind != nullptr) {
    members["type"] = Property(py::cpp_function([kind = type.kind](const View& view) {
                                 view.node->Live();
                                 return kind;
                               }),
                               py::none(), "Of which kind it is.");
  }
  AddMethods(members, type);
  const py::object made = py::type::of(base)(type.name, py::make_tuple(base), members);
  module.attr(type.name) = made;
  Classes()[&type] = made.inc_ref();
}

std::string Repr(py::handle value) {
  if (py::isinstance(value, py::module_::import("veska._values").attr("Text"))) {
    return py::repr(py::str(value));
  }
  return py::repr(value);
}

py::str ReprOfRecord(const py::object& self) {
  const NodePtr node = py::cast<View&>(self).node;
  const std::string name = py::str(py::type::of(self).attr("__name__"));
  if (node->is_stale()) return "<veska." + name + ", which is stale>";
  std::string text = "<veska." + name;
  const Type& type = *node->type();
  if (type.kind != nullptr) text += std::string(" type='") + type.kind + "'";
  for (const Field& field : type.fields) {
    if (py::hasattr(self, field.name)) {
      text += std::string(" ") + field.name + "=" + Repr(self.attr(field.name));
    }
  }
  for (const Block& block : type.blocks) {
    text += std::string(" ") + block.name + "=" + Repr(self.attr(block.name));
  }
  for (const List& list : type.lists) {
    text += std::string(" ") + list.name + "=[" + std::to_string(list.count(node->Live())) + "]";
  }
  return text + ">";
}

py::object RecordsEqual(const View& a, const py::object& other) {
  if (!py::isinstance<RecordView>(other))
    return py::reinterpret_borrow<py::object>(Py_NotImplemented);
  return py::bool_(HoldSame(a.node, py::cast<View&>(other).node));
}

}  // namespace

bool HoldSame(const NodePtr& a, const NodePtr& b) {
  const void* const at = a->Live();
  const void* const other = b->Live();
  return a->type() == b->type() && a->type()->equal(at, other);
}

py::object ViewOf(const NodePtr& node) {
  const auto found = Classes().find(node->type());
  const py::handle type = found == Classes().end() ? ListClass() : found->second;
  return type(py::capsule(&node, kNodeCapsule));
}

py::dict PartsOf(const Type& type) {
  py::dict members;
  for (const Part& part : type.parts) members[part.name] = PropertyOf(part);
  return members;
}

void DefineViews(py::module_& module) {
  py::class_<View> view(module, "View", "A table, a record or a list of a file.");
  view.def_property_readonly(
      "is_stale", [](const View& self) { return self.node->is_stale(); },
      "Whether what this stood for is no more.");
  py::class_<RecordView, View> record(module, "Record", "A table or a record of a file.");
  record.def(py::init(&ViewFrom<RecordView>))
      .def("__repr__", ReprOfRecord)
      .def("__eq__", RecordsEqual);
  DefineLists(module, view);
  ListClass() = module.attr("List").ptr();
  for (const Type* type : AllTypes()) {
    const auto is_list = [&](const Part& part) { return part.is_list && &part.type() == type; };
    const auto& tables = FileType().parts;
    const bool both = std::any_of(tables.begin(), tables.end(), is_list);
    DefineClass(module, *type, both ? ListClass() : py::handle(record));
  }
}

}  // namespace veska_python
