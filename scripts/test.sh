#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the whole suite under
# AddressSanitizer + UndefinedBehaviorSanitizer, then again under
# ThreadSanitizer. Pass "asan" or "tsan" to run only one of them.
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
  scripts/check-readme.sh "build/$preset/cli/quorvix"
}

case "${1:-all}" in
  asan) run ci ;;
  tsan) run tsan-ci ;;
  all) run ci; run tsan-ci ;;
  *) echo "usage: scripts/test.sh [asan|tsan|all]" >&2; exit 2 ;;
esac
