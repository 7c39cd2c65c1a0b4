#include "errors.h"

#include <veska/workshop/error.h>
#include <veska/workshop/table.h>

#include <array>

namespace veska_python {
namespace {

using VESKA::FailureKind;
using VESKA::workshop::ErrorKind;
using VESKA::workshop::Table;

static_assert(static_cast<int>(Table::kHeader) == static_cast<int>(VESKA::FailureTable::kHeader) &&
              static_cast<int>(Table::kManufacturers) ==
                  static_cast<int>(VESKA::FailureTable::kManufacturers));

constexpr std::array kKinds = {"none",
                               "no_data",
                               "no_name",
                               "no_file",
                               "not_a_file",
                               "unreadable",
                               "empty",
                               "too_large",
                               "not_management",
                               "ends_within_table",
                               "negative_length",
                               "over_budget",
                               "no_memory",
                               "would_not_read_back",
                               "padding",
                               "read_only",
                               "locked",
                               "unwritable"};
static_assert(kKinds.size() == static_cast<std::size_t>(FailureKind::kUnwritable) + 1);

void Set(const char* name, const std::string& what, const py::dict& has) {
  const py::object type = py::module_::import("veska._errors").attr(name);
  const py::object error = type(what);
  for (const auto& [key, value] : has) py::setattr(error, key, value);
  PyErr_SetObject(type.ptr(), error.ptr());
}

void Set(const FileProblem& problem) {
  const VESKA::Failure& failure = problem.failure;
  py::dict has;
  has["kind"] = kKinds.at(static_cast<std::size_t>(failure.kind));
  has["offset"] = failure.offset;
  if (failure.table != VESKA::FailureTable::kNone) {
    has["table"] = VESKA::workshop::NameOf(static_cast<Table>(failure.table));
  }
  if (failure.index >= 0) has["index"] = failure.index;
  if (failure.system_error != 0) has["errno"] = failure.system_error;
  if (!problem.where.empty()) has["filename"] = problem.where;
  Set(problem.name, (problem.where.empty() ? "" : problem.where + ": ") + Describe(failure), has);
}

void Translate(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(thrown);
  } catch (const FileProblem& problem) {
    if (problem.failure.kind == FailureKind::kNoMemory) throw std::bad_alloc();
    Set(problem);
  } catch (const VESKA::workshop::Error& error) {
    py::dict has;
    switch (error.Kind()) {
      case ErrorKind::kDocument:
        has["pointer"] = error.Place();
        return Set("JsonError", error.what(), has);
      case ErrorKind::kRequest:
        has["operation"] = error.Place();
        return Set("RequestError", error.what(), has);
      case ErrorKind::kFile:
        return Set("SaveError", error.what(), has);
    }
  }
}

}  // namespace

void Raise(const char* name, const std::string& what, const py::dict& has) {
  Set(name, what, has);
  throw py::error_already_set();
}

void DefineErrors(py::module_& module) {
  py::register_exception_translator(&Translate);
  py::list kinds;
  for (const char* kind : kKinds) kinds.append(kind);
  module.attr("FAILURE_KINDS") = py::tuple(kinds);
}

}  // namespace veska_python
