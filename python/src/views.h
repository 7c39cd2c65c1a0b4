// Tables, records and lists as objects of Python.
#pragma once

#include <pybind11/pybind11.h>

#include "description.h"
#include "node.h"

namespace veska_python {

namespace py = pybind11;

struct View {
  NodePtr node;
};
struct RecordView : View {};
struct ListView : View {};

/// What a class takes its node from, so that no program can make a view.
inline constexpr const char kNodeCapsule[] = "veska node";
template <class ViewClass>
ViewClass ViewFrom(const py::capsule& capsule) {
  if (capsule.name() != kNodeCapsule) throw py::type_error("only a file makes these");
  return {{*capsule.get_pointer<NodePtr>()}};
}

/// The object for a node, of the class of its type.
py::object ViewOf(const NodePtr& node);

/// Whether two nodes stand for the same content; false for two types.
bool HoldSame(const NodePtr& a, const NodePtr& b);

/// The tables of a node as properties of a class.
py::dict PartsOf(const Type& type);

void DefineViews(py::module_& module);
void DefineLists(py::module_& module, const py::class_<View>& view);

/// A list as an array of NumPy, and the bitrate and playing time of a time map.
py::object ToNumpy(const NodePtr& list);
py::tuple BitrateOf(const NodePtr& time_map, const py::object& fields_per_second);
double SecondsOf(const NodePtr& time_map, const py::object& fields_per_second);
void DefineArrays(py::module_& module);

}  // namespace veska_python
