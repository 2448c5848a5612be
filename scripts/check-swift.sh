#!/usr/bin/env bash
# Builds and tests the Swift package (bindings/swift) against the installed
# engine, then runs the Swift example host against the sandbox service.
# Installs the engine into a temporary prefix first (scripts/install-engine.sh),
# unless QUORVIX_PREFIX names one already installed. Looks for swift on PATH,
# then in /opt/swift/usr/bin; without a Swift toolchain it says so and passes.
# The tests run twice: as they are, then under the address sanitizer (with
# leak detection; SWIFT_ASAN=0 skips that run). The tests use Swift Testing;
# XCTest is not run (on Linux its harness leaks its own test objects).
set -euo pipefail
cd "$(dirname "$0")/.."

step() { echo "== swift check: $*"; }

if ! command -v swift >/dev/null 2>&1; then
  if [ -x /opt/swift/usr/bin/swift ]; then
    export PATH="/opt/swift/usr/bin:$PATH"
  else
    step "skipped: no Swift toolchain (swift is not on PATH nor in /opt/swift/usr/bin)"
    exit 0
  fi
fi
swift --version 2>&1 | head -1

if [ -n "${QUORVIX_PREFIX:-}" ]; then
  prefix=$QUORVIX_PREFIX
  libdir=$(dirname "$(find "$prefix" -name 'libquorvix.so' | head -1)")
else
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  prefix="$work/prefix"
  step "install the engine into $prefix"
  libdir=$(scripts/install-engine.sh "$prefix")
fi
export PKG_CONFIG_PATH="$libdir/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
export LD_LIBRARY_PATH="$libdir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"
export QUORVIX_SANDBOX="$prefix/bin/quorvix-sandbox"

step "swift build (bindings/swift)"
(cd bindings/swift && swift build)
step "swift test (bindings/swift)"
(cd bindings/swift && swift test --disable-xctest)
if [ "${SWIFT_ASAN:-1}" != 0 ]; then
  step "swift test --sanitize=address (bindings/swift)"
  (cd bindings/swift && swift test --disable-xctest --sanitize=address)
fi

step "the README's Swift block is the example"
python3 scripts/check-readme-example.py

step "build and run the Swift example (examples/swift)"
(cd examples/swift/QuorvixExample && swift build)
python3 tests/capi/with_sandbox.py "$QUORVIX_SANDBOX" examples/swift/QuorvixExample/.build/debug/QuorvixExample {service}
step "passed"
