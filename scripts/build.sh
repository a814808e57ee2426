#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures and builds a preset; quiet unless something fails.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=$1
shift

log=$(mktemp)
trap 'rm -f "$log"' EXIT
run() {
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
}

echo "build: preset $preset"
run cmake --preset "$preset"
run cmake --build --preset "$preset" ${1:+--target "$@"}
