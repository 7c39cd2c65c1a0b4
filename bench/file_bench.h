/// The benchmarks of the whole file: load, complete, size, write, copy, destroy, walk, heap.
#pragma once

void RegisterFileBenchmarks();
