#!/usr/bin/env bash
# Builds the libFuzzer targets (clang 14, ASan + UBSan) and runs each for
# SECONDS (default 30) of wall time, one after the other, at low priority.
#   scripts/fuzz.sh [SECONDS] [TARGET...]
# With QUORVIX_FUZZ_BUDGET=cpu, SECONDS counts the fuzzer's own CPU time
# instead (on a busy machine wall time says little), and the fuzzer runs at
# normal priority until it has had that much.
# Each target works in $QUORVIX_FUZZ_WORK/<target> (default
# ${TMPDIR:-/tmp}/quorvix-fuzz), outside the tree: its corpus grows there from
# the seeds in fuzz/corpus/<target>, crashes land in <target>/crashes. Copy a
# crash into fuzz/regressions/<target>/ once it is fixed: the plain build
# replays it on every test run. The last lines of each run go to
# <target>/summary.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
shift || true
all=(replies configuration urlcomponents strings tokenizer placeholders extradata answerstore)
targets=("${all[@]}")
[ $# -eq 0 ] || targets=("$@")
work=${QUORVIX_FUZZ_WORK:-${TMPDIR:-/tmp}/quorvix-fuzz}
budget=${QUORVIX_FUZZ_BUDGET:-wall}
case "$budget" in wall | cpu) ;; *) echo "QUORVIX_FUZZ_BUDGET must be wall or cpu" >&2; exit 2 ;; esac

# Runs one fuzzer ("$@", its output to LOG) until it has used $seconds of
# CPU, then interrupts it (libFuzzer then exits with 72, a clean end here).
run_for_cpu() {
  local log=$1
  shift
  "$@" >"$log" 2>&1 &
  local pid=$! ticks used=0 state code
  ticks=$(getconf CLK_TCK)
  while :; do
    sleep 2
    # Field 3 is the state (Z once it has ended), 14 and 15 the user and system ticks.
    read -r state used < <(awk -v t="$ticks" '{ printf "%s %d\n", $3, ($14 + $15) / t }' "/proc/$pid/stat" 2>/dev/null || echo "Z $used")
    [ "$state" != Z ] || break
    [ "$used" -lt "$seconds" ] || kill -INT "$pid" 2>/dev/null || true
  done
  set +e
  wait "$pid"
  code=$?
  set -e
  echo "cpu: about $used s"
  [ "$code" -ne 72 ] || code=0
  return "$code"
}

# The fuzz build needs Debian's clang 14 and its sanitizer runtimes on top of
# what scripts/install-deps.sh installs.
scripts/install-deps.sh
missing=()
for package in clang-14 libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc 2>/dev/null || echo 2)"

status=0
for target in "${targets[@]}"; do
  dir="$work/$target"
  mkdir -p "$dir/corpus" "$dir/crashes"
  echo "== fuzz_$target for ${seconds}s (work: $dir)"
  set +e
  # The CPU the fuzzer really had: on a busy machine it is far below the wall time.
  TIMEFORMAT="cpu: %U s user + %S s system in %R s wall"
  fuzzer=("build/fuzz/fuzz/fuzz_$target" "$dir/corpus" "fuzz/corpus/$target" -timeout=10 -rss_limit_mb=2048
    -print_final_stats=1 -artifact_prefix="$dir/crashes/")
  if [ "$budget" = cpu ]; then
    run_for_cpu "$dir/log.txt" "${fuzzer[@]}" >"$dir/time.txt"
  else
    { time nice -n 19 "${fuzzer[@]}" -max_total_time="$seconds" >"$dir/log.txt" 2>&1; } 2>"$dir/time.txt"
  fi
  code=$?
  set -e
  grep -E "^#[0-9]+.*(DONE|pulse|NEW|REDUCE)" "$dir/log.txt" | tail -n 1 | tee "$dir/summary.txt"
  tee -a "$dir/summary.txt" <"$dir/time.txt"
  grep -E "^stat::" "$dir/log.txt" | tee -a "$dir/summary.txt"
  if [ $code -ne 0 ]; then
    echo "!! fuzz_$target stopped with $code: see $dir/log.txt and $dir/crashes/"
    status=1
  fi
done
exit $status
