// The module `veska._veska`.
#include "description.h"
#include "errors.h"
#include "source.h"
#include "values.h"
#include "views.h"

namespace veska_python {
namespace {

std::string ItemsOf(const List& list) {
  std::string items;
  for (const Type* type : list.types)
    items += (items.empty() ? "" : ", ") + std::string(type->name);
  return "List[" + (list.types.size() == 1 ? items : "Union[" + items + "]") + "]";
}

/// The members of a class, as (name, type given, type taken or none).
py::list MembersOf(const Type& type) {
  py::list members;
  const auto add = [&](const std::string& name, const std::string& gives, py::object takes) {
    members.append(py::make_tuple(name, gives, std::move(takes)));
  };
  for (const VESKA::Field& field : type.fields) {
    const bool is_derived = field.kind == VESKA::FieldKind::kDerived;
    add(field.name, GivenType(field),
        is_derived ? py::object(py::none()) : py::str(GivenType(field)));
  }
  for (const Block& block : type.blocks) {
    add(block.name, block.least == 0 ? "bytes" : "Optional[bytes]",
        py::str(block.least == 0 ? "bytes" : "Optional[bytes]"));
  }
  if (type.kind != nullptr) add("type", "str", py::none());
  for (const Part& part : type.parts) {
    const std::string name = part.type().name;
    add(part.name, part.is_present != nullptr ? "Optional[" + name + "]" : name, py::none());
  }
  for (const List& list : type.lists) add(list.name, ItemsOf(list), py::none());
  return members;
}

/// What the stubs are made of: (name, the list that it is as well or none, members, sums, whether
/// it has a bitrate) of each class.
py::list Describe() {
  py::list classes;
  const auto add = [&](const Type& type) {
    py::list sums;
    for (const Sum& sum : type.sums) sums.append(sum.name);
    const py::handle self = py::module_::import("veska._veska").attr(type.name);
    const bool is_list = PyObject_HasAttrString(self.ptr(), "append") != 0;
    const py::object list = is_list ? py::object(py::str(ItemsOf(type.lists.front()))) : py::none();
    classes.append(py::make_tuple(type.name, list, MembersOf(type), sums, type.has_bitrate));
  };
  for (const Type* type : AllTypes()) add(*type);
  add(FileType());
  return classes;
}

py::list PublicNames(const py::module_& module) {
  py::list names;
  for (const auto& [name, value] : py::dict(module.attr("__dict__"))) {
    if (Utf8(name).front() != '_') names.append(name);
  }
  names.attr("sort")();
  return names;
}

}  // namespace
}  // namespace veska_python

PYBIND11_MODULE(_veska, module) {
  using namespace veska_python;
  module.attr("__version__") = VESKA_VERSION;
  DefineErrors(module);
  DefineArrays(module);
  DefineViews(module);
  DefineResults(module);
  DefineFile(module);
  DefineWorkshop(module);
  module.def("_describe", Describe);
  module.attr("__all__") = PublicNames(module);
}
