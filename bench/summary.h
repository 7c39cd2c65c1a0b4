/// The table of ratios: what the benchmarks measured, beside the goals.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

/// Gathers the counters of all runs, and prints the tables at the end.
class Summary : public benchmark::BenchmarkReporter {
 public:
  /// Writes the table of goals into a file as well, as rows of cells with tabs between them, unless
  /// its name is empty.
  explicit Summary(std::string goals_file) : goals_file_(std::move(goals_file)) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  /// Whether a goal was missed by more than the noise.
  bool HasMissed() const { return has_missed_; }

 private:
  struct Column;
  struct Goal;

  /// The median over the repetitions of what was counted at an operation on a subject; NaN when
  /// it was not run.
  double Value(const std::string& subject, const char* operation, const char* counter) const;
  void PrintTable(const char* title, const std::vector<Column>& columns) const;
  void PrintGoals();
  /// What the table says of a goal: its value, and whether it was missed; empty when it was not
  /// run.
  std::string Verdict(const Goal& goal);

  std::string goals_file_;
  bool has_missed_ = false;
  std::vector<std::string> subjects_;  // in the order in which they ran
  std::map<std::pair<std::string, std::string>, std::vector<double>> values_;
};
