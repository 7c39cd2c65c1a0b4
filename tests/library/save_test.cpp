// Saving and loading by path: a save happens wholly or not at all, and what is no file is refused.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <thread>

#include "support/heap.h"
#include "support/image_builder.h"
#include "support/temporary_folder.h"

// WebAssembly has no signals, links, locks and limits to test with, and no threads.
#if !defined(_WIN32) && !defined(__EMSCRIPTEN__)
#define VESKA_POSIX
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// What a call of the system is to do in place of its work, and how often it was called.
struct Fault {
  std::string call;
  int error = EIO;
  int result = -1;
  int times = 1000;  // the first calls, then the system's own
  int calls = 0;
} fault;

/// The system's own function of that name, unless it is to fail.
template <class Result, class... Arguments>
Result CallSystem(const char* name, Arguments... arguments) {
  const auto call = reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name));
  if (fault.call != name || ++fault.calls > fault.times) return call(arguments...);
  if (fault.call == "close") call(arguments...);  // it closes even if it says that it failed
  errno = fault.error;
  return fault.result;
}

}  // namespace

// These stand before the system's own in the test program.
extern "C" {
int fsync(int fd) { return CallSystem<int>("fsync", fd); }
int close(int fd) { return CallSystem<int>("close", fd); }
int flock(int fd, int operation) noexcept { return CallSystem<int>("flock", fd, operation); }
int sigpending(sigset_t* set) noexcept { return CallSystem<int>("sigpending", set); }
int fchmod(int fd, mode_t mode) noexcept { return CallSystem<int>("fchmod", fd, mode); }
int fchown(int fd, uid_t owner, gid_t group) noexcept {
  return CallSystem<int>("fchown", fd, owner, group);
}
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
int rename(const char* from, const char* to) noexcept {
  return CallSystem<int>("rename", from, to);
}
ssize_t read(int fd, void* bytes, std::size_t size) {
  return CallSystem<ssize_t>("read", fd, bytes, size);
}
ssize_t write(int fd, const void* bytes, std::size_t size) {
  return CallSystem<ssize_t>("write", fd, bytes, size);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}
#endif

namespace VESKA {
namespace {

namespace fs = std::filesystem;

const Bytes kOld = Text("what was there before", 3000);

class SaveTest : public testing::Test {
 protected:
  SaveTest() { EXPECT_TRUE(Load(info_, image_)); }

  fs::path File(const std::string& name, const Bytes& bytes = kOld) {
    return folder_.Write(name, bytes);
  }
  /// What is in the folder, each name with its size or what its link says.
  std::vector<std::string> Contents() {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
      names.push_back(entry.path().string());
      if (entry.is_symlink()) names.back() += " -> " + fs::read_symlink(entry).string();
      if (entry.is_regular_file(error)) names.back() += " " + std::to_string(entry.file_size());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  /// Expects a save to be refused and to leave everything as it is.
  void ExpectRefused(const fs::path& path, FailureKind kind) {
    std::error_code error;
    const bool is_file = fs::is_regular_file(path, error);
    const Bytes old = is_file ? ReadFile(path) : Bytes();
    const auto before = Contents();
    EXPECT_FALSE(info_.SaveToFile(path)) << path;
    EXPECT_EQ(info_.GetFailure().kind, kind) << path << ": " << Describe(info_.GetFailure());
    EXPECT_EQ(Contents(), before);
    EXPECT_EQ(is_file ? ReadFile(path) : Bytes(), old);
  }

  TemporaryFolder folder_;
  Bytes image_ = Sample("empty");
  CVMGInfo info_;
};

TEST_F(SaveTest, CreatesOrReplacesTheFileAndNothingElse) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_);
  EXPECT_TRUE(info_.SaveToFile(File("longer").filename()));
  EXPECT_TRUE(info_.SaveToFile("new"));
  fs::current_path(before);
  EXPECT_EQ(ReadFile(folder_ / "longer"), image_);
  EXPECT_EQ(ReadFile(folder_ / "new"), image_);
  EXPECT_EQ(Contents().size(), 2U);
}

TEST_F(SaveTest, RefusesPathsThatCannotBeWritten) {
  const fs::path read_only = File("read only");
  fs::permissions(read_only, fs::perms::owner_read | fs::perms::group_read);
  fs::create_directory(folder_ / "folder");
  ExpectRefused("", FailureKind::kNoName);
  ExpectRefused(read_only, FailureKind::kReadOnly);
  ExpectRefused(folder_, FailureKind::kNotAFile);
  ExpectRefused(folder_ / "folder", FailureKind::kNotAFile);
  ExpectRefused(folder_ / "no such folder" / "file", FailureKind::kUnwritable);
  EXPECT_NE(info_.GetFailure().system_error, 0);
  ExpectRefused(File("file") / "below", FailureKind::kUnwritable);
  ExpectRefused(folder_ / std::string(256, 'x'), FailureKind::kUnwritable);
  fs::permissions(read_only, fs::perms::owner_all);

  const fs::path held = File("held", image_);
#ifdef _WIN32
  {
    const std::ofstream writer(held, std::ios::binary | std::ios::app);
    EXPECT_FALSE(info_.LoadFromFile(held, CVMGInfo::kLoadAll));
    EXPECT_EQ(info_.GetFailure().kind, FailureKind::kLocked);
    ExpectRefused(held, FailureKind::kLocked);
  }
#elif defined(VESKA_POSIX)
  const int writer = ::open(held.c_str(), O_RDWR);
  ::flock(writer, LOCK_EX);
  ExpectRefused(held, FailureKind::kLocked);
  ::close(writer);
#endif
  EXPECT_TRUE(info_.SaveToFile(held));
}

TEST_F(SaveTest, WithoutMemoryFailsAndChangesNothing) {
  const fs::path path = File("old");
  const std::u16string name = path.u16string();
  const auto before = Contents();
  const std::size_t in_use = heap::InUse();
  std::size_t calls = 0;
  const auto save = [&] {
    const heap::FailAfter none(calls);
    return info_.SaveToFile(reinterpret_cast<const unsigned short*>(name.c_str()));
  };
  for (; !save(); ++calls) {
    ASSERT_EQ(info_.GetFailure(), Failure{.kind = FailureKind::kNoMemory});
    ASSERT_EQ(heap::InUse(), in_use);
    ASSERT_EQ(ReadFile(path), kOld);
    ASSERT_EQ(Contents(), before);
  }
  EXPECT_GT(calls, 3U);
  EXPECT_EQ(ReadFile(path), image_);

  for (calls = 0;; ++calls) {
    const heap::FailAfter none(calls);
    if (info_.LoadFromFile(path, CVMGInfo::kLoadAll)) break;
    ASSERT_EQ(info_.GetFailure().kind, FailureKind::kNoMemory);
  }
  EXPECT_GT(calls, 0U);
  EXPECT_EQ(heap::InUse(), in_use);
}

TEST_F(SaveTest, LoadingRefusesWhatIsNoFile) {
  fs::create_directory(folder_ / "folder");
  for (const std::uintmax_t gib : {4U, 5U, 4096U}) {
    const fs::path sparse = File(std::to_string(gib), image_);
    std::error_code error;
    fs::resize_file(sparse, gib << 30U, error);  // not every file system has files that large
    if (error) fs::remove(sparse);
  }
  using Kind = FailureKind;
  std::vector<std::pair<fs::path, Kind>> paths = {{"", Kind::kNoName},
                                                  {folder_, Kind::kNotAFile},
                                                  {folder_ / "missing", Kind::kNoFile},
                                                  {folder_ / "no folder" / "file", Kind::kNoFile},
                                                  {File("empty", {}), Kind::kEmpty}};
  for (const auto& entry : fs::directory_iterator(folder_)) {
    if (entry.path().filename() == "empty") continue;
    paths.emplace_back(entry, entry.is_directory() ? Kind::kNotAFile : Kind::kTooLarge);
  }
#ifdef VESKA_POSIX
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  for (const char* device : {"/dev/null", "/dev/zero", "/dev/full"}) {
    paths.emplace_back(device, Kind::kNotAFile);
  }
  // It says that it has 4,096 bytes, and has fewer.
  const char* liar = "/sys/devices/system/cpu/online";
  if (fs::exists(liar)) paths.emplace_back(liar, Kind::kUnreadable);
  paths.emplace_back(folder_ / "pipe", Kind::kNotAFile);
  paths.emplace_back(File("file") / "below", Kind::kNoFile);
#endif
  for (const auto& [path, kind] : paths) {
    heap::StartPeak();
    EXPECT_FALSE(info_.LoadFromFile(path, CVMGInfo::kLoadAll)) << path;
    EXPECT_LT(heap::Peak(), std::size_t{1} << 20);
    EXPECT_EQ(info_.GetFailure().kind, kind) << path << ": " << Describe(info_.GetFailure());
  }
  CVMGInfo as_it_was;
  ASSERT_TRUE(Load(as_it_was, image_));
  EXPECT_TRUE(info_ == as_it_was);
  EXPECT_FALSE(as_it_was.LoadFromFile(File("cut", image_.Part(0, 530)), CVMGInfo::kLoadAll));
}

TEST_F(SaveTest, LoadingByPathStaysBelow16TimesTheFile) {
  for (int i = 0; i < 0xFFFF; ++i) info_.GetTextDataMgr().AddNode();
  info_.AutoComplete();
  const fs::path path = folder_ / "texts";
  ASSERT_TRUE(info_.SaveToFile(path));
  CVMGInfo info;
  heap::StartPeak();
  EXPECT_TRUE(info.LoadFromFile(path, CVMGInfo::kLoadAll));
  EXPECT_LE(heap::Peak(), 16 * fs::file_size(path) + (std::size_t{1} << 20));
  EXPECT_TRUE(info == info_);
}

#ifdef VESKA_POSIX

mode_t ModeOf(const fs::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

TEST_F(SaveTest, KeepsPermissionsAndGivesANewFileTheUsualOnes) {
  for (const mode_t mode : {0600U, 0640U, 0644U, 0666U, 0777U, 0222U}) {
    const fs::path path = File("old");
    ::chmod(path.c_str(), mode);
    EXPECT_TRUE(info_.SaveToFile(path));
    EXPECT_EQ(ModeOf(path), mode);
  }
  const fs::path longest = folder_ / std::string(255, 'x');
  const mode_t before = ::umask(027);
  EXPECT_TRUE(info_.SaveToFile(longest));
  ::umask(before);
  EXPECT_EQ(ModeOf(longest), 0640U);
}

TEST_F(SaveTest, WritesWhatASymbolicLinkNames) {
  fs::create_directory(folder_ / "a");
  fs::create_directory(folder_ / "b");
  File("a/old");
  const struct {
    const char* link;
    fs::path to;
    const char* target;
  } cases[] = {{"absolute", folder_ / "a/old", "a/old"},
               {"b/relative", "../a/old", "a/old"},
               {"b/twice", "relative", "a/old"},
               {"dangling", "new", "new"},
               {"b/dangling", "../a/new", "a/new"}};
  for (const auto& link : cases) {
    File("a/old");
    fs::create_symlink(link.to, folder_ / link.link);
    EXPECT_TRUE(info_.SaveToFile(folder_ / link.link)) << link.link;
    EXPECT_EQ(fs::read_symlink(folder_ / link.link), link.to);
    EXPECT_FALSE(fs::is_symlink(folder_ / link.target));
    EXPECT_EQ(ReadFile(folder_ / link.target), image_) << link.link;
  }
  EXPECT_EQ(Contents().size(), 10U);
  fs::create_symlink("loop", folder_ / "loop");
  ExpectRefused(folder_ / "loop", FailureKind::kUnwritable);
}

TEST_F(SaveTest, WritesDevicesDirectlyAndWaitsForNoReader) {
  EXPECT_TRUE(info_.SaveToFile("/dev/null"));
  if (fs::exists("/dev/full")) {
    ExpectRefused("/dev/full", FailureKind::kUnwritable);
    EXPECT_EQ(info_.GetFailure().system_error, ENOSPC);
  }

  const fs::path pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  ExpectRefused(pipe, FailureKind::kUnwritable);
  EXPECT_EQ(info_.GetFailure().system_error, ENXIO);
  const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_TRUE(info_.SaveToFile(pipe));
  Bytes received(image_.size() + 1);
  EXPECT_EQ(::read(reader, received.data(), received.size()), static_cast<ssize_t>(image_.size()));
  received.resize(image_.size());
  EXPECT_EQ(received, image_);

  // More than a pipe holds, to a reader that leaves before it has all.
  CTimeMapTable& map =
      info_.GetMovieAVFileTable().GetMovieAVFile().AddNode()->M_VOBI.GetTimeMapTable();
  for (int i = 0; i < 0xFFFF; ++i) map.AddVobuENNode();
  info_.AutoComplete();
  ::close(reader);
  const int hasty = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  std::thread leaving([hasty] {
    pollfd ready{hasty, POLLIN, 0};
    ::poll(&ready, 1, 10000);
    ::close(hasty);
  });
  EXPECT_FALSE(info_.SaveToFile(pipe));
  EXPECT_EQ(info_.GetFailure().system_error, EPIPE);
  leaving.join();

  // The same to one that takes it all, though not at once.
  const int patient = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  Bytes all(info_.GetDataSize());
  std::thread reading([patient, &all] {
    for (std::size_t done = 0; done < all.size();) {
      pollfd ready{patient, POLLIN, 0};
      if (::poll(&ready, 1, 10000) != 1) return;
      const ssize_t part = ::read(patient, all.data() + done, all.size() - done);
      if (part <= 0) return;
      done += static_cast<std::size_t>(part);
    }
  });
  EXPECT_TRUE(info_.SaveToFile(pipe)) << Describe(info_.GetFailure());
  reading.join();
  ::close(patient);
  EXPECT_EQ(all, Written(info_));
}

TEST_F(SaveTest, AFullDiskChangesNothingAndRaisesNoSignal) {
  const auto save_within = [this](std::size_t size, const fs::path& path) {
    rlimit usual{};
    ::getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit limit{size, usual.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool saved = info_.SaveToFile(path);
    ::setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(info_.GetFailure().system_error, saved ? 0 : EFBIG);
    return saved;
  };
  const fs::path old = File("old");
  const auto before = Contents();
  for (std::size_t size = 0; size < image_.size(); ++size) {
    ASSERT_FALSE(save_within(size, old) || save_within(size, folder_ / "new")) << size;
    ASSERT_EQ(ReadFile(old), kOld);
    ASSERT_EQ(Contents(), before);
  }
  sigset_t signals;
  ::sigpending(&signals);
  EXPECT_EQ(::sigismember(&signals, SIGXFSZ), 0);
  ::pthread_sigmask(SIG_BLOCK, nullptr, &signals);
  EXPECT_EQ(::sigismember(&signals, SIGXFSZ) + ::sigismember(&signals, SIGPIPE), 0);

  EXPECT_TRUE(save_within(image_.size(), old));
  EXPECT_EQ(ReadFile(old), image_);
}

// A signal that waits or is blocked when the save begins is the host's; the other one is not left
// blocked for it.
TEST_F(SaveTest, LeavesTheHostItsSignals) {
  for (const int own : {SIGXFSZ, SIGPIPE}) {
    sigset_t set, before, after, pending;
    ::sigemptyset(&set);
    ::sigaddset(&set, own);
    ::pthread_sigmask(SIG_BLOCK, &set, &before);
    for (const bool waits : {false, true}) {
      if (waits) ::raise(own);
      EXPECT_TRUE(info_.SaveToFile(folder_ / "file"));
      ::pthread_sigmask(SIG_BLOCK, nullptr, &after);
      ::sigpending(&pending);
      for (const int signal : {SIGXFSZ, SIGPIPE}) {
        EXPECT_EQ(::sigismember(&after, signal), signal == own ? 1 : 0);
        EXPECT_EQ(::sigismember(&pending, signal), signal == own && waits ? 1 : 0);
      }
    }
    int taken = 0;
    ::sigwait(&set, &taken);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }
}

TEST_F(SaveTest, AFailingSystemCallChangesNothing) {
  const Fault faults[] = {{.call = "fsync"},
                          {.call = "close"},
                          {.call = "fchmod"},
                          {.call = "rename", .error = EBUSY},
                          {.call = "write", .error = ENOSPC},
                          {.call = "write", .error = 0, .result = 0}};
  for (const Fault& planned : faults) {
    SCOPED_TRACE(planned.call);
    const fs::path old = File("old");
    fault = planned;
    const bool saved = info_.SaveToFile(old);
    const int calls = fault.calls;
    fault = {};
    EXPECT_FALSE(saved);
    EXPECT_GE(calls, 1);
    const Failure expected = {.kind = FailureKind::kUnwritable, .system_error = planned.error};
    EXPECT_EQ(info_.GetFailure(), expected);
    EXPECT_EQ(ReadFile(old), kOld);
    EXPECT_EQ(Contents().size(), 1U);
    EXPECT_TRUE(info_.SaveToFile(old)) << "nothing holds it any more";
  }
}

TEST_F(SaveTest, WorksWhereTheSystemInterruptsItOrCannotLockOrTellSignals) {
  const Fault faults[] = {{.call = "flock", .error = ENOLCK},
                          {.call = "sigpending"},
                          {.call = "fchown", .error = EPERM},
                          {.call = "write", .error = EINTR, .times = 2}};
  for (const Fault& planned : faults) {
    SCOPED_TRACE(planned.call);
    const fs::path old = File("old");
    fault = planned;
    const bool saved = info_.SaveToFile(old);
    const int calls = fault.calls;
    fault = {};
    EXPECT_TRUE(saved && ReadFile(old) == image_);
    EXPECT_GE(calls, 1);
  }
}

TEST_F(SaveTest, ReadingGoesOnWhenInterruptedAndFailsOtherwise) {
  const fs::path path = File("file", image_);
  const std::pair<Fault, bool> faults[] = {{{.call = "read", .error = EINTR, .times = 2}, true},
                                           {{.call = "read", .error = EIO}, false},
                                           {{.call = "read", .error = 0, .result = 0}, false}};
  for (const auto& [planned, loads] : faults) {
    fault = planned;
    const bool loaded = info_.LoadFromFile(path, CVMGInfo::kLoadAll);
    const int calls = fault.calls;
    fault = {};
    EXPECT_EQ(loaded, loads);
    EXPECT_EQ(calls, loads ? 3 : 1);
    const Failure expected = {.kind = FailureKind::kUnreadable, .system_error = planned.error};
    EXPECT_EQ(info_.GetFailure(), loads ? Failure() : expected);
  }
}

TEST_F(SaveTest, AFileThatCannotBeGivenAwayActsForNobodyElse) {
  const fs::path old = File("old");
  ::chmod(old.c_str(), 06755);
  fault = {.call = "fchown", .error = EPERM};
  EXPECT_TRUE(info_.SaveToFile(old));
  fault = {};
  EXPECT_EQ(ReadFile(old), image_);
  EXPECT_EQ(static_cast<unsigned>(fs::status(old).permissions()), 0755U);
}

#endif

}  // namespace
}  // namespace VESKA
