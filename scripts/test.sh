#!/usr/bin/env bash
# Builds and runs every test. With --sanitize address|thread it builds into build-asan/ or
# build-tsan/ with that sanitizer instead of build/.
set -euo pipefail
cd "$(dirname "$0")/.."
sanitize=""
if [ "${1:-}" = "--sanitize" ]; then sanitize="${2:?address or thread}"; fi

scripts/deps.sh g++ cmake ninja-build googletest libgtest-dev

case "$sanitize" in
    "") dir=build ;;
    address) dir=build-asan ;;
    thread) dir=build-tsan ;;
    *) echo "unknown sanitizer: $sanitize" >&2; exit 2 ;;
esac
cmake -S . -B "$dir" -G Ninja -DVIRELO_JSON_SANITIZE="$sanitize" >/dev/null
cmake --build "$dir"
ctest --test-dir "$dir" --output-on-failure -j2
