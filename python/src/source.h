// What Python gives for a management file: an object, its bytes or a path.
#pragma once

#include <pybind11/pybind11.h>
#include <veska/workshop/load.h>

#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "errors.h"
#include "views.h"

namespace veska_python {

using VESKA::workshop::Bytes;

/// The class `File`.
struct FileView {
  NodePtr root;
  std::string name;  ///< for people, in UTF-8; empty where the bytes came from none

  VESKA::CVMGInfo& Info() const { return *root->file().info; }
};

/// A path as the platform has it, of str, bytes or os.PathLike.
std::filesystem::path PathOf(const py::object& path);

/// The same for people, in UTF-8.
std::string ShownPath(const py::object& path);

/// A copy that would be saved as the object would. (A copy by itself has no addresses of cells.)
std::unique_ptr<VESKA::CVMGInfo> CopyOf(const VESKA::CVMGInfo& info);

/// The image of an object, which is completed where it could not be saved otherwise and that is
/// allowed. Throws FileProblem with `name`.
Bytes SavedImage(VESKA::CVMGInfo& info, bool may_complete, const std::string& name);

/// The image of a file, completed where it was edited or could not be saved otherwise, without
/// changing it. Throws FileProblem.
Bytes ImageOf(const FileView& file);

/// A management file that was given. It is looked at while the interpreter's lock is held, and
/// read without.
class Source {
 public:
  explicit Source(const py::object& given);

  const std::string& name() const { return name_; }
  /// The bytes; throws FileProblem. They last as long as this.
  std::span<const unsigned char> Read();
  /// The object; throws FileProblem.
  std::unique_ptr<VESKA::CVMGInfo> Load();

 private:
  py::object keep_;
  std::filesystem::path path_;
  bool is_path_ = false;
  std::unique_ptr<VESKA::CVMGInfo> info_;
  Bytes own_;
  std::span<const unsigned char> bytes_;
  std::string name_;
};

void DefineFile(py::module_& module);
void DefineWorkshop(py::module_& module);
void DefineResults(py::module_& module);

}  // namespace veska_python
