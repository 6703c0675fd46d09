#!/usr/bin/env bash
# Builds and runs every test.
#   --sanitize address|thread  build into build-asan/ or build-tsan/ with that sanitizer
#   --only "TARGETS" LABELS      build only these targets and run only the tests whose label
#                               matches LABELS (a regular expression); fails when no test does
set -euo pipefail
cd "$(dirname "$0")/.."
sanitize=""
target=""
label=""
while [ $# -gt 0 ]; do
    case "$1" in
        --sanitize) sanitize="${2:?address or thread}"; shift 2 ;;
        --only) target="${2:?target}"; label="${3:?label}"; shift 3 ;;
        *) echo "usage: scripts/test.sh [--sanitize address|thread] [--only 'TARGETS' LABELS]" >&2; exit 2 ;;
    esac
done

scripts/deps.sh g++ cmake ninja-build googletest libgtest-dev libedit-dev python3

case "$sanitize" in
    "") dir=build ;;
    address) dir=build-asan ;;
    thread) dir=build-tsan ;;
    *) echo "unknown sanitizer: $sanitize" >&2; exit 2 ;;
esac
cmake -S . -B "$dir" -G Ninja -DVIRELO_JSON_SANITIZE="$sanitize" >/dev/null
if [ -n "$target" ]; then
    # shellcheck disable=SC2086 # the targets are a word list
    cmake --build "$dir" --target $target
    scripts/run-ctest.sh "$dir" "$label"
else
    cmake --build "$dir"
    scripts/run-ctest.sh "$dir"
fi
