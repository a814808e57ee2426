#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures and builds a preset; quiet unless something fails.
#
# Without ccache (CCACHE_DISABLE), the tests under the sanitizers are compiled with precompiled headers, in three quarters
# of the time. ccache would not keep the result of such a compilation.
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
precompile=OFF
if [ -n "${CCACHE_DISABLE:-}" ] && [[ $preset == [at]san ]]; then
  precompile=ON
fi
run cmake --preset "$preset" -DTOPO_PRECOMPILE_TESTS="$precompile"
run cmake --build --preset "$preset" ${1:+--target "$@"}
