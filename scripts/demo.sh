#!/usr/bin/env bash
# Builds the module and the reference host vhost, then runs the example script
# examples/hello.vs through it (give another script as the first argument).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh g++ cmake ninja-build googletest libgtest-dev
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target vhost virelo_json
script="${1:-examples/hello.vs}"
echo "== build/bin/vhost $script"
build/bin/vhost "$script"
