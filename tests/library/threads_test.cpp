// Objects of their own in threads of their own share nothing. ThreadSanitizer looks on.
#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "support/image_builder.h"
#include "support/temporary_folder.h"

#ifndef __EMSCRIPTEN__

namespace VESKA {
namespace {

/// Loads, copies, edits, saves and fails to load, again and again. Returns what went wrong.
int Use(const Bytes& original, const std::filesystem::path& path) {
  int wrong = 0;
  Bytes image = original;
  for (int i = 0; i < 20; ++i) {
    CVMGInfo info;
    const auto size = static_cast<unsigned long>(image.size());
    wrong += info.LoadFromMemory(image.data(), size, CVMGInfo::kLoadAll) ? 0 : 1;
    CVMGInfo copy = info;
    info.GetMAT().GetPlayListTable().AddNode();
    info.GetOriginalPGC().AddCellNode(CELL_STILL);
    info.AutoComplete();
    wrong += info.SaveToFile(path) ? 0 : 1;
    wrong += copy.LoadFromFile(path, CVMGInfo::kLoadAll) && copy == info ? 0 : 1;
    wrong += copy.LoadFromMemory(image.data(), size / 2, CVMGInfo::kLoadAll) ? 1 : 0;
    wrong += Describe(copy.GetFailure()).empty() ? 1 : 0;
    SYSTEMTIME time{};
    unsigned char packed[5] = {};
    GetWinTime(&time, image.data());
    SetRTRTime(packed, &time);
  }
  return wrong;
}

TEST(Threads, UseFilesOfTheirOwnAtTheSameTime) {
  const TemporaryFolder folder;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (const char* sample : kSamples) {
    for (const char* copy : {"a", "b"}) {
      threads.emplace_back(
          [&wrong, image = Sample(sample), path = folder / (std::string(sample) + copy)] {
            wrong += Use(image, path);
          });
    }
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace VESKA

#endif
