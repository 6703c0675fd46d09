// bench_tree: deep copy and deep equality of parsed trees, ours and the peers side by side.
// Options: see bench/common/BenchSupport.h, then Google Benchmark's.
#include "bench/common/BenchSupport.h"

int main(int argc, char** argv) {
    return bench::RunMain(argc, argv, bench::EArea::kTree);
}
