#!/usr/bin/env bash
# Builds the quorvix tool and runs its main job against the embedded sandbox
# service. Extra arguments go to the tool in place of the default command.
# Installing and building print one line per step; their output goes to
# build/demo-setup.log, whose end is shown when a step fails.
set -euo pipefail
cd "$(dirname "$0")/.."

mkdir -p build
log=build/demo-setup.log
: >"$log"

step() {  # step TITLE COMMAND...
  local title=$1
  shift
  printf '%s ... ' "$title"
  echo "== $title: $*" >>"$log"
  if "$@" >>"$log" 2>&1; then
    echo "done"
  else
    echo "failed"
    echo "The full output is in $(pwd)/$log; its last lines:" >&2
    tail -n 25 "$log" | sed 's/^/  | /' >&2
    exit 1
  fi
}

step "Installing the Debian packages it needs (if any are missing)" scripts/install-deps.sh
step "Configuring the release build" cmake --preset release
step "Building the quorvix tool" cmake --build --preset release -j "$(nproc 2>/dev/null || echo 2)" --target quorvix
echo

if [ $# -eq 0 ]; then set -- demo; fi
exec build/release/cli/quorvix "$@"
