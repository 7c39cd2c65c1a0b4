#include "source.h"

#include <cerrno>
#include <fstream>
#include <limits>
#include <system_error>

#include "description.h"

namespace veska_python {
namespace {

using VESKA::CVMGInfo;
using VESKA::Failure;
using VESKA::FailureKind;

[[noreturn]] void Fail(FailureKind kind, const std::string& where, int error = 0) {
  Failure failure;
  failure.kind = kind;
  failure.system_error = error;
  throw FileProblem("LoadError", failure, where);
}

Bytes ReadWhole(const std::filesystem::path& path, const std::string& name) {
  std::error_code none;
  const auto status = std::filesystem::status(path, none);
  if (status.type() == std::filesystem::file_type::not_found) {
    Fail(FailureKind::kNoFile, name, ENOENT);
  }
  if (!is_regular_file(status)) Fail(FailureKind::kNotAFile, name);
  const std::uintmax_t size = std::filesystem::file_size(path, none);
  if (none || size > std::numeric_limits<std::uint32_t>::max()) Fail(FailureKind::kTooLarge, name);
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  Bytes bytes(static_cast<std::size_t>(size));
  in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  if (!in) Fail(FailureKind::kUnreadable, name, errno);
  return bytes;
}

}  // namespace

std::filesystem::path PathOf(const py::object& path) {
  PyObject* converted = nullptr;
#ifdef _WIN32
  if (PyUnicode_FSDecoder(path.ptr(), &converted) == 0) throw py::error_already_set();
  return py::cast<std::wstring>(py::reinterpret_steal<py::object>(converted));
#else
  if (PyUnicode_FSConverter(path.ptr(), &converted) == 0) throw py::error_already_set();
  const auto bytes = py::reinterpret_steal<py::bytes>(converted);
  return std::string(bytes);
#endif
}

std::string ShownPath(const py::object& path) {
  const py::object text = py::module_::import("os").attr("fsdecode")(path);
  return py::cast<std::string>(text.attr("encode")("utf-8", "replace"));
}

std::unique_ptr<CVMGInfo> CopyOf(const CVMGInfo& info) {
  auto copy = std::make_unique<CVMGInfo>(info);
  CopyAddresses(info.GetOriginalPGC(), copy->GetOriginalPGC());
  auto chain = copy->GetUserPGCTable().Items().begin();
  for (const auto& item : info.GetUserPGCTable().Items()) {
    CopyAddresses(item.UD_PGCI, (*chain++).UD_PGCI);
  }
  return copy;
}

Bytes SavedImage(CVMGInfo& info, bool may_complete, const std::string& name) {
  unsigned long size = 0;
  unsigned char* image = info.SaveToMemory(&size);
  if (image == nullptr && may_complete &&
      info.GetFailure().kind == FailureKind::kWouldNotReadBack) {
    info.AutoComplete();
    image = info.SaveToMemory(&size);
  }
  if (image == nullptr) throw FileProblem("SaveError", info.GetFailure(), name);
  const auto free = [&info](unsigned char* data) { info.FreeData(data); };
  const std::unique_ptr<unsigned char, decltype(free)> owner(image, free);
  return {image, image + size};
}

Bytes ImageOf(const FileView& file) {
  std::unique_ptr<CVMGInfo> copy = CopyOf(file.Info());
  if (file.root->file().is_edited) copy->AutoComplete();
  return SavedImage(*copy, true, file.name);
}

Source::Source(const py::object& given) {
  if (py::isinstance<FileView>(given)) {
    const auto& file = py::cast<const FileView&>(given);
    own_ = ImageOf(file);
    bytes_ = own_;
    name_ = file.name;
  } else if (PyBytes_Check(given.ptr()) != 0) {
    keep_ = given;
    bytes_ = {reinterpret_cast<const unsigned char*>(PyBytes_AS_STRING(given.ptr())),
              static_cast<std::size_t>(PyBytes_GET_SIZE(given.ptr()))};
  } else if (PyObject_CheckBuffer(given.ptr()) != 0) {
    // Others may write into these bytes while they are read.
    keep_ = py::reinterpret_steal<py::object>(PyBytes_FromObject(given.ptr()));
    if (!keep_) throw py::error_already_set();
    bytes_ = {reinterpret_cast<const unsigned char*>(PyBytes_AS_STRING(keep_.ptr())),
              static_cast<std::size_t>(PyBytes_GET_SIZE(keep_.ptr()))};
  } else {
    path_ = PathOf(given);
    is_path_ = true;
    name_ = ShownPath(given);
  }
}

std::span<const unsigned char> Source::Read() {
  if (is_path_) {
    own_ = ReadWhole(path_, name_);
    bytes_ = own_;
    is_path_ = false;
  }
  return bytes_;
}

std::unique_ptr<CVMGInfo> Source::Load() {
  static constexpr unsigned char kNothing = 0;
  auto info = std::make_unique<CVMGInfo>();
  const auto* bytes = bytes_.empty() ? &kNothing : bytes_.data();
  const bool is_loaded = is_path_ ? info->LoadFromFile(path_, CVMGInfo::kLoadAll)
                                  : info->LoadFromMemory(const_cast<unsigned char*>(bytes),
                                                         static_cast<unsigned long>(bytes_.size()),
                                                         CVMGInfo::kLoadAll);
  if (!is_loaded) throw FileProblem("LoadError", info->GetFailure(), name_);
  return info;
}

}  // namespace veska_python
