#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>

#include "frame/file.h"

namespace VESKA {
namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30U;  // a transfer's size has 32 bits

/// By the reason that the system gave last.
bool FailBySystem(Failure* why, FailureKind kind) {
  const DWORD error = ::GetLastError();
  if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION) {
    kind = FailureKind::kLocked;
  }
  return Fail(why, kind, static_cast<std::int32_t>(error));
}

class Handle {
 public:
  Handle(const std::filesystem::path& path, DWORD access, DWORD sharing, DWORD creation)
      : handle_(::CreateFileW(path.c_str(), access, sharing, nullptr, creation,
                              FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { Close(); }

  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  bool IsDiskFile() const { return ::GetFileType(handle_) == FILE_TYPE_DISK; }
  /// Not every system keeps an administrator from writing such a file.
  bool IsReadOnly() const {
    BY_HANDLE_FILE_INFORMATION file{};
    return ::GetFileInformationByHandle(handle_, &file) != 0 &&
           (file.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
  }
  HANDLE Get() const { return handle_; }
  bool Close() {
    const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return handle == INVALID_HANDLE_VALUE || ::CloseHandle(handle) != 0;
  }

 private:
  HANDLE handle_;
};

bool WriteAll(HANDLE file, const unsigned char* bytes, std::size_t size, Failure* why) {
  while (size > 0) {
    DWORD written = 0;
    const auto part = static_cast<DWORD>(std::min(size, kLargestTransfer));
    if (::WriteFile(file, bytes, part, &written, nullptr) == 0) {
      return FailBySystem(why, FailureKind::kUnwritable);
    }
    if (written == 0) return Fail(why, FailureKind::kUnwritable);
    bytes += written;
    size -= written;
  }
  return true;
}

bool ReadAll(HANDLE file, unsigned char* bytes, std::size_t size, Failure* why) {
  while (size > 0) {
    DWORD read = 0;
    const auto part = static_cast<DWORD>(std::min(size, kLargestTransfer));
    if (::ReadFile(file, bytes, part, &read, nullptr) == 0) {
      return FailBySystem(why, FailureKind::kUnreadable);
    }
    if (read == 0) return Fail(why, FailureKind::kUnreadable);
    bytes += read;
    size -= read;
  }
  return true;
}

/// What the handle's file is called once links are followed; `path` where the system cannot say.
std::filesystem::path FinalPath(const Handle& file, const std::filesystem::path& path) {
  std::wstring name(32768, L'\0');
  const DWORD length =
      ::GetFinalPathNameByHandleW(file.Get(), name.data(), static_cast<DWORD>(name.size()), 0);
  if (length == 0 || length >= name.size()) return path;
  name.resize(length);
  return name;
}

bool Exists(const std::filesystem::path& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool HasAttribute(const std::filesystem::path& path, DWORD attribute) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

/// Why a file could not be opened: the system says of a folder and of a write-protected file only
/// that access is denied.
bool FailToOpen(const std::filesystem::path& path, Failure* why, FailureKind kind) {
  FailBySystem(why, kind);
  if (HasAttribute(path, FILE_ATTRIBUTE_DIRECTORY)) return Fail(why, FailureKind::kNotAFile);
  if (kind == FailureKind::kUnwritable && HasAttribute(path, FILE_ATTRIBUTE_READONLY)) {
    return Fail(why, FailureKind::kReadOnly);
  }
  return false;
}

/// Creates a file beside `target` that holds the bytes and is flushed to the disk.
bool WriteBeside(const std::filesystem::path& target, const unsigned char* bytes, std::size_t size,
                 std::filesystem::path* beside, Failure* why) {
  const std::wstring process = std::to_wstring(::GetCurrentProcessId());
  const ULONGLONG now = ::GetTickCount64();
  for (ULONGLONG i = 0; i < 100; ++i) {
    *beside = target.parent_path() / (L".veska-" + process + L"-" + std::to_wstring(now + i));
    Handle file(*beside, GENERIC_WRITE, 0, CREATE_NEW);
    if (!file.IsOpen() && ::GetLastError() == ERROR_FILE_EXISTS) continue;
    if (!file.IsOpen()) return FailBySystem(why, FailureKind::kUnwritable);
    if (WriteAll(file.Get(), bytes, size, why) &&
        ((::FlushFileBuffers(file.Get()) != 0 && file.Close()) ||
         FailBySystem(why, FailureKind::kUnwritable))) {
      return true;
    }
    file.Close();
    ::DeleteFileW(beside->c_str());
    return false;
  }
  return Fail(why, FailureKind::kUnwritable, ERROR_FILE_EXISTS);
}

bool PutInPlace(const std::filesystem::path& from, const std::filesystem::path& to, bool exists,
                Failure* why) {
  // Replacing keeps the old file's access rights; not every file system can.
  if (exists && ::ReplaceFileW(to.c_str(), from.c_str(), nullptr, 0, nullptr, nullptr) != 0) {
    return true;
  }
  if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
      0) {
    return true;
  }
  FailBySystem(why, FailureKind::kUnwritable);
  // A replacing that stops halfway may have removed the old file: then this is all that is left.
  if (!exists || Exists(to)) ::DeleteFileW(from.c_str());
  return false;
}

}  // namespace

bool PathFromUtf16(const unsigned short* name, std::filesystem::path* path, Failure* why) {
  if (name == nullptr) return Fail(why, FailureKind::kNoName);
  std::wstring wide;
  while (*name != 0) wide.push_back(static_cast<wchar_t>(*name++));
  *path = std::move(wide);
  return true;
}

bool ReadWholeFile(const std::filesystem::path& path, FileBytes* file, Failure* why) {
  if (path.empty()) return Fail(why, FailureKind::kNoName);
  const Handle input(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  if (!input.IsOpen()) {
    const bool missing = !Exists(path);
    return FailToOpen(path, why, missing ? FailureKind::kNoFile : FailureKind::kUnreadable);
  }
  if (!input.IsDiskFile()) return Fail(why, FailureKind::kNotAFile);
  LARGE_INTEGER size{};
  if (::GetFileSizeEx(input.Get(), &size) == 0) return FailBySystem(why, FailureKind::kUnreadable);
  if (size.QuadPart <= 0) return Fail(why, FailureKind::kEmpty);
  if (static_cast<std::uint64_t>(size.QuadPart) >= kFileSizeLimit) {
    return Fail(why, FailureKind::kTooLarge);
  }
  file->size = static_cast<std::size_t>(size.QuadPart);
  file->bytes.reset(new unsigned char[file->size]);
  return ReadAll(input.Get(), file->bytes.get(), file->size, why);
}

bool WriteWholeFile(const std::filesystem::path& path, const unsigned char* bytes, std::size_t size,
                    Failure* why) {
  if (path.empty()) return Fail(why, FailureKind::kNoName);
  std::filesystem::path target = path;
  Handle held(path, GENERIC_WRITE, 0, OPEN_EXISTING);  // no other writer until it is replaced
  const bool exists = held.IsOpen();
  if (!exists && (::GetLastError() != ERROR_FILE_NOT_FOUND || Exists(path))) {
    // It cannot be written, or is a link to a file that is none.
    return FailToOpen(path, why, FailureKind::kUnwritable);
  }
  if (exists && held.IsReadOnly()) return Fail(why, FailureKind::kReadOnly);
  if (exists && !held.IsDiskFile()) {
    return WriteAll(held.Get(), bytes, size, why) &&
           (held.Close() || FailBySystem(why, FailureKind::kUnwritable));
  }
  if (exists) target = FinalPath(held, path);

  std::filesystem::path beside;
  if (!WriteBeside(target, bytes, size, &beside, why)) return false;
  held.Close();  // an open file cannot be replaced
  return PutInPlace(beside, target, exists, why);
}

}  // namespace VESKA
