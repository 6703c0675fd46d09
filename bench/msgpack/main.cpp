// bench_msgpack: MessagePack encoding of a tree and decoding of our encoding, ours, msgpack-c
// and nlohmann side by side. Options: see bench/common/BenchSupport.h, then Google
// Benchmark's.
#include "bench/common/BenchSupport.h"

int main(int argc, char** argv) {
    return bench::RunMain(argc, argv, bench::EArea::kMsgPack);
}
