#!/usr/bin/env bash
# Builds what the README's "Try it" uses: the module (build/lib/libvirelo_json.so), the
# reference host vhost and the formatter jsonfmt (build/bin/). Then runs the example script
# examples/hello.vs through vhost (give another script as the first argument) and a short
# document through jsonfmt.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh g++ cmake ninja-build googletest libgtest-dev libedit-dev
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target virelo_json vhost jsonfmt
script="${1:-examples/hello.vs}"
echo "== build/bin/vhost $script"
build/bin/vhost "$script"
document='{"a": [1, 2.50], "b": null}'
echo "== echo '$document' | build/bin/jsonfmt"
echo "$document" | build/bin/jsonfmt
echo "== built build/lib/libvirelo_json.so, build/bin/vhost and build/bin/jsonfmt"
