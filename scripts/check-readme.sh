#!/usr/bin/env bash
# Runs every command of README.md's `quorvix` tool section as printed and fails
# when one of them ends with a non-zero exit code.
#
#   scripts/check-readme.sh [PATH/TO/quorvix]     (default: build/ci/cli/quorvix)
#
# The commands run against the embedded sandbox. Two of them need a fixed port:
# the one with `--service http://localhost:8080` runs against a
# `quorvix sandbox` started on a free port first, and `quorvix sandbox --port 8080`
# itself is started on that port afterwards, checked to listen, and stopped
# with Ctrl-C (SIGINT). A `--linger` is shortened to 1 s: the wait is the only
# thing it adds.
set -euo pipefail
cd "$(dirname "$0")/.."

bin=$(realpath "${1:-build/ci/cli/quorvix}")
[ -x "$bin" ] || { echo "check-readme: no quorvix at $bin (build the 'quorvix' target first)" >&2; exit 2; }
readme_port=8080

work=$(mktemp -d)
sandbox_pid=""
cleanup() {
  if [ -n "$sandbox_pid" ]; then kill -INT "$sandbox_pid" 2>/dev/null || true; wait "$sandbox_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

quorvix() { "$bin" "$@"; }

# The commands: the lines of the first ```sh block after the tool's heading.
mapfile -t commands < <(awk '
  /^## The `quorvix` tool/ { section = 1; next }
  section && /^## / { exit }
  section && /^```sh/ { block = 1; next }
  block && /^```/ { exit }
  block && NF { print }
' README.md)
[ ${#commands[@]} -gt 0 ] || { echo "check-readme: no tool commands found in README.md" >&2; exit 2; }

# Starts `quorvix sandbox --port $1` in the background; once it listens, its
# port is in $sandbox_port.
start_sandbox() {
  "$bin" sandbox --port "$1" >"$work/sandbox.out" 2>"$work/sandbox.err" &
  sandbox_pid=$!
  for _ in $(seq 200); do
    if grep -q "listening on" "$work/sandbox.out" 2>/dev/null; then
      sandbox_port=$(sed -n 's/.*listening on http:\/\/[^:]*:\([0-9]*\).*/\1/p' "$work/sandbox.out")
      return 0
    fi
    kill -0 "$sandbox_pid" 2>/dev/null || break
    sleep 0.05
  done
  cat "$work/sandbox.err" >&2
  return 1
}

# Stops the background sandbox with Ctrl-C; fails unless it ends with exit code 0.
stop_sandbox() {
  local pid=$sandbox_pid status=0
  sandbox_pid=""
  kill -INT "$pid"
  wait "$pid" || status=$?
  return "$status"
}

failed=0
report() {  # report STATUS COMMAND
  if [ "$1" -eq 0 ]; then
    echo "ok       $2"
  else
    echo "FAILED   $2   (exit code $1)"
    sed 's/^/    | /' "$work/run.out" | tail -n 20
    failed=1
  fi
}

free_port=""
sandbox_port=""
for line in "${commands[@]}"; do
  command=$(sed -E 's/[[:space:]]+#[[:space:]].*$//' <<<"$line")
  status=0
  : >"$work/run.out"
  case "$command" in
    "quorvix sandbox --port $readme_port"*)
      if [ -z "$free_port" ]; then
        start_sandbox 0 && stop_sandbox || { report 1 "$command"; continue; }
        free_port=$sandbox_port
      fi
      { start_sandbox "$free_port" && stop_sandbox; } >"$work/run.out" 2>&1 || status=$?
      cat "$work/sandbox.out" "$work/sandbox.err" >>"$work/run.out"
      report "$status" "${command/$readme_port/$free_port}"
      ;;
    *"localhost:$readme_port"*)
      start_sandbox 0 || { report 1 "$command"; continue; }
      free_port=$sandbox_port
      actual=${command/$readme_port/$free_port}
      (set -o pipefail; eval "$actual") >"$work/run.out" 2>&1 || status=$?
      stop_sandbox || status=$?
      report "$status" "$actual"
      ;;
    *)
      actual=$(sed -E 's/--linger [0-9.]+/--linger 1/' <<<"$command")
      (set -o pipefail; eval "$actual") >"$work/run.out" 2>&1 </dev/null || status=$?
      report "$status" "$actual"
      ;;
  esac
done

[ "$failed" -eq 0 ] || { echo "check-readme: some README commands failed" >&2; exit 1; }
echo "check-readme: all ${#commands[@]} README tool commands ran as printed"
