#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the whole suite under
# AddressSanitizer + UndefinedBehaviorSanitizer, then again under
# ThreadSanitizer; then checks the installed engine from outside the tree
# (scripts/check-install.sh), builds and tests the Swift package and its
# example against the installed engine (scripts/check-swift.sh) and builds the
# reference with Doxygen, which fails on any undocumented public member. Pass
# "asan", "tsan", "install", "swift" or "docs" to run only one of them.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

jobs=$(nproc 2>/dev/null || echo 2)
run() {
  local preset=$1
  echo "== $preset: configure and build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  echo "== $preset: test"
  ctest --preset "$preset" -j "$jobs"
  echo "== $preset: the README's tool commands"
  TSAN_OPTIONS="halt_on_error=1:suppressions=$PWD/tests/tsan.supp" scripts/check-readme.sh "build/$preset/cli/quorvix"
}

docs() {
  echo "== docs: doxygen (warnings are errors)"
  mkdir -p build/doxygen
  doxygen docs/Doxyfile
}

case "${1:-all}" in
  asan) run ci ;;
  tsan) run tsan-ci ;;
  install) scripts/check-install.sh ;;
  swift) scripts/check-swift.sh ;;
  docs) docs ;;
  all) run ci; run tsan-ci; scripts/check-install.sh; scripts/check-swift.sh; docs ;;
  *) echo "usage: scripts/test.sh [asan|tsan|install|swift|docs|all]" >&2; exit 2 ;;
esac
