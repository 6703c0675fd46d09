// bench_write: compact and pretty (two blanks) writing of a parsed tree into a string, ours
// and the peers side by side. Options: see bench/common/BenchSupport.h, then Google
// Benchmark's.
#include "bench/common/BenchSupport.h"

int main(int argc, char** argv) {
    return bench::RunMain(argc, argv, bench::EArea::kWrite);
}
