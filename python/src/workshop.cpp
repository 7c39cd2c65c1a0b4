// What the workshop does with a file: functions and their results.
#include <pybind11/functional.h>
#include <pybind11/stl.h>
#include <veska/workshop/check.h>
#include <veska/workshop/edit.h>
#include <veska/workshop/list.h>
#include <veska/workshop/locate.h>
#include <veska/workshop/report.h>
#include <veska/workshop/salvage.h>
#include <veska/workshop/show.h>
#include <veska/workshop/text.h>

#include <cstring>
#include <fstream>
#include <optional>

#include "results.h"
#include "source.h"
#include "values.h"

namespace veska_python {
namespace {

namespace workshop = VESKA::workshop;

workshop::Examination Check(const py::object& from, std::size_t limit) {
  Source source(from);
  const py::gil_scoped_release free;
  return workshop::Check(source.Read(), limit);
}

py::object Salvage(const py::object& from) {
  Source source(from);
  workshop::Salvaged salvaged;
  std::string text;
  {
    const py::gil_scoped_release free;
    salvaged = workshop::Salvage(source.Read());
    text = ToText(salvaged);
  }
  py::object file = py::none();
  if (salvaged.info != nullptr) {
    file = py::cast(FileView{Node::RootOf(std::move(salvaged.info)), source.name()});
  }
  return py::cast(SalvagedFile{file, salvaged.is_whole, std::move(salvaged.tables),
                               std::move(salvaged.otherwise), std::move(text)});
}

workshop::FieldRate RateOf(const py::object& rate) {
  if (rate.is_none()) return workshop::FieldRate::kGuessed;
  if (rate.equal(py::float_(50.0))) return workshop::FieldRate::k50;
  if (rate.equal(py::float_(59.94))) return workshop::FieldRate::k59_94;
  throw py::value_error("fields_per_second: expected 50 or 59.94");
}

std::string Report(const py::object& from, const std::optional<std::string>& name,
                   const py::object& rate) {
  Source source(from);
  const workshop::ReportOptions options{RateOf(rate)};
  const py::gil_scoped_release free;
  return workshop::Report(name.value_or(source.name()), ReadSound(source), options);
}

std::string Show(const py::object& from, bool all) {
  Source source(from);
  workshop::ShowOptions options;
  options.all = all;
  if (!source.name().empty()) options.name = source.name();
  const py::gil_scoped_release free;
  return workshop::Show(ReadSound(source), options);
}

/// Decodes texts by Python's codecs, for code that does not hold the interpreter's lock.
workshop::DecodeText DecoderOf(const std::optional<std::string>& encoding) {
  if (!encoding) return workshop::DecodeUtf8;
  py::module_::import("codecs").attr("lookup")(*encoding);
  return [name = *encoding](std::span<const unsigned char> bytes) -> std::optional<std::string> {
    const py::gil_scoped_acquire lock;
    try {
      return Utf8(ToBytes(bytes).attr("decode")(name));
    } catch (const py::error_already_set&) {
      return std::nullopt;
    }
  };
}

workshop::Listing ListingOf(const py::object& from, const std::optional<std::string>& encoding) {
  Source source(from);
  const workshop::DecodeText decode = DecoderOf(encoding);
  const py::gil_scoped_release free;
  return workshop::ListingOf(source.Read(), decode);
}

workshop::RowOf RowKind(bool programs) {
  return programs ? workshop::RowOf::kProgram : workshop::RowOf::kDisc;
}

std::string RowsOf(const workshop::Listing& listing, const std::string& name, bool programs,
                   bool csv) {
  const workshop::RowOf of = RowKind(programs);
  return csv ? ToCsv(listing, name, of) : ToJsonLines(listing, name, of);
}

/// Reads an image at a place, whatever it was given as.
workshop::ReadBytes ReaderOf(const py::object& image, Source& source) {
  if (py::isinstance<FileView>(image) || PyObject_CheckBuffer(image.ptr()) != 0) {
    const std::span<const unsigned char> bytes = source.Read();
    return [bytes](std::uint64_t offset, std::span<unsigned char> to) {
      if (offset >= bytes.size()) return std::size_t{0};
      const auto rest = bytes.subspan(static_cast<std::size_t>(offset));
      const std::size_t size = std::min(rest.size(), to.size());
      if (size != 0) std::memcpy(to.data(), rest.data(), size);
      return size;
    };
  }
  auto in = std::make_shared<std::ifstream>(PathOf(image), std::ios::binary);
  if (!*in || in->peek() == std::ifstream::traits_type::eof()) source.Read();  // tells why
  return [in](std::uint64_t offset, std::span<unsigned char> to) {
    in->clear();
    in->seekg(static_cast<std::streamoff>(offset));
    in->read(reinterpret_cast<char*>(to.data()), static_cast<std::streamsize>(to.size()));
    return static_cast<std::size_t>(in->gcount());
  };
}

std::vector<workshop::Located> Locate(const py::object& image) {
  Source source(image);
  const workshop::ReadBytes read = ReaderOf(image, source);
  const py::gil_scoped_release free;
  return workshop::Locate(read);
}

py::bytes ReadLocated(const py::object& image, const workshop::Located& located) {
  Source source(image);
  const workshop::ReadBytes read = ReaderOf(image, source);
  Bytes bytes;
  {
    const py::gil_scoped_release free;
    bytes = workshop::ReadLocated(read, located);
  }
  return ToBytes(bytes);
}

std::vector<std::string> Columns(bool programs) {
  const auto columns = workshop::Columns(RowKind(programs));
  return {columns.begin(), columns.end()};
}

std::string ShownText(const py::object& bytes, const std::optional<std::string>& encoding) {
  const std::string text = BytesOf(bytes, "bytes");
  return workshop::ShownText({reinterpret_cast<const unsigned char*>(text.data()), text.size()},
                             DecoderOf(encoding));
}

py::list OperationsOf() {
  py::list operations;
  for (const auto& [name, arguments, help] : workshop::Operations()) {
    operations.append(py::make_tuple(name, arguments, help));
  }
  return operations;
}

}  // namespace

std::span<const unsigned char> ReadSound(Source& source) {
  const std::span<const unsigned char> bytes = source.Read();
  source.Load();  // says more of what is wrong than the workshop does
  return bytes;
}

void DefineWorkshop(py::module_& module) {
  const auto none = py::none();
  module.def("check", Check, py::arg("source"), py::arg("limit") = 20);
  module.def("salvage", Salvage, py::arg("source"));
  module.def("report", Report, py::arg("source"), py::arg("name") = none,
             py::arg("fields_per_second") = none);
  module.def("show", Show, py::arg("source"), py::arg("all") = false);
  module.def("listing", ListingOf, py::arg("source"), py::arg("encoding") = none);
  module.def("_bad_listing", workshop::BadListing, py::arg("problem"));
  module.def("_rows", RowsOf, py::arg("listing"), py::arg("name"), py::arg("programs"),
             py::arg("csv"));
  module.def("columns", Columns, py::arg("programs") = false);
  module.def(
      "_csv_heads", [](bool programs) { return workshop::CsvHeads(RowKind(programs)); },
      py::arg("programs") = false);
  module.def("locate", Locate, py::arg("image"));
  module.def("read_located", ReadLocated, py::arg("image"), py::arg("located"));
  module.def("shown_text", ShownText, py::arg("text"), py::arg("encoding") = none);
  module.def("operations", OperationsOf);
  // As methods of a file, too.
  const py::object file = module.attr("File");
  file.attr("check") =
      py::cpp_function(Check, py::name("check"), py::is_method(file), py::arg("limit") = 20);
  file.attr("report") =
      py::cpp_function(Report, py::name("report"), py::is_method(file), py::arg("name") = none,
                       py::arg("fields_per_second") = none);
  file.attr("show") =
      py::cpp_function(Show, py::name("show"), py::is_method(file), py::arg("all") = false);
  file.attr("listing") = py::cpp_function(ListingOf, py::name("listing"), py::is_method(file),
                                          py::arg("encoding") = none);
}

}  // namespace veska_python
