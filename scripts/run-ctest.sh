#!/usr/bin/env bash
# Runs the tests of a configured and built tree: all of them, or with LABELS (a regular
# expression) those with a label it matches whole. ctest reports success when its selection is
# empty; this fails instead, naming the labels there are.
#   scripts/run-ctest.sh DIR [LABELS]
set -euo pipefail
dir="${1:?usage: scripts/run-ctest.sh DIR [LABELS]}"
label="${2:-}"
if [ -z "$label" ]; then
    exec ctest --test-dir "$dir" --output-on-failure -j2 --no-tests=error
fi
selection="^($label)\$"
count=$(ctest --test-dir "$dir" -N -L "$selection" | sed -n 's/^Total Tests: //p')
if [ "${count:-0}" -eq 0 ]; then
    {
        echo "no test has a label matching $selection; the labels are:"
        ctest --test-dir "$dir" --print-labels | sed -n 's/^  */  /p'
    } >&2
    exit 1
fi
exec ctest --test-dir "$dir" --output-on-failure -j2 --no-tests=error -L "$selection"
