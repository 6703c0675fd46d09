#!/usr/bin/env bash
# Builds the project and runs the demo: bench-data's twitter.json read and written back pretty
# (first lines shown), then a document with an error on its third line.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh g++ cmake ninja-build googletest libgtest-dev
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target jsonfmt
data="${VIRELO_JSON_SHARED_DATA:-../shared}/bench-data/twitter.json"
echo "== jsonfmt --spaces 2 $data (first 12 lines)"
build/bin/jsonfmt --spaces 2 "$data" | head -n 12 || true
echo "== a document whose third line holds {\"a\" 1}"
printf '[\n\n{"a" 1}]\n' | build/bin/jsonfmt || echo "(exit status $?)"
