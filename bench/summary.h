/// The table of ratios: what the benchmarks measured, beside the goals.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

/// Gathers the counters of all runs, and prints the table at the end.
class Summary : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Column;
  struct Goal;

  /// The median over the repetitions of what was counted at an operation on a subject; NaN when
  /// it was not run.
  double Value(const std::string& subject, const char* operation, const char* counter) const;
  void PrintTable(const char* title, const std::vector<Column>& columns) const;
  void PrintGoals() const;

  std::vector<std::string> subjects_;  // in the order in which they ran
  std::map<std::pair<std::string, std::string>, std::vector<double>> values_;
};
