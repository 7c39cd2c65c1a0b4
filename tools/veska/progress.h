// How far a long piece of work is, on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace veska_tool {

/// A bar that appears when standard error is a terminal and the work turns out to be long.
class Progress {
 public:
  /// For `total` of what `unit` names; none when the total is not known.
  Progress(std::uint64_t total, std::string unit);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Erase(); }

  void Show(std::uint64_t done);
  void Erase();

 private:
  std::uint64_t total_;
  std::string unit_;
  bool wanted_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace veska_tool
