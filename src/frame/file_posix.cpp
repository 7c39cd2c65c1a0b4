// On a 32-bit machine, also files with a size or a number that needs 64 bits.
#define _FILE_OFFSET_BITS 64  // NOLINT(bugprone-reserved-identifier): the system's own switch

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the POSIX part of it
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <string>

#include "frame/file.h"

namespace VESKA {
namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30U;  // a system may refuse more at once
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kNewFile = 0666;
constexpr mode_t kOwnFile = 0600;  // until it has the permissions of the one that it replaces
constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
constexpr int kMaxLinks = 40;

/// By the reason that the system gave last.
bool FailBySystem(Failure* why, FailureKind kind) { return Fail(why, kind, errno); }

class Descriptor {
 public:
  Descriptor(const std::filesystem::path& path, int flags, mode_t mode = 0)
      : fd_(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  bool IsOpen() const { return fd_ >= 0; }
  int Get() const { return fd_; }
  bool Close() {
    const int fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
  }

 private:
  int fd_;
};

/// Keeps the signals of a failing write from the host: the write fails with an error instead.
class WriteSignals {
 public:
  WriteSignals() {
    for (const int signal : kSignals) blocked_[Index(signal)] = Block(signal);
  }
  WriteSignals(const WriteSignals&) = delete;
  WriteSignals& operator=(const WriteSignals&) = delete;
  ~WriteSignals() {
    for (const int signal : kSignals) {
      if (blocked_[Index(signal)]) TakeAndUnblock(signal);
    }
  }

 private:
  static constexpr int kSignals[] = {SIGXFSZ, SIGPIPE};
  static std::size_t Index(int signal) { return signal == SIGXFSZ ? 0 : 1; }

  static sigset_t Only(int signal) {
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, signal);
    return set;
  }
  static bool IsPending(int signal) {
    sigset_t pending;
    return ::sigpending(&pending) == 0 && ::sigismember(&pending, signal) == 1;
  }
  /// False when one waits already or the host blocks it: then it is the host's.
  static bool Block(int signal) {
    if (IsPending(signal)) return false;
    const sigset_t set = Only(signal);
    sigset_t before;
    return ::pthread_sigmask(SIG_BLOCK, &set, &before) == 0 && ::sigismember(&before, signal) == 0;
  }
  static void TakeAndUnblock(int signal) {
    const sigset_t set = Only(signal);
    int taken = 0;
    if (IsPending(signal)) ::sigwait(&set, &taken);
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  }

  bool blocked_[2] = {};
};

bool WriteAll(int fd, const unsigned char* bytes, std::size_t size, Failure* why) {
  const WriteSignals signals;
  while (size > 0) {
    const ssize_t written = ::write(fd, bytes, std::min(size, kLargestTransfer));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return FailBySystem(why, FailureKind::kUnwritable);
    if (written == 0) return Fail(why, FailureKind::kUnwritable);
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool ReadAll(int fd, unsigned char* bytes, std::size_t size, Failure* why) {
  while (size > 0) {
    const ssize_t read = ::read(fd, bytes, std::min(size, kLargestTransfer));
    if (read < 0 && errno == EINTR) continue;
    if (read < 0) return FailBySystem(why, FailureKind::kUnreadable);
    if (read == 0) return Fail(why, FailureKind::kUnreadable);
    bytes += read;
    size -= static_cast<std::size_t>(read);
  }
  return true;
}

bool IsReadable(const struct stat& status, Failure* why) {
  if (!S_ISREG(status.st_mode)) return Fail(why, FailureKind::kNotAFile);
  if (status.st_size <= 0) return Fail(why, FailureKind::kEmpty);
  return static_cast<std::uint64_t>(status.st_size) < kFileSizeLimit ||
         Fail(why, FailureKind::kTooLarge);
}

/// What a path names in the end, through symbolic links, whether or not it exists.
std::filesystem::path FollowLinks(std::filesystem::path path) {
  std::error_code error;
  for (int i = 0; i < kMaxLinks && std::filesystem::is_symlink(path, error); ++i) {
    const std::filesystem::path link = std::filesystem::read_symlink(path, error);
    if (error) break;
    path = link.is_absolute() ? link : path.parent_path() / link;
  }
  return path;
}

/// Whether `file`, which is `old`, may be written and no other writer holds it. Locks it until it
/// is closed.
bool TakesForWriting(const Descriptor& file, const struct stat& old, Failure* why) {
  struct stat now {};
  if ((old.st_mode & kAnyWrite) == 0) return Fail(why, FailureKind::kReadOnly);  // root as well
  if (!file.IsOpen() || ::fstat(file.Get(), &now) != 0) {
    return FailBySystem(why, FailureKind::kUnwritable);
  }
  if (now.st_dev != old.st_dev || now.st_ino != old.st_ino) {  // replaced meanwhile
    return Fail(why, FailureKind::kLocked);
  }
  return ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK ||
         Fail(why, FailureKind::kLocked);
}

/// A new file beside `target`, removed again unless it takes the target's place.
class Replacement {
 public:
  Replacement(const std::filesystem::path& target, mode_t mode, Failure* why)
      : why_(why), target_(target), folder_(target.has_parent_path() ? target.parent_path() : ".") {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    for (int i = 0; i < 100; ++i) {
      path_ = folder_ / (".veska-" + std::to_string(::getpid()) + "-" + std::to_string(now + i));
      file_.emplace(path_, O_WRONLY | O_CREAT | O_EXCL, mode);
      if (IsOpen()) return;
      FailBySystem(why_, FailureKind::kUnwritable);
      if (errno != EEXIST) return;
    }
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() {
    if (IsOpen() || written_) ::unlink(path_.c_str());
  }

  bool IsOpen() const { return file_.has_value() && file_->IsOpen(); }

  /// Takes over permissions, and owner and group as far as the system lets: only root may give a
  /// file away.
  bool TakeOver(const struct stat& old) {
    const bool owned = ::fchown(file_->Get(), old.st_uid, old.st_gid) == 0;
    const bool grouped = owned || ::fchown(file_->Get(), kSameOwner, old.st_gid) == 0;
    mode_t mode = old.st_mode & kPermissionBits;
    if (!owned) mode &= ~mode_t{S_ISUID};
    if (!grouped) mode &= ~mode_t{S_ISGID};
    return ::fchmod(file_->Get(), mode) == 0 || FailBySystem(why_, FailureKind::kUnwritable);
  }

  bool Write(const unsigned char* bytes, std::size_t size) {
    written_ = true;
    return WriteAll(file_->Get(), bytes, size, why_) &&
           ((::fsync(file_->Get()) == 0 && file_->Close()) ||
            FailBySystem(why_, FailureKind::kUnwritable));
  }

  bool PutInPlace() {
    if (::rename(path_.c_str(), target_.c_str()) != 0) {
      return FailBySystem(why_, FailureKind::kUnwritable);
    }
    written_ = false;
    const Descriptor directory(folder_, O_RDONLY);
    if (directory.IsOpen()) ::fsync(directory.Get());  // some file systems cannot, and need not
    return true;
  }

 private:
  Failure* why_;
  std::filesystem::path target_;
  std::filesystem::path folder_;  // made beforehand: once it is in place, nothing may fail
  std::filesystem::path path_;
  std::optional<Descriptor> file_;
  bool written_ = false;
};

bool WriteDirectly(const std::filesystem::path& path, const struct stat& status,
                   const unsigned char* bytes, std::size_t size, Failure* why) {
  if (S_ISDIR(status.st_mode)) return Fail(why, FailureKind::kNotAFile);
  Descriptor file(path, O_WRONLY);
  if (!file.IsOpen()) return FailBySystem(why, FailureKind::kUnwritable);
  ::fcntl(file.Get(), F_SETFL, 0);  // opened without waiting, written with
  return WriteAll(file.Get(), bytes, size, why) &&
         (file.Close() || FailBySystem(why, FailureKind::kUnwritable));
}

}  // namespace

bool PathFromUtf16(const unsigned short* name, std::filesystem::path* path, Failure* why) {
  if (name == nullptr) return Fail(why, FailureKind::kNoName);
  std::string bytes;
  const auto add = [&bytes](unsigned byte) { bytes.push_back(static_cast<char>(byte)); };
  while (*name != 0) {
    unsigned code = *name++;
    if (code >= 0xD800 && code <= 0xDFFF) {
      if (code >= 0xDC00 || *name < 0xDC00 || *name > 0xDFFF) {
        return Fail(why, FailureKind::kNoName);
      }
      code = 0x10000 + ((code - 0xD800) << 10U) + (*name++ - 0xDC00U);
    }
    if (code < 0x80) {
      add(code);
      continue;
    }
    const unsigned tail = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
    add(kLead[tail] | code >> 6 * tail);
    for (unsigned i = tail; i-- > 0;) add(0x80 | (code >> 6 * i & 0x3F));
  }
  *path = std::move(bytes);
  return true;
}

bool ReadWholeFile(const std::filesystem::path& path, FileBytes* file, Failure* why) {
  if (path.empty()) return Fail(why, FailureKind::kNoName);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    return FailBySystem(why, missing ? FailureKind::kNoFile : FailureKind::kUnreadable);
  }
  // Not even opened otherwise: opening a device may wait, or do something.
  if (!IsReadable(status, why)) return false;
  const Descriptor input(path, O_RDONLY);
  if (!input.IsOpen() || ::fstat(input.Get(), &status) != 0) {
    return FailBySystem(why, FailureKind::kUnreadable);
  }
  if (!IsReadable(status, why)) return false;
  file->size = static_cast<std::size_t>(status.st_size);
  file->bytes.reset(new unsigned char[file->size]);
  return ReadAll(input.Get(), file->bytes.get(), file->size, why);
}

bool WriteWholeFile(const std::filesystem::path& path, const unsigned char* bytes, std::size_t size,
                    Failure* why) {
  if (path.empty()) return Fail(why, FailureKind::kNoName);
  struct stat old {};
  const bool exists = ::stat(path.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return FailBySystem(why, FailureKind::kUnwritable);
  if (exists && !S_ISREG(old.st_mode)) return WriteDirectly(path, old, bytes, size, why);

  const std::filesystem::path target = FollowLinks(path);
  const Descriptor held(target, O_WRONLY);  // until the new one is in place
  if (exists && !TakesForWriting(held, old, why)) return false;
  Replacement replacement(target, exists ? kOwnFile : kNewFile, why);
  return replacement.IsOpen() && (!exists || replacement.TakeOver(old)) &&
         replacement.Write(bytes, size) && replacement.PutInPlace();
}

}  // namespace VESKA
