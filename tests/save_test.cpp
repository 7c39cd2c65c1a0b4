// Saving and loading by path: a save happens wholly or not at all, and what is no file is refused.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <thread>

#include "heap.h"
#include "image_builder.h"
#include "temporary_folder.h"

#ifndef _WIN32
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char* failing_call = "";

/// The system's own function of that name, unless it is to fail.
template <class... Arguments>
int CallSystem(const char* name, Arguments... arguments) {
  if (std::string(name) != failing_call) {
    return reinterpret_cast<int (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
  }
  errno = EIO;
  return -1;
}

}  // namespace

// These stand before the system's own in the test program.
extern "C" {
int fsync(int fd) { return CallSystem("fsync", fd); }
int close(int fd) { return CallSystem("close", fd); }
int flock(int fd, int operation) noexcept { return CallSystem("flock", fd, operation); }
int sigpending(sigset_t* set) noexcept { return CallSystem("sigpending", set); }
int fchmod(int fd, mode_t mode) noexcept { return CallSystem("fchmod", fd, mode); }
int fchown(int fd, uid_t owner, gid_t group) noexcept {
  return CallSystem("fchown", fd, owner, group);
}
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
int rename(const char* from, const char* to) noexcept { return CallSystem("rename", from, to); }
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
  void ExpectRefused(const fs::path& path) {
    std::error_code error;
    const bool is_file = fs::is_regular_file(path, error);
    const Bytes old = is_file ? ReadFile(path) : Bytes();
    const auto before = Contents();
    EXPECT_FALSE(info_.SaveToFile(path)) << path;
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
  ExpectRefused("");
  ExpectRefused(read_only);
  ExpectRefused(folder_);
  ExpectRefused(folder_ / "folder");
  ExpectRefused(folder_ / "no such folder" / "file");
  ExpectRefused(File("file") / "below");
  ExpectRefused(folder_ / std::string(256, 'x'));
  fs::permissions(read_only, fs::perms::owner_all);

  const fs::path held = File("held", image_);
  {
#ifdef _WIN32
    const std::ofstream writer(held, std::ios::binary | std::ios::app);
    EXPECT_FALSE(info_.LoadFromFile(held, CVMGInfo::kLoadAll));
#else
    const int writer = ::open(held.c_str(), O_RDWR);
    ::flock(writer, LOCK_EX);
#endif
    ExpectRefused(held);
#ifndef _WIN32
    ::close(writer);
#endif
  }
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
    ASSERT_EQ(heap::InUse(), in_use);
    ASSERT_EQ(ReadFile(path), kOld);
    ASSERT_EQ(Contents(), before);
  }
  EXPECT_GT(calls, 3U);
  EXPECT_EQ(ReadFile(path), image_);

  for (calls = 0;; ++calls) {
    const heap::FailAfter none(calls);
    if (info_.LoadFromFile(path, CVMGInfo::kLoadAll)) break;
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
  std::vector<fs::path> paths = {"", folder_, folder_ / "folder", folder_ / "missing",
                                 File("empty", {})};
  for (const auto& entry : fs::directory_iterator(folder_)) paths.push_back(entry.path());
#ifndef _WIN32
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  // The last one says that it has 4,096 bytes, and has fewer.
  for (const char* device :
       {"/dev/null", "/dev/zero", "/dev/full", "/sys/devices/system/cpu/online"}) {
    paths.emplace_back(device);
  }
  paths.push_back(folder_ / "pipe");
#endif
  for (const fs::path& path : paths) {
    heap::StartPeak();
    EXPECT_FALSE(info_.LoadFromFile(path, CVMGInfo::kLoadAll)) << path;
    EXPECT_LT(heap::Peak(), std::size_t{1} << 20);
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

#ifndef _WIN32

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
  ExpectRefused(folder_ / "loop");
}

TEST_F(SaveTest, WritesDevicesDirectlyAndWaitsForNoReader) {
  EXPECT_TRUE(info_.SaveToFile("/dev/null"));
  if (fs::exists("/dev/full")) ExpectRefused("/dev/full");

  const fs::path pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  ExpectRefused(pipe);
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
  std::thread leaving([reader] {
    pollfd ready{reader, POLLIN, 0};
    ::poll(&ready, 1, 10000);
    ::close(reader);
  });
  EXPECT_FALSE(info_.SaveToFile(pipe));
  leaving.join();
}

TEST_F(SaveTest, AFullDiskChangesNothingAndRaisesNoSignal) {
  const auto save_within = [this](std::size_t size, const fs::path& path) {
    rlimit usual{};
    ::getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit limit{size, usual.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool saved = info_.SaveToFile(path);
    ::setrlimit(RLIMIT_FSIZE, &usual);
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

TEST_F(SaveTest, AFailingSystemCallChangesNothing) {
  const fs::path old = File("old");
  for (const char* call : {"fsync", "close", "fchmod", "rename"}) {
    failing_call = call;
    const bool saved = info_.SaveToFile(old);
    failing_call = "";
    EXPECT_FALSE(saved) << call;
    EXPECT_EQ(ReadFile(old), kOld) << call;
    EXPECT_EQ(Contents().size(), 1U) << call;
  }
}

TEST_F(SaveTest, WorksWhereTheSystemCannotLockOrTellSignals) {
  for (const char* call : {"flock", "sigpending"}) {
    const fs::path old = File("old");
    failing_call = call;
    const bool saved = info_.SaveToFile(old);
    failing_call = "";
    EXPECT_TRUE(saved && ReadFile(old) == image_) << call;
  }
}

TEST_F(SaveTest, AFileThatCannotBeGivenAwayActsForNobodyElse) {
  const fs::path old = File("old");
  ::chmod(old.c_str(), 06755);
  failing_call = "fchown";
  EXPECT_TRUE(info_.SaveToFile(old));
  failing_call = "";
  EXPECT_EQ(ReadFile(old), image_);
  EXPECT_EQ(static_cast<unsigned>(fs::status(old).permissions()), 0755U);
}

#endif

}  // namespace
}  // namespace VESKA
