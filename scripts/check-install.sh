#!/usr/bin/env bash
# Proves the engine can be taken from outside its tree: builds it once
# (release, no sanitizers, no tests), installs it into a temporary prefix,
# then builds the examples from the installed files, once through
# find_package(QuorvixEngine) and once through pkg-config, and runs them
# (C++, C and Python) against the installed sandbox service on loopback.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc 2>/dev/null || echo 2)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"
build=build/install-check

step() { echo "== install check: $*"; }

step "build the release engine, the C library and the tools"
libdir=$(scripts/install-engine.sh "$prefix" "$build")

step "only the C API leaves libquorvix.so"
exported=$(nm -D --defined-only "$libdir/libquorvix.so" | awk '$2 ~ /^[TDBRVW]$/ {print $3}')
if echo "$exported" | grep -v '^qx_' | grep .; then echo "symbols other than qx_ are exported" >&2; exit 1; fi
readelf -d "$libdir/libquorvix.so" | grep -q 'SONAME.*libquorvix\.so\.[0-9]*\]'

step "build the examples through find_package(QuorvixEngine)"
cmake -S examples -B "$work/examples" -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/examples" -j "$jobs" >/dev/null

step "build the C example through pkg-config"
export PKG_CONFIG_PATH="$libdir/pkgconfig"
# shellcheck disable=SC2046
cc -std=c11 -Wall -Wextra -Werror examples/c/host.c $(pkg-config --cflags --libs quorvix) -pthread \
  -Wl,-rpath,"$libdir" -o "$work/host-c"

sandbox() { python3 tests/capi/with_sandbox.py "$prefix/bin/quorvix-sandbox" "$@"; }
step "run the C++ example";    sandbox "$work/examples/quorvix_example_cpp" {service}
step "run the C example (CMake)"; sandbox "$work/examples/quorvix_example_c" {service}
step "run the C example (pkg-config)"; sandbox "$work/host-c" {service}
step "run the Python example"
QUORVIX_LIBRARY="$libdir/libquorvix.so" PYTHONPATH=bindings/python sandbox python3 examples/python/host.py {service}
step "run the installed tool"
"$prefix/bin/quorvix" --json search "router password" >/dev/null
echo "== install check: passed"
