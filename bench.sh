#!/usr/bin/env bash
# bench.sh [--list] [ROW...]: measures the speed of agent and module against the bare ORB (docs/benchmarks.md).
#
# Builds the release preset, measures every row (or the named rows), writes build/bench/results.json and the table of
# docs/benchmarks.md. Ends with status 1 and the names of the rows that do not reach their thresholds, with status 2
# when a row cannot be measured. Takes up to 20 minutes on an idle machine.
#
# TOPO_TAO_BUILD=DIR: a build folder of the preset tao. Without this variable the rows on TAO are skipped.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
for word in "$@"; do
  case "$word" in
    --list | --help) exec python3 scripts/bench "$word" ;;
  esac
done

if [ -n "${TOPO_TAO_BUILD:-}" ] && ! { grep -q '^TOPO_ORB:.*=tao$' "$TOPO_TAO_BUILD/CMakeCache.txt" &&
  grep -q '^CMAKE_BUILD_TYPE:.*=RelWithDebInfo$' "$TOPO_TAO_BUILD/CMakeCache.txt"; } 2>/dev/null; then
  echo "bench.sh: TOPO_TAO_BUILD: $TOPO_TAO_BUILD is not a build folder of the preset tao" >&2
  exit 2
fi

scripts/setup.sh
scripts/build.sh release bench_programs
tao=()
if [ -n "${TOPO_TAO_BUILD:-}" ]; then
  echo "build: $TOPO_TAO_BUILD"
  cmake "$TOPO_TAO_BUILD" -DTOPO_BENCH=ON >/dev/null
  cmake --build "$TOPO_TAO_BUILD" --target bench_programs >/dev/null
  tao=(--bin-on-tao "$TOPO_TAO_BUILD/bin")
fi
exec python3 scripts/bench --bin build/release/bin "${tao[@]}" --output build/bench \
  --document docs/benchmarks.md "$@"
