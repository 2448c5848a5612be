#!/usr/bin/env bash
# Builds the release engine, the C library and the tools (no sanitizers, no
# tests) in BUILD_DIR and installs them into PREFIX; prints the library
# folder (where libquorvix.so and pkgconfig/quorvix.pc are) on stdout.
# usage: scripts/install-engine.sh PREFIX [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
prefix=$1
build=${2:-build/install-check}
jobs=$(nproc 2>/dev/null || echo 2)
log=$(mktemp)
trap 'rm -f "$log"' EXIT

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUORVIX_BUILD_TESTS=OFF -DQUORVIX_BUILD_BENCH=OFF \
  -DQUORVIX_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX="$prefix" >/dev/null
cmake --build "$build" -j "$jobs" >"$log" 2>&1 || { tail -40 "$log" >&2; exit 1; }
cmake --install "$build" >/dev/null
dirname "$(find "$prefix" -name 'libquorvix.so' | head -1)"
