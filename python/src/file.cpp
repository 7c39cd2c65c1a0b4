// The class `File`.
#include <pybind11/stl.h>
#include <veska/workshop/diff.h>
#include <veska/workshop/edit.h>
#include <veska/workshop/json.h>
#include <veska/workshop/locate.h>

#include <optional>

#include "description.h"
#include "source.h"
#include "values.h"

namespace veska_python {
namespace {

namespace workshop = VESKA::workshop;
using VESKA::CVMGInfo;

FileView FileOf(std::unique_ptr<CVMGInfo> info, std::string name = {}) {
  return {Node::RootOf(std::move(info)), std::move(name)};
}

FileView Load(const py::object& from) {
  Source source(from);
  std::unique_ptr<CVMGInfo> info;
  {
    const py::gil_scoped_release free;
    info = source.Load();
  }
  return FileOf(std::move(info), source.name());
}

void Reload(FileView& file, const py::object& from) {
  FileView loaded = Load(from);
  file.root->ExpectNoArrays();
  file.root->EndBelow(false);
  file.Info() = std::move(loaded.Info());
  file.root->file().is_edited = false;
  file.name = loaded.name;
}

void Complete(const FileView& file) {
  file.Info().AutoComplete();
  file.root->file().is_edited = false;
}

/// What is to be saved: completed where it was edited, unless it was said whether to.
std::unique_ptr<CVMGInfo> Ready(const FileView& file, std::optional<bool> complete) {
  if (complete.value_or(file.root->file().is_edited)) Complete(file);
  // The library saves what has no identifier, and does not load it again.
  const auto& header = file.Info().GetMAT().GetHeader();
  if (!workshop::BeginsLikeOne({header.VMG_ID, sizeof header.VMG_ID})) {
    VESKA::Failure failure;
    failure.kind = VESKA::FailureKind::kNotManagement;
    throw FileProblem("SaveError", failure, file.name);
  }
  return CopyOf(file.Info());
}

/// A file that is laid out in another way is saved only as completing lays it out.
bool NeedsCompleting(const CVMGInfo& refused, std::optional<bool> complete) {
  return !complete && refused.GetFailure().kind == VESKA::FailureKind::kWouldNotReadBack;
}

void Save(const FileView& file, const py::object& to, std::optional<bool> complete) {
  const std::filesystem::path path = PathOf(to);
  const std::string name = ShownPath(to);
  const std::unique_ptr<CVMGInfo> copy = Ready(file, complete);
  const py::gil_scoped_release free;
  if (copy->SaveToFile(path)) return;
  if (NeedsCompleting(*copy, complete)) {
    copy->AutoComplete();
    if (copy->SaveToFile(path)) return;
  }
  throw FileProblem("SaveError", copy->GetFailure(), name);
}

py::bytes ToImage(const FileView& file, std::optional<bool> complete) {
  const std::unique_ptr<CVMGInfo> copy = Ready(file, complete);
  return ToBytes(SavedImage(*copy, !complete, file.name));
}

/// The words of operations, each of which is one string as for a shell or a sequence of words.
std::vector<std::string> Words(const py::args& operations) {
  std::vector<std::string> words;
  for (const py::handle& operation : operations) {
    const py::object parts = py::isinstance<py::str>(operation)
                                 ? py::module_::import("shlex").attr("split")(operation)
                                 : py::reinterpret_borrow<py::object>(operation);
    for (const py::handle& word : parts) words.push_back(Utf8(py::str(word)));
  }
  return words;
}

std::vector<std::string> Edit(const FileView& file, const py::args& operations) {
  const std::vector<std::string> words = Words(operations);
  file.root->ExpectNoArrays();
  std::vector<std::string> followed = workshop::Edit(file.Info(), words);
  file.root->EndBelow(true);
  file.root->file().is_edited = true;
  return followed;
}

std::vector<std::string> Preview(const FileView& file, const py::args& operations) {
  const std::vector<std::string> words = Words(operations);
  const std::unique_ptr<CVMGInfo> copy = CopyOf(file.Info());
  const py::gil_scoped_release free;
  return workshop::PreviewEdit(*copy, words);
}

std::string ToJson(const FileView& file, bool line) {
  const CVMGInfo copy = file.Info();
  const py::gil_scoped_release free;
  return workshop::ToJson(copy, line ? workshop::JsonForm::kLine : workshop::JsonForm::kPretty);
}

FileView FromJson(const py::object& given) {
  std::string text;
  if (py::isinstance<py::str>(given)) {
    text = Utf8(given);
  } else {
    text = py::cast<std::string>(py::bytes(given));
  }
  std::unique_ptr<CVMGInfo> info;
  {
    const py::gil_scoped_release free;
    info = workshop::FromJson(text);
  }
  return FileOf(std::move(info));
}

std::vector<std::string> Diff(const py::object& a, const py::object& b, bool derived) {
  Source first(a);
  Source second(b);
  const py::gil_scoped_release free;
  return workshop::Differences(*first.Load(), *second.Load(), derived);
}

FileView DeepCopy(const FileView& file) {
  FileView copy = FileOf(CopyOf(file.Info()), file.name);
  copy.root->file().is_edited = file.root->file().is_edited;
  return copy;
}

py::tuple Reduce(const py::object& self) {
  const auto& file = py::cast<const FileView&>(self);
  const Bytes image = ImageOf(file);
  return py::make_tuple(py::module_::import("veska._values").attr("file_of"),
                        py::make_tuple(ToBytes(image), file.name));
}

py::object Equal(const FileView& a, const py::object& other) {
  if (!py::isinstance<FileView>(other)) {
    return py::reinterpret_borrow<py::object>(Py_NotImplemented);
  }
  return py::bool_(a.Info() == py::cast<const FileView&>(other).Info());
}

std::string ReprOf(const FileView& file) {
  const VESKA::CPGCInfo& chain = file.Info().GetOriginalPGC();
  return "<veska.File " + std::string(py::repr(py::str(file.name))) + ": " +
         std::to_string(chain.GetPGCount()) + " programs, " + std::to_string(chain.GetCellCount()) +
         " cells>";
}

/// What is told in Python: for notebooks.
py::object InNotebook(const char* function, const py::object& self, const py::args& args,
                      const py::kwargs& kwargs) {
  return py::module_::import("veska._notebook").attr(function)(self, *args, **kwargs);
}

}  // namespace

void DefineFile(py::module_& module) {
  py::class_<FileView> file(module, "File", "A management file.");
  file.def(py::init([] { return FileOf(std::make_unique<CVMGInfo>()); }))
      .def_readwrite("name", &FileView::name, "What it was loaded from, for people.")
      .def("reload", Reload, py::arg("source"))
      .def("complete", Complete)
      .def("save", Save, py::arg("path"), py::arg("complete") = py::none())
      .def("to_bytes", ToImage, py::arg("complete") = py::none())
      .def("__bytes__", [](const FileView& self) { return ToImage(self, {}); })
      .def("edit", Edit)
      .def("preview", Preview)
      .def("to_json", ToJson, py::arg("line") = false)
      .def("__eq__", Equal)
      .def("__repr__", ReprOf)
      .def("__copy__", DeepCopy)
      .def("__deepcopy__", [](const FileView& self, const py::dict&) { return DeepCopy(self); })
      .def("__reduce__", Reduce);
  for (const char* name : {"_repr_html_", "plot_bitrate"}) {
    file.attr(name) = py::cpp_function(
        [name](const py::object& self, const py::args& args, const py::kwargs& kwargs) {
          return InNotebook(name[0] == '_' ? "repr_html" : name, self, args, kwargs);
        },
        py::name(name), py::is_method(file));
  }
  // The tables: the same properties that views have, of the file's root.
  const Type& type = FileType();
  for (const Part& part : type.parts) {
    file.def_property_readonly(
        part.name, [&part](const FileView& self) { return ViewOf(Node::PartOf(self.root, part)); },
        part.type().doc);
  }
  module.def("load", Load, py::arg("source"));
  module.def("from_json", FromJson, py::arg("text"));
  module.def("diff", Diff, py::arg("a"), py::arg("b"), py::arg("derived") = false);
  module.def("json_schema", workshop::JsonSchema);
}

}  // namespace veska_python
