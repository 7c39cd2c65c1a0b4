/// The benchmark program. Options are Google Benchmark's, and `--summary`, which prints the table
/// of ratios instead of the single runs.
#include <benchmark/benchmark.h>

#include <cstring>

#include "edit_bench.h"
#include "file_bench.h"
#include "summary.h"

int main(int argc, char** argv) {
  const bool summary = argc > 1 && std::strcmp(argv[1], "--summary") == 0;
  if (summary) {
    argv[1] = argv[0];
    ++argv;
    --argc;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RegisterFileBenchmarks();
  RegisterEditBenchmarks();
  if (summary) {
    Summary reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
  } else {
    benchmark::RunSpecifiedBenchmarks();
  }
  return 0;
}
