#!/usr/bin/env bash
# Builds the quorvix tool and runs its main job against the embedded sandbox
# service. Extra arguments go to the tool in place of the default command.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc 2>/dev/null || echo 2)" --target quorvix >/dev/null
if [ $# -eq 0 ]; then set -- demo; fi
exec build/release/cli/quorvix "$@"
