// All that is inconsistent in a management file.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "findings.h"
#include "image_map.h"

namespace veska_tool {

/// How much of a table can be read.
enum class Condition : unsigned char {
  kAbsent,
  kSound,    ///< without an error
  kDamaged,  ///< with errors, in part
  kLost      ///< nothing but perhaps its header
};
const char* NameOf(Condition condition);

struct TableSummary {
  Table table;
  Condition condition;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;  ///< up to the end of its last structure
  std::uint32_t readable =
      0;  ///< of its items: play lists, VOBs, groups, cells, chains, texts, ...
  std::uint32_t items = 0;
};

struct CheckResult {
  ImageMap map;
  Findings findings;
  bool loads = false;  ///< the library loads the file
  std::vector<TableSummary> tables;
};

/// Examines a file of any bytes, in time and memory proportional to their number. Keeps `limit`
/// findings of each code.
CheckResult CheckImage(std::span<const unsigned char> bytes, std::size_t limit);

}  // namespace veska_tool
