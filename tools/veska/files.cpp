#include "files.h"

#include <chrono>
#include <iostream>
#include <sstream>

#include "tool_io.h"

namespace veska_tool {
namespace {

/// A bar on standard error. It appears when the work turns out to be long.
class Progress {
 public:
  explicit Progress(std::size_t total) : total_(total), wanted_(total > 1 && ErrorIsTerminal()) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Erase(); }

  void Show(std::size_t done) {
    if (!wanted_ || std::chrono::steady_clock::now() - start_ < kPatience) return;
    constexpr std::size_t kWidth = 30;
    const std::size_t filled = kWidth * done / total_;
    std::cerr << "\r[" << std::string(filled, '#') << std::string(kWidth - filled, ' ') << "] "
              << done << " of " << total_ << " files" << std::flush;
    shown_ = true;
  }
  void Erase() {
    if (shown_) std::cerr << "\r\x1b[K" << std::flush;
    shown_ = false;
  }

 private:
  static constexpr std::chrono::milliseconds kPatience{500};
  std::size_t total_;
  bool wanted_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

ExitStatus ForEachFile(
    const std::vector<std::string>& files,
    const std::function<ExitStatus(const std::string& file, std::ostream& out)>& action) {
  Progress progress(files.size());
  ExitStatus worst = ExitStatus::kDone;
  std::size_t done = 0;
  for (const std::string& file : files) {
    progress.Show(done++);
    std::ostringstream out;
    worst = Worse(worst, Guarded(NameOfInput(file), [&] {
                    try {
                      return action(file, out);
                    } catch (...) {
                      progress.Erase();  // before the message
                      throw;
                    }
                  }));
    progress.Erase();
    std::cout << out.view();
    FlushStandardOutput();
  }
  return worst;
}

}  // namespace veska_tool
