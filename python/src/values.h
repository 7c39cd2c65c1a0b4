// The values of fields, between the bytes of records and Python's objects.
#pragma once

#include <veska/layouts.h>

#include <cstdint>
#include <span>
#include <string>

#include "description.h"
#include "node.h"

namespace veska_python {

/// A whole number from 0 to `most`. Raises TypeError, or ValueError with the name and the range.
std::uint64_t NumberOf(py::handle value, const std::string& name, std::uint64_t most);

/// A str in UTF-8. Raises what Python raises where it has none.
std::string Utf8(py::handle text);

/// The bytes of a string, which are those of its UTF-8, or of an object that holds bytes.
std::string BytesOf(py::handle value, const std::string& name);

py::bytes ToBytes(std::span<const unsigned char> bytes);

/// The value of a field of the record of `node`.
py::object Get(const Node& node, const VESKA::Field& field);

/// Sets it; raises ValueError for what does not fit.
void Set(const Node& node, const VESKA::Field& field, py::handle value);

/// What a field is, for people and for type checkers.
std::string DocOf(const VESKA::Field& field);
const char* GivenType(const VESKA::Field& field);

}  // namespace veska_python
