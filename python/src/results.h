// The results of the workshop as Python's objects.
#pragma once

#include <pybind11/pybind11.h>
#include <veska/workshop/salvage.h>

#include <string>
#include <vector>

namespace veska_python {

namespace py = pybind11;

/// What was salvaged, with the file as Python has it.
struct SalvagedFile {
  py::object file;  ///< None when nothing could be read
  bool is_whole;
  std::vector<VESKA::workshop::SalvagedTable> tables;
  std::vector<VESKA::workshop::Finding> otherwise;
  std::string text;
};

class Source;

/// The bytes of a file that loads; throws FileProblem for another.
std::span<const unsigned char> ReadSound(Source& source);

}  // namespace veska_python
