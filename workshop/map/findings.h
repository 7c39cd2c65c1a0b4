// What was found in a file.
#pragma once

#include <veska/workshop/check.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "basis/tables.h"

namespace VESKA::workshop {

/// What was found in a file. Counts everything and keeps the first findings of each code, so that a
/// file with 60,000 bad references needs neither the memory nor the reader's patience for all.
class Findings {
 public:
  /// Keeps `limit` findings of each code.
  explicit Findings(std::size_t limit) : limit_(limit) {}

  void Add(Finding finding);

  std::span<const Finding> Kept() const { return kept_; }
  std::size_t Count(Code code) const;
  std::size_t Count(Severity severity) const;
  std::size_t Count(Severity severity, Table table) const;
  /// The error that was found first in a table, whatever the limit; null when there is none.
  const Finding* FirstError(Table table) const;
  /// How many findings of `code` were not kept.
  std::size_t Omitted(Code code) const;
  /// Orders what is kept by severity, the worst first, then by offset.
  void Sort();

  /// How much was found up to some point, to go back to.
  struct Counts {
    std::size_t kept = 0;
    std::vector<std::size_t> by_code = std::vector<std::size_t>(Catalogue().size());
    std::array<std::array<std::size_t, 3>, kTables.size()> by_severity{};  // of each table
    std::array<std::optional<Finding>, kTables.size()> first_errors;
  };
  const Counts& Here() const { return counts_; }
  void Return(const Counts& counts);

 private:
  std::size_t limit_;
  std::vector<Finding> kept_;
  Counts counts_;
};

}  // namespace VESKA::workshop
