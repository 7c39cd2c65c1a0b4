// What the module raises.
#pragma once

#include <pybind11/pybind11.h>
#include <veska/failure.h>

#include <exception>
#include <string>
#include <utility>

namespace veska_python {

namespace py = pybind11;

/// Raises the exception of that name of the package, with these attributes.
[[noreturn]] void Raise(const char* name, const std::string& what, const py::dict& has = {});

/// What becomes LoadError or SaveError; for code that does not hold the interpreter's lock.
struct FileProblem : std::exception {
  FileProblem(const char* type, VESKA::Failure why, std::string of)
      : name(type), failure(why), where(std::move(of)) {}
  const char* name;
  VESKA::Failure failure;
  std::string where;
};

/// Makes exceptions of what the workshop throws, and defines the kinds of failure.
void DefineErrors(py::module_& module);

}  // namespace veska_python
