// Lists as arrays of NumPy, without copying.
#include <pybind11/numpy.h>
#include <veska/workshop/bitrate.h>

#include <cstring>
#include <limits>
#include <utility>

#include "description.h"
#include "making.h"
#include "values.h"
#include "views.h"

namespace veska_python {
namespace {

using VESKA::Field;
using VESKA::FieldKind;

/// As long as it lives, the records of its list stay where they are.
class Lease {
 public:
  explicit Lease(NodePtr list) : list_(std::move(list)) { list_->CountArray(1); }
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease() { list_->CountArray(-1); }

 private:
  NodePtr list_;
};

py::object Pair(const char* first, const char* format, const char* second, const char* other) {
  py::list fields;
  fields.append(py::make_tuple(first, format));
  fields.append(py::make_tuple(second, other));
  return fields;
}

py::object FormatOf(const Field& field) {
  const std::string width = std::to_string(field.width);
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return py::str("=u" + width);
    case FieldKind::kClock:
      return Pair("base", "=u4", "ext", "=u2");
    case FieldKind::kCellPoint:
      return Pair("cell", "=u2", "position", "V6");
    case FieldKind::kText:
      return py::str("S" + width);
    case FieldKind::kBytes:
      break;
  }
  return py::str("V" + width);
}

py::dtype DtypeOf(std::span<const Field> fields) {
  py::list names, formats, offsets;
  for (const Field& field : fields) {
    names.append(field.name);
    formats.append(FormatOf(field));
    offsets.append(field.offset);
  }
  return {names, formats, offsets, fields.back().offset + fields.back().width};
}

/// The records as one block, where they lie in order in one; else null.
const unsigned char* BlockOf(const List& list, void* table, int count, std::size_t size) {
  const auto* const first = static_cast<const unsigned char*>(list.get(table, 0));
  for (int i = 1; i < count; ++i) {
    if (list.get(table, i) != first + static_cast<std::size_t>(i) * size) return nullptr;
  }
  return first;
}

py::array Copied(const List& list, void* table, int count, const py::dtype& dtype) {
  py::array array(dtype, std::vector<py::ssize_t>{count});
  auto* to = static_cast<unsigned char*>(array.mutable_data());
  const auto size = static_cast<std::size_t>(dtype.itemsize());
  for (int i = 0; i < count; ++i, to += size) std::memcpy(to, list.get(table, i), size);
  return array;
}

VESKA::workshop::Bitrate Measured(const NodePtr& node, const py::object& fields_per_second) {
  namespace workshop = VESKA::workshop;
  double rate = 0;
  if (fields_per_second.is_none()) {
    const auto& vobs = node->file().info->GetMovieAVFileTable().GetMovieAVFile();
    rate = workshop::GuessFieldRate(vobs);
    if (rate == 0) rate = workshop::kFields60;
  } else {
    rate = PyFloat_AsDouble(fields_per_second.ptr());
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    if (!(rate > 0 && rate <= std::numeric_limits<double>::max())) {
      throw py::value_error("fields_per_second: expected a number above 0");
    }
  }
  const auto& map = At<VESKA::CTimeMapTable>(node->Live());
  return workshop::BitrateOf(map, rate, std::numeric_limits<int>::max());
}

}  // namespace

py::object ToNumpy(const NodePtr& node) {
  const List& list = *node->list();
  if (list.layout.empty()) {
    throw py::type_error(std::string(list.name) + ": only records of one size make an array");
  }
  const py::dtype dtype = DtypeOf(list.layout);
  node->Live();
  const py::object lease = py::cast(std::make_unique<Lease>(node));  // from here on they stay
  void* const table = node->Live();
  const int count = list.count(table);
  const auto size = static_cast<std::size_t>(dtype.itemsize());
  const unsigned char* block = count == 0 ? nullptr : BlockOf(list, table, count, size);
  py::array array = block != nullptr
                        ? py::array(dtype, std::vector<py::ssize_t>{count},
                                    std::vector<py::ssize_t>{dtype.itemsize()}, block, lease)
                        : Copied(list, table, count, dtype);
  array.attr("setflags")(py::arg("write") = false);
  return array;
}

py::tuple BitrateOf(const NodePtr& node, const py::object& fields_per_second) {
  const VESKA::workshop::Bitrate bitrate = Measured(node, fields_per_second);
  py::array_t<double> seconds(static_cast<py::ssize_t>(bitrate.steps.size()));
  py::array_t<double> megabits(static_cast<py::ssize_t>(bitrate.steps.size()));
  for (std::size_t i = 0; i < bitrate.steps.size(); ++i) {
    seconds.mutable_data()[i] = bitrate.steps[i].begin;
    megabits.mutable_data()[i] = bitrate.steps[i].mean;
  }
  return py::make_tuple(seconds, megabits);
}

double SecondsOf(const NodePtr& node, const py::object& fields_per_second) {
  return Measured(node, fields_per_second).seconds;
}

void DefineArrays(py::module_& module) { py::class_<Lease>(module, "_ArrayLease"); }

}  // namespace veska_python
