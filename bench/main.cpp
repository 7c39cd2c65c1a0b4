/// The benchmark program. Prints the tables of ratios and the goals; with `--runs` as the first
/// option, the single runs instead. The other options are Google Benchmark's.
#include <benchmark/benchmark.h>

#include <cstring>

#include "edit_bench.h"
#include "file_bench.h"
#include "summary.h"

int main(int argc, char** argv) {
  const bool runs = argc > 1 && std::strcmp(argv[1], "--runs") == 0;
  if (runs) {
    argv[1] = argv[0];
    ++argv;
    --argc;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RegisterFileBenchmarks();
  RegisterEditBenchmarks();
  if (runs) {
    benchmark::RunSpecifiedBenchmarks();
  } else {
    Summary reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
  }
  return 0;
}
