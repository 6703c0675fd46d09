#!/usr/bin/env bash
# Benchmarks ours side by side with the peer libraries and writes docs/performance.md.
#
#   scripts/bench.sh           full run: Release build in build-bench/, every benchmark with 10
#                              repetitions in random interleaving, JSON results in
#                              build-bench/results/, then bench/report.py writes the report
#   scripts/bench.sh --quick   the same with 1 repetition and short runs (a smoke run of the
#                              whole pipeline; its report is not for reading)
#   scripts/bench.sh --smoke   CI: build, run every benchmark once on the smallest input without
#                              judging speed, no report
#
# --data=DIR names the corpus folder (twitter.json, citm_catalog.json, canada.json); default
# $VIRELO_JSON_BENCH_DATA, else ../shared/bench-data beside the repository.
# Extra Google Benchmark flags can be given in $BENCH_FLAGS (e.g. a --benchmark_filter).
set -euo pipefail
cd "$(dirname "$0")/.."

mode=full
data="${VIRELO_JSON_BENCH_DATA:-}"
for arg in "$@"; do
    case "$arg" in
        --quick) mode=quick ;;
        --smoke) mode=smoke ;;
        --data=*) data="${arg#--data=}" ;;
        *) echo "usage: scripts/bench.sh [--quick|--smoke] [--data=DIR]" >&2; exit 2 ;;
    esac
done

scripts/deps.sh g++ cmake ninja-build python3 libedit-dev libbenchmark-dev rapidjson-dev \
    nlohmann-json3-dev libjsoncpp-dev libcjson-dev libsimdjson-dev libmsgpack-cxx-dev

dir="${BENCH_BUILD_DIR:-build-bench}"
# What is built: the commit and the uncommitted changes at build time, for the report.
mkdir -p "$dir"
{ git rev-parse --short HEAD 2>/dev/null || echo unknown; git status --porcelain 2>/dev/null || true; } \
    > "$dir/bench-source.txt"
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVIRELO_JSON_BUILD_BENCH=ON \
    -DVIRELO_JSON_BUILD_TESTS=OFF >/dev/null
cmake --build "$dir" --target bench_all

bin="$dir/bin"
results="$dir/results"
rm -rf "$results"
mkdir -p "$results"
cp "$dir/bench-source.txt" "$results/source.txt"

common=()
[ -n "$data" ] && common+=("--data=$data")
case "$mode" in
    full)
        timed=(--benchmark_repetitions=10 --benchmark_enable_random_interleaving=true
               --benchmark_min_time=0.25 --benchmark_display_aggregates_only=true) ;;
    quick)
        timed=(--benchmark_repetitions=1 --benchmark_min_time=0.02) ;;
    smoke)
        # One pass over every benchmark on the smallest input; the figures mean nothing.
        common+=(--files=twitter.json)
        timed=(--benchmark_repetitions=1 --benchmark_min_time=0.000001
               '--benchmark_filter=(twitter\.json|small|1KB|-x01)/') ;;
esac
# shellcheck disable=SC2206
extra=(${BENCH_FLAGS:-})

for area in parse write msgpack tree script memory; do
    flags=("${timed[@]}")
    # Heap held is a count, not a timing: one probe per library and input is enough.
    [ "$area" = memory ] && [ "$mode" = full ] && flags=(--benchmark_repetitions=1)
    echo "== bench_$area" >&2
    "$bin/bench_$area" "${common[@]}" "${flags[@]}" "${extra[@]}" \
        --benchmark_out="$results/bench_$area.json" --benchmark_out_format=json
done

if [ "$mode" = smoke ]; then
    echo "bench smoke: every benchmark ran once" >&2
    exit 0
fi
python3 bench/report.py --results "$results" --build "$dir" --mode "$mode" \
    --out docs/performance.md
echo "wrote docs/performance.md" >&2
