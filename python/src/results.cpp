#include "results.h"

#include <pybind11/stl.h>
#include <veska/workshop/check.h>
#include <veska/workshop/list.h>
#include <veska/workshop/locate.h>

#include "source.h"

namespace veska_python {
namespace {

using namespace VESKA::workshop;

py::str ReprOf(const Finding& finding) {
  return "<veska.Finding " + NameOf(finding.code) + " " + NameOf(EntryOf(finding.code).severity) +
         " at " + std::to_string(finding.offset) + ", " + InWords(finding.pointer) + ": " +
         EntryOf(finding.code).title + ">";
}

std::map<std::string, std::size_t> OmittedOf(const Examination& examination) {
  std::map<std::string, std::size_t> omitted;
  for (const auto& [code, count] : examination.omitted) omitted[NameOf(code)] = count;
  return omitted;
}

void DefineCheck(py::module_& module) {
  py::class_<Finding>(module, "Finding")
      .def_property_readonly("code", [](const Finding& self) { return NameOf(self.code); })
      .def_property_readonly(
          "severity", [](const Finding& self) { return NameOf(EntryOf(self.code).severity); })
      .def_property_readonly("title", [](const Finding& self) { return EntryOf(self.code).title; })
      .def_property_readonly("table", [](const Finding& self) { return NameOf(self.table); })
      .def_property_readonly("place", [](const Finding& self) { return InWords(self.pointer); })
      .def_readonly("pointer", &Finding::pointer)
      .def_readonly("offset", &Finding::offset)
      .def_readonly("stands", &Finding::stands)
      .def_readonly("right", &Finding::right)
      .def("__repr__", ReprOf);
  py::class_<TableSummary>(module, "TableSummary")
      .def_property_readonly("table", [](const TableSummary& self) { return NameOf(self.table); })
      .def_property_readonly("condition",
                             [](const TableSummary& self) { return NameOf(self.condition); })
      .def_readonly("offset", &TableSummary::offset)
      .def_readonly("size", &TableSummary::size)
      .def_readonly("readable", &TableSummary::readable)
      .def_readonly("items", &TableSummary::items);
  py::class_<Examination>(module, "Examination")
      .def_readonly("size", &Examination::size)
      .def_readonly("loads", &Examination::loads)
      .def_readonly("errors", &Examination::errors)
      .def_readonly("warnings", &Examination::warnings)
      .def_readonly("notes", &Examination::notes)
      .def_readonly("tables", &Examination::tables)
      .def_readonly("findings", &Examination::findings)
      .def_property_readonly("omitted", OmittedOf)
      .def(
          "to_text",
          [](const Examination& self, const std::string& name) { return ToText(self, name); },
          py::arg("name") = "file")
      .def(
          "to_json",
          [](const Examination& self, const std::string& name) {
            const NamedExamination named[] = {{name, self}};
            return ToJson(named);
          },
          py::arg("name") = "file")
      .def("__str__", [](const Examination& self) { return ToText(self, "file"); });
}

void DefineSalvage(py::module_& module) {
  py::class_<KeptItems>(module, "KeptItems")
      .def_readonly("what", &KeptItems::what)
      .def_readonly("kept", &KeptItems::kept)
      .def_readonly("all", &KeptItems::all);
  py::class_<Loss>(module, "Loss")
      .def_readonly("pointer", &Loss::pointer)
      .def_readonly("what", &Loss::what)
      .def_readonly("reason", &Loss::reason);
  py::class_<SalvagedTable>(module, "SalvagedTable")
      .def_property_readonly("table", [](const SalvagedTable& self) { return NameOf(self.table); })
      .def_readonly("is_lost", &SalvagedTable::is_lost)
      .def_readonly("counts", &SalvagedTable::counts)
      .def_readonly("losses", &SalvagedTable::losses);
  py::class_<SalvagedFile>(module, "Salvaged")
      .def_readonly("file", &SalvagedFile::file)
      .def_readonly("is_whole", &SalvagedFile::is_whole)
      .def_readonly("tables", &SalvagedFile::tables)
      .def_readonly("otherwise", &SalvagedFile::otherwise)
      .def("__str__", [](const SalvagedFile& self) { return self.text; });
}

void DefineListing(py::module_& module) {
  py::class_<ListedProgram>(module, "ListedProgram")
      .def_readonly("text", &ListedProgram::text)
      .def_readonly("kind", &ListedProgram::kind)
      .def_readonly("first_cell", &ListedProgram::first_cell)
      .def_readonly("cells", &ListedProgram::cells)
      .def_readonly("seconds", &ListedProgram::seconds);
  py::class_<ListedPlayList>(module, "ListedPlayList")
      .def_readonly("text", &ListedPlayList::text)
      .def_readonly("cell", &ListedPlayList::cell);
  py::class_<Listing>(module, "Listing")
      .def_property_readonly("status",
                             [](const Listing& self) {
                               constexpr const char* kNames[] = {"sound", "damaged", "bad"};
                               return kNames[static_cast<std::size_t>(self.status)];
                             })
      .def_readonly("problem", &Listing::problem)
      .def_readonly("text", &Listing::text)
      .def_readonly("programs", &Listing::programs)
      .def_readonly("play_lists", &Listing::play_lists)
      .def_readonly("cells", &Listing::cells)
      .def_readonly("user_chains", &Listing::user_chains)
      .def_readonly("vobs", &Listing::vobs)
      .def_readonly("still_groups", &Listing::still_groups)
      .def_readonly("seconds", &Listing::seconds)
      .def_readonly("bytes", &Listing::bytes)
      .def_readonly("recorded_first", &Listing::recorded_first)
      .def_readonly("recorded_last", &Listing::recorded_last)
      .def_readonly("errors", &Listing::errors)
      .def_readonly("warnings", &Listing::warnings)
      .def(
          "to_text",
          [](const Listing& self, const std::string& name) { return ToText(self, name); },
          py::arg("name") = "disc")
      .def("__str__", [](const Listing& self) { return ToText(self, "disc"); });
}

}  // namespace

void DefineResults(py::module_& module) {
  DefineCheck(module);
  DefineSalvage(module);
  DefineListing(module);
  py::class_<Located>(module, "Located")
      .def_readonly("offset", &Located::offset)
      .def_readonly("size", &Located::size)
      .def_readonly("is_sound", &Located::is_sound)
      .def_readonly("loads", &Located::loads)
      .def_readonly("can_be_salvaged", &Located::can_be_salvaged)
      .def_readonly("same_as", &Located::same_as)
      .def("__repr__", [](const Located& self) {
        return "<veska.Located at " + std::to_string(self.offset) + ", " +
               std::to_string(self.size) + " bytes>";
      });
}

}  // namespace veska_python
