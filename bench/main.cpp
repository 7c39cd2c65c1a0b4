/// The benchmark program. Prints the tables of ratios and the goals; with `--runs`, the single runs
/// instead; with `--goals=FILE`, the goals into a file as well. The other options are Google
/// Benchmark's. The status is 1 when a goal is missed by more than the noise.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

#include "edit_bench.h"
#include "file_bench.h"
#include "summary.h"

int main(int argc, char** argv) {
  constexpr std::string_view kGoals = "--goals=";
  bool runs = false;
  std::string goals_file;
  std::vector<char*> others;
  for (char* argument : std::vector<char*>(argv, argv + argc)) {
    const std::string_view text = argument;
    if (text == "--runs") {
      runs = true;
    } else if (text.starts_with(kGoals)) {
      goals_file = text.substr(kGoals.size());
    } else {
      others.push_back(argument);
    }
  }
  int count = static_cast<int>(others.size());
  others.push_back(nullptr);
  benchmark::Initialize(&count, others.data());
  if (benchmark::ReportUnrecognizedArguments(count, others.data())) return 2;
  RegisterFileBenchmarks();
  RegisterEditBenchmarks();
  Summary reporter(goals_file);
  if (runs) {
    benchmark::RunSpecifiedBenchmarks();
  } else {
    benchmark::RunSpecifiedBenchmarks(&reporter);
  }
  return reporter.HasMissed() ? 1 : 0;
}
