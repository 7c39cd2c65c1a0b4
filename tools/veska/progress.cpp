#include "progress.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "tool_io.h"

namespace veska_tool {

Progress::Progress(std::uint64_t total, std::string unit)
    : total_(total), unit_(std::move(unit)), wanted_(total > 1 && ErrorIsTerminal()) {}

void Progress::Show(std::uint64_t done) {
  constexpr std::chrono::milliseconds kPatience{500};
  if (!wanted_ || std::chrono::steady_clock::now() - start_ < kPatience) return;
  constexpr std::uint64_t kWidth = 30;
  const auto filled = static_cast<std::size_t>(kWidth * std::min(done, total_) / total_);
  std::cerr << "\r[" << std::string(filled, '#') << std::string(kWidth - filled, ' ') << "] "
            << done << " of " << total_ << " " << unit_ << std::flush;
  shown_ = true;
}

void Progress::Erase() {
  if (shown_) std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace veska_tool
