#!/usr/bin/env bash
# Checks the kit for host integrators from outside: builds what `cmake --install` installs (in
# build-install/, tests off), installs it to a temporary prefix, checks the layout, and builds
# and runs both examples against that prefix alone: find_package for each, pkg-config for the
# engine example after moving the prefix. Outputs must equal examples/*/expected-output.txt,
# and docs/embedding.md must quote the examples as they are.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
scripts/deps.sh g++ cmake ninja-build pkg-config python3 libedit-dev

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
strict=(-Wall -Wextra -Wpedantic -Werror)
fail() { echo "check-install: $*" >&2; exit 1; }
step() { echo "== $*"; }

step "build and install to a temporary prefix"
cmake -S . -B build-install -G Ninja -DVIRELO_JSON_BUILD_TESTS=OFF -DCMAKE_INSTALL_LIBDIR=lib >/dev/null
cmake --build build-install --target virelo_json_installables
cmake --install build-install --prefix "$prefix" >/dev/null

step "layout"
for file in lib/libvirelo_json.so lib/libvirelo_json_engine.a lib/pkgconfig/virelo_json.pc \
            lib/cmake/virelo_json/virelo_jsonConfig.cmake \
            lib/cmake/virelo_json/virelo_jsonConfigVersion.cmake; do
    [ -f "$prefix/$file" ] || fail "$file is not installed"
done
# The installed headers are exactly the engine's and the SDK's, at their source paths.
(cd "$prefix/include/virelo_json" && find . -type f | sed 's|^\./||' | sort) > "$work/headers"
(ls json/*.h json/text/*.h json/msgpack/*.h
 ls host/VireloInterfaces.h host/VireloIJSON.h host/AutoRefPtr.h host/InterfaceImpl.h) |
    sort > "$work/expected-headers"
diff -u "$work/expected-headers" "$work/headers" || fail "the installed headers differ"
extra=$(find "$prefix" -mindepth 1 -maxdepth 1 ! -name include ! -name lib)
[ -z "$extra" ] || fail "installed beside include/ and lib/: $extra"
[ -z "$(find "$prefix" -type l)" ] || fail "links installed: $(find "$prefix" -type l)"
! grep -rIl "$root" "$prefix" || fail "installed files point into $root"

step "every installed header compiles from the prefix alone"
sed 's|.*|#include <&>|' "$work/headers" > "$work/all.cpp"
grep '<host/' "$work/all.cpp" > "$work/sdk.cpp"
${CXX:-c++} -std=c++20 "${strict[@]}" -fsyntax-only -I "$prefix/include/virelo_json" "$work/all.cpp"
${CXX:-c++} -std=c++17 "${strict[@]}" -fsyntax-only -I "$prefix/include/virelo_json" "$work/sdk.cpp"

step "find_package: version and targets"
probe() { cmake -S tests/install/package-probe -B "$work/probe-$1" -DWANTED="$1" \
                -DCMAKE_PREFIX_PATH="$prefix" 2>&1; }
probe 1.16 > "$work/probe.out" || { cat "$work/probe.out"; fail "find_package(virelo_json 1.16) failed"; }
for line in "found virelo_json 1.16.0" \
            "virelo_json::engine: STATIC_LIBRARY, links nothing" \
            "virelo_json::sdk: INTERFACE_LIBRARY, links nothing" \
            "virelo_json::module: SHARED_LIBRARY, links nothing"; do
    grep -qxF -- "-- $line" "$work/probe.out" || { cat "$work/probe.out"; fail "no '$line'"; }
done
for refused in 1.17 2.0; do
    ! probe "$refused" >/dev/null || fail "find_package(virelo_json $refused) accepted 1.16.0"
done

# example LABEL NAME PROGRAM [CMAKE OPTIONS...]: configures and builds examples/NAME against
# the prefix in $work/LABEL, runs PROGRAM and compares its output with
# examples/NAME/expected-output.txt.
example() {
    local dir=$work/$1 name=$2 program=$3
    shift 3
    cmake -S "examples/$name" -B "$dir" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" "$@" >/dev/null
    cmake --build "$dir"
    "$dir/$program" > "$dir/output"
    diff -u "examples/$name/expected-output.txt" "$dir/output" || fail "$name: unexpected output"
}
step "examples/embed: the host example, with find_package"
example embed embed embed_host "-DCMAKE_CXX_FLAGS=${strict[*]}"
step "examples/embed under AddressSanitizer: every reference the host takes is released"
example embed-asan embed embed_host -DCMAKE_BUILD_TYPE=Debug \
    "-DCMAKE_CXX_FLAGS=${strict[*]} -fsanitize=address,undefined -fno-sanitize-recover=undefined"
step "examples/engine: the engine example, with find_package"
example engine engine engine_example "-DCMAKE_CXX_FLAGS=${strict[*]}"

step "examples/engine with pkg-config, the prefix moved"
mv "$prefix" "$work/moved"
export PKG_CONFIG_PATH=$work/moved/lib/pkgconfig
[ "$(pkg-config --modversion virelo_json)" = 1.16.0 ] || fail "pkg-config: wrong version"
# shellcheck disable=SC2046 # pkg-config's flags are a word list
${CXX:-c++} -std=c++20 "${strict[@]}" examples/engine/main.cpp $(pkg-config --cflags --libs virelo_json) \
    -o "$work/engine-pkg-config"
"$work/engine-pkg-config" | diff -u examples/engine/expected-output.txt - ||
    fail "engine example built with pkg-config: unexpected output"

step "docs/embedding.md quotes the examples as they are"
python3 scripts/check-excerpts.py docs/embedding.md examples/embed/* examples/engine/*
echo "check-install: all passed"
