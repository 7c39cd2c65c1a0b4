#include "udf.h"

#ifdef VESKA_HAVE_UDFREAD
#include <fcntl.h>
#include <udfread/blockinput.h>
#include <udfread/udfread.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>

#include "names.h"

namespace veska_tool {
namespace {

struct Free {
  void operator()(udfread* udf) const { udfread_close(udf); }
  void operator()(UDFDIR* folder) const { udfread_closedir(folder); }
  void operator()(UDFFILE* file) const { udfread_file_close(file); }
};
template <class Type>
using Owned = std::unique_ptr<Type, Free>;

/// What the reader of UDF reads blocks from.
struct Blocks : udfread_block_input {
  explicit Blocks(DiscImage& of) : udfread_block_input{}, image(of) {
    read = [](udfread_block_input* self, std::uint32_t block, void* to, std::uint32_t count, int) {
      const std::span bytes(static_cast<unsigned char*>(to), std::size_t{count} * UDF_BLOCK_SIZE);
      const std::uint64_t offset = std::uint64_t{block} * UDF_BLOCK_SIZE;
      return static_cast<int>(static_cast<Blocks*>(self)->image.Read(offset, bytes) /
                              UDF_BLOCK_SIZE);
    };
    size = [](udfread_block_input* self) {
      return static_cast<std::uint32_t>(
          std::min<std::uint64_t>(static_cast<Blocks*>(self)->image.Size() / UDF_BLOCK_SIZE,
                                  std::numeric_limits<std::uint32_t>::max()));
    };
  }
  DiscImage& image;
};

/// While it lives, nothing reaches standard error: the reader of UDF prints what it finds wrong.
class Silence {
 public:
  Silence() : kept_(::dup(STDERR_FILENO)) {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (kept_ >= 0 && nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) ::close(nowhere);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() {
    if (kept_ < 0) return;
    ::dup2(kept_, STDERR_FILENO);
    ::close(kept_);
  }

 private:
  int kept_;
};

/// The entry of that name, whatever its case; empty when there is none.
std::string NameIn(UDFDIR* folder, std::string_view name) {
  udfread_dirent entry{};
  while (udfread_readdir(folder, &entry) != nullptr) {
    if (SameButForCase(entry.d_name, name)) return entry.d_name;
  }
  return "";
}

Bytes ReadAll(UDFFILE* file) {
  Bytes bytes;
  const std::int64_t size = udfread_file_size(file);
  if (size <= 0 || static_cast<std::uint64_t>(size) > kLargestInput) return bytes;
  bytes.resize(static_cast<std::size_t>(size));
  std::size_t there = 0;
  while (there < bytes.size()) {
    const ssize_t count = udfread_file_read(file, bytes.data() + there, bytes.size() - there);
    if (count <= 0) break;
    there += static_cast<std::size_t>(count);
  }
  bytes.resize(there);
  return bytes;
}

}  // namespace

std::optional<Bytes> ReadFromUdf(DiscImage& image, std::string_view folder, std::string_view name) {
  const Silence silence;
  Blocks blocks(image);
  const Owned<udfread> udf(udfread_init());
  if (udf == nullptr || udfread_open_input(udf.get(), &blocks) != 0) return {};
  const Owned<UDFDIR> root(udfread_opendir(udf.get(), "/"));
  if (root == nullptr) return {};
  const std::string folder_there = NameIn(root.get(), folder);
  if (folder_there.empty()) return {};
  const Owned<UDFDIR> inside(udfread_opendir_at(root.get(), folder_there.c_str()));
  if (inside == nullptr) return {};
  const std::string name_there = NameIn(inside.get(), name);
  if (name_there.empty()) return {};
  const Owned<UDFFILE> file(udfread_file_openat(inside.get(), name_there.c_str()));
  if (file == nullptr) return {};
  return ReadAll(file.get());
}

}  // namespace veska_tool
#else
namespace veska_tool {

std::optional<Bytes> ReadFromUdf(DiscImage&, std::string_view, std::string_view) { return {}; }

}  // namespace veska_tool
#endif
