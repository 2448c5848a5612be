#!/usr/bin/env bash
# Keeps the layers of the engine honest by reading its #include lines:
#
#   core/      vocabulary types (errors, JSON, URL components, requests): they
#              include nothing of ours but each other;
#   platform/  the seams a host sets and the default transport: core/ and itself;
#   the rest   (engine/ and the subsystems) build on both.
#
# Public headers include public headers only, never a file under src/.
#
#   scripts/check-layering.sh [SOURCE_DIR]     (default: the checkout this script is in)
#
# Prints every include that breaks a rule and exits 1 when there is one.
set -euo pipefail
root=$(realpath "${1:-$(dirname "$0")/..}")
cd "$root"

status=0
# check DESCRIPTION ALLOWED_REGEX FILES...: every quoted include of the files
# must match ALLOWED_REGEX.
check() {
  local what=$1 allowed=$2
  shift 2
  [ $# -gt 0 ] || return 0
  local bad
  bad=$(grep -HnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$@" |
        grep -vE "#[[:space:]]*include[[:space:]]*\"($allowed)\"" || true)
  if [ -n "$bad" ]; then
    echo "layering: $what"
    echo "$bad" | sed 's/^/  /'
    status=1
  fi
}

files() { find "$@" -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.c' \) 2>/dev/null | sort; }

mapfile -t core_public < <(files include/quorvix/core)
mapfile -t core_src < <(files src/core)
mapfile -t platform_public < <(files include/quorvix/platform)
mapfile -t platform_src < <(files src/platform)
mapfile -t all_public < <(files include/quorvix)

if [ ${#core_public[@]} -eq 0 ]; then
  echo "layering: no headers under $root/include/quorvix/core" >&2
  exit 2
fi

check "core includes only core" 'quorvix/core/[^"]+|core/[^"]+' "${core_public[@]}" "${core_src[@]}"
check "platform includes only core and platform" \
  'quorvix/(core|platform)/[^"]+|(core|platform)/[^"]+' "${platform_public[@]}" "${platform_src[@]}"
check "public headers include public headers only" 'quorvix/[^"]+' "${all_public[@]}"

exit $status
