#include "values.h"

#include <veska/cell_points.h>

#include <algorithm>
#include <vector>

#include "basis/fields.h"

namespace veska_python {
namespace {

using VESKA::Field;
using VESKA::FieldKind;
using VESKA::workshop::GetBigEndian;
using VESKA::workshop::GetNumber;
using VESKA::workshop::LargestNumber;
using VESKA::workshop::SetBigEndian;
using VESKA::workshop::SetNumber;

constexpr unsigned kPosition = 6;  // bytes of a clock, and of the position of a cell point

py::object ValueType(const char* name) { return py::module_::import("veska._values").attr(name); }

py::object ClockAt(const unsigned char* bytes) {
  return ValueType("Clock")(GetNumber(bytes, 4), GetNumber(bytes + 4, 2));
}

/// The items of a tuple of `count`, or of whatever else stands in for one.
py::tuple Items(py::handle value, std::size_t count, const std::string& name, const char* what) {
  const bool is_sequence = py::isinstance<py::sequence>(value) && !py::isinstance<py::str>(value) &&
                           !py::isinstance<py::bytes>(value);
  if (is_sequence && py::len(value) == count)
    return py::tuple(py::reinterpret_borrow<py::object>(value));
  throw py::value_error(name + ": expected " + what);
}

// Whatever makes or asks a Python object may run a program's code, which may end the record. So the
// bytes of a record are copied before such calls, and looked up again after them.

using FieldBytes = std::vector<unsigned char>;

FieldBytes Clock(py::handle value, const std::string& name) {
  const py::tuple items = Items(value, 2, name, "a Clock, or two numbers: base and ext");
  const std::uint64_t base = NumberOf(items[0], name + ".base", 0xFFFFFFFF);
  const std::uint64_t ext = NumberOf(items[1], name + ".ext", 0xFFFF);
  FieldBytes bytes(kPosition);
  SetNumber(&bytes[0], 4, base);
  SetNumber(&bytes[4], 2, ext);
  return bytes;
}

bool HasClock(const Node& node, std::uint64_t cell) {
  const VESKA::CPGCInfo& chain = node.file().info->GetOriginalPGC();
  return !node.has_file_positions() &&
         VESKA::NamesMovieCell(chain, static_cast<std::uint16_t>(cell));
}

py::object CellPointOf(const Node& node, const FieldBytes& bytes) {
  const std::uint64_t cell = GetNumber(&bytes[0], 2);
  const bool has_clock = HasClock(node, cell);
  const py::object position =
      has_clock ? ClockAt(&bytes[2]) : py::object(ToBytes({&bytes[2], kPosition}));
  return ValueType("CellPoint")(cell, position);
}

/// Either form of the position does for either kind of cell.
FieldBytes CellPoint(const Node& node, py::handle value, const std::string& name) {
  const py::tuple items =
      Items(value, 2, name, "a CellPoint, or a cell's number and a Clock or 6 bytes");
  const std::uint64_t cell = NumberOf(items[0], name + ".cell", 0xFFFF);
  FieldBytes host;
  FieldBytes file(kPosition);
  if (PyObject_CheckBuffer(items[1].ptr()) != 0) {
    const std::string bytes = BytesOf(items[1], name + ".position");
    if (bytes.size() != kPosition) throw py::value_error(name + ".position: expected 6 bytes");
    file.assign(bytes.begin(), bytes.end());
    host.resize(kPosition);
    SetNumber(&host[0], 4, GetBigEndian(&file[0], 4));
    SetNumber(&host[4], 2, GetBigEndian(&file[4], 2));
  } else {
    host = Clock(items[1], name + ".position");
    SetBigEndian(&file[0], 4, GetNumber(&host[0], 4));
    SetBigEndian(&file[4], 2, GetNumber(&host[4], 2));
  }
  FieldBytes bytes(2);
  SetNumber(&bytes[0], 2, cell);
  const FieldBytes& position = HasClock(node, cell) ? host : file;
  bytes.insert(bytes.end(), position.begin(), position.end());
  return bytes;
}

FieldBytes Text(py::handle value, const Field& field) {
  const std::string bytes = BytesOf(value, field.name);
  const bool is_text = field.kind == FieldKind::kText;
  if (is_text ? bytes.size() > field.width : bytes.size() != field.width) {
    throw py::value_error(std::string(field.name) + ": expected " + (is_text ? "at most " : "") +
                          std::to_string(field.width) + " bytes, got " +
                          std::to_string(bytes.size()));
  }
  FieldBytes filled(bytes.begin(), bytes.end());
  filled.resize(field.width);
  return filled;
}

FieldBytes Number(py::handle value, const Field& field) {
  FieldBytes bytes(field.width);
  SetNumber(&bytes[0], field.width, NumberOf(value, field.name, LargestNumber(field.width)));
  return bytes;
}

FieldBytes Taken(const Node& node, py::handle value, const Field& field) {
  switch (field.kind) {
    case FieldKind::kDerived:
      throw py::attribute_error(std::string(field.name) +
                                " follows from the rest of the file: complete() sets it");
    case FieldKind::kNumber:
      return Number(value, field);
    case FieldKind::kClock:
      return Clock(value, field.name);
    case FieldKind::kCellPoint:
      return CellPoint(node, value, field.name);
    default:
      return Text(value, field);
  }
}

unsigned char* Place(const Node& node, const Field& field) {
  return node.type()->record(node.Live()).bytes + field.offset;
}

}  // namespace

std::uint64_t NumberOf(py::handle value, const std::string& name, std::uint64_t most) {
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!number) {
    PyErr_Clear();
    throw py::type_error(name + ": expected a whole number, got " +
                         std::string(py::str(py::type::of(value).attr("__name__"))));
  }
  const std::uint64_t result = PyLong_AsUnsignedLongLong(number.ptr());
  const bool is_outside = PyErr_Occurred() != nullptr;
  PyErr_Clear();
  if (is_outside || result > most) {
    throw py::value_error(name + ": " + std::string(py::str(number)) +
                          " is not in the range 0 to " + std::to_string(most));
  }
  return result;
}

std::string Utf8(py::handle text) {
  py::ssize_t size = 0;
  const char* const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (bytes == nullptr) throw py::error_already_set();
  return {bytes, static_cast<std::size_t>(size)};
}

std::string BytesOf(py::handle value, const std::string& name) {
  if (py::isinstance<py::str>(value)) return Utf8(value);
  if (PyObject_CheckBuffer(value.ptr()) != 0) {
    const auto bytes = py::reinterpret_steal<py::bytes>(PyBytes_FromObject(value.ptr()));
    if (!bytes) throw py::error_already_set();
    return bytes;
  }
  throw py::type_error(name + ": expected bytes or a str, got " +
                       std::string(py::str(py::type::of(value).attr("__name__"))));
}

py::bytes ToBytes(std::span<const unsigned char> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

py::object Get(const Node& node, const Field& field) {
  const unsigned char* const at = Place(node, field);
  const FieldBytes bytes(at, at + field.width);
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return py::int_(GetNumber(bytes.data(), field.width));
    case FieldKind::kClock:
      return ClockAt(bytes.data());
    case FieldKind::kCellPoint:
      return CellPointOf(node, bytes);
    case FieldKind::kText:
      return ValueType("Text")(ToBytes(bytes));
    case FieldKind::kBytes:
      break;
  }
  return ToBytes(bytes);
}

void Set(const Node& node, const Field& field, py::handle value) {
  const FieldBytes bytes = Taken(node, value, field);
  std::copy(bytes.begin(), bytes.end(), Place(node, field));
  node.file().is_edited = true;
}

std::string DocOf(const Field& field) {
  switch (field.kind) {
    case FieldKind::kNumber:
      return "A number from 0 to " + std::to_string(LargestNumber(field.width)) + ".";
    case FieldKind::kDerived:
      return "A number that complete() derives from the rest of the file.";
    case FieldKind::kClock:
      return "A clock value.";
    case FieldKind::kCellPoint:
      return "A cell, and a position in it.";
    case FieldKind::kText:
      return "A text of " + std::to_string(field.width) + " bytes; a shorter one gets zeros.";
    case FieldKind::kBytes:
      break;
  }
  return std::to_string(field.width) + (field.width == 1 ? " byte." : " bytes.");
}

const char* GivenType(const Field& field) {
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return "int";
    case FieldKind::kClock:
      return "Clock";
    case FieldKind::kCellPoint:
      return "CellPoint";
    case FieldKind::kText:
      return "Text";
    case FieldKind::kBytes:
      break;
  }
  return "bytes";
}

}  // namespace veska_python
