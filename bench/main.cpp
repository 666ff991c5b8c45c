// Benchmarks come in pairs, "ROW/ours" and "ROW/floor".
#include <benchmark/benchmark.h>

BENCHMARK_MAIN();
