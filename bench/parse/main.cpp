// bench_parse: parsing to a tree, parsing then visiting every value, and the linearity
// documents (arrays of 1 to 64 copies of twitter.json), ours and the peers side by side.
// Options: see bench/common/BenchSupport.h, then Google Benchmark's.
#include "bench/common/BenchSupport.h"

int main(int argc, char** argv) {
    return bench::RunMain(argc, argv, bench::EArea::kParse);
}
