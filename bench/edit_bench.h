/// The benchmarks of single edits of a record list.
#pragma once

void RegisterEditBenchmarks();
