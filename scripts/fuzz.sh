#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer + UndefinedBehaviorSanitizer) into
# build-fuzz/ and runs each for SECONDS (default 60) on a fresh copy of its seed corpus, its
# regression inputs and seeds from the shared corpora (fuzz/seeds.py; $VIRELO_JSON_SHARED_DATA,
# default ../shared), FUZZ_JOBS targets at a time (default 2). Fails when any target finds a
# crash, a leak, a time-out, an amplification (see the limits below) or a broken property; the
# finding is left in build-fuzz/fuzz-runs/TARGET/artifacts/ and the run's log in
# build-fuzz/fuzz-runs/TARGET/log (FUZZ_RUNS names another folder).
#   scripts/fuzz.sh [SECONDS] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
[ $# -gt 0 ] && shift
targets=("$@")
[ ${#targets[@]} -eq 0 ] &&
    targets=(fuzz_text_parse fuzz_msgpack_read fuzz_node_path fuzz_ijson_deserialize fuzz_script_calls)

scripts/deps.sh clang libclang-rt-14-dev cmake ninja-build python3 libedit-dev

# The longest input each target is given: documents for the text, MessagePack and path targets,
# less for the serialized form and the call sequences, whose work grows fastest with length.
max_len() {
    case "$1" in
        fuzz_ijson_deserialize) echo 4096 ;;
        fuzz_script_calls) echo 2048 ;;
        *) echo 8192 ;;
    esac
}

# Cost is a finding too. Every target checks that a read holds at most the promised bytes per
# input byte (tests/support/MemoryBounds.h: for the longest input about 2.6 MB); beyond that,
# one allocation over 64 MB or a process over 1 GiB (AddressSanitizer's quarantine included)
# stops the run with the input that did it.
malloc_limit_mb="${FUZZ_MALLOC_LIMIT_MB:-64}"
rss_limit_mb="${FUZZ_RSS_LIMIT_MB:-1024}"

start=$(date +%s)
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DVIRELO_JSON_BUILD_FUZZ=ON \
    -DVIRELO_JSON_SANITIZE=address -DVIRELO_JSON_BUILD_TESTS=OFF >/dev/null
cmake --build build-fuzz --target fuzz_targets
echo "built in $(($(date +%s) - start)) s"

export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"
# Seeds from the shared test corpora are added to each run (fuzz/seeds.py).
shared="${VIRELO_JSON_SHARED_DATA:-../shared}"
runs="${FUZZ_RUNS:-build-fuzz/fuzz-runs}"
jobs_at_once="${FUZZ_JOBS:-2}"

run_one() {
    local target="$1" dir="$runs/$1"
    rm -rf "$dir"
    mkdir -p "$dir/corpus" "$dir/artifacts"
    cp fuzz/corpus/"$target"/* "$dir/corpus/"
    python3 fuzz/seeds.py "$shared" "$dir/corpus" "$target"
    local inputs=("$dir/corpus")
    [ -d "fuzz/regressions/$target" ] && inputs+=("fuzz/regressions/$target")
    local rc=0
    build-fuzz/bin/"$target" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb="$rss_limit_mb" -malloc_limit_mb="$malloc_limit_mb" \
        -max_len="$(max_len "$target")" -artifact_prefix="$dir/artifacts/" -print_final_stats=1 \
        "${inputs[@]}" >"$dir/log" 2>&1 || rc=$?
    echo "$rc" >"$dir/rc"
}

for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs_at_once" ]; do wait -n || true; done
    echo "fuzzing $target for $seconds s"
    run_one "$target" &
done
wait

failed=0
for target in "${targets[@]}"; do
    dir="$runs/$target"
    rc=$(cat "$dir/rc" 2>/dev/null || echo missing)
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$dir/log" | tail -n 1)
    corpus=$(find "$dir/corpus" -type f | wc -l)
    if [ "$rc" = 0 ]; then
        echo "$target: ok, ${execs:-?} executions, corpus $corpus inputs"
    else
        failed=1
        echo "$target: FAILED (exit $rc) after ${execs:-?} executions; log $dir/log" >&2
        grep -E "property does not hold|ERROR: |SUMMARY: |runtime error" "$dir/log" | head -n 5 >&2 || true
        find "$dir/artifacts" -type f -printf '  finding: %p\n' >&2
    fi
done
echo "total $(($(date +%s) - start)) s"
exit "$failed"
