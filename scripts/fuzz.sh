#!/usr/bin/env bash
# fuzz.sh [TARGET [RUNS]]: builds and runs the fuzz targets of tests/fuzz with clang and its sanitizers.
#
# TARGET: one of access, events, giop, graphml, json, names, references; all by default. RUNS: executions of each
# target, 20,000 by default. Ends with status 1 at a finding: its input is then in build/fuzz/findings. New inputs are
# kept in build/fuzz/corpus; the seeds in tests/fuzz/corpus do not change.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
targets=(access json graphml names references events giop)
if [ -n "${1:-}" ]; then
  targets=("$1")
fi
runs=${2:-20000}

scripts/build.sh fuzz "${targets[@]/#/fuzz_}"

export UBSAN_OPTIONS=print_stacktrace=1
suppressions=orb/$(sed -n 's/^TOPO_ORB:STRING=//p' build/fuzz/CMakeCache.txt)/fuzz/lsan.supp
export LSAN_OPTIONS=print_suppressions=0
if [ -f "$suppressions" ]; then
  LSAN_OPTIONS+=:suppressions=$suppressions
fi

for target in "${targets[@]}"; do
  found=build/fuzz/findings/$target
  corpus=build/fuzz/corpus/$target
  mkdir -p "$found" "$corpus"
  # The ORB allocates up to 2 GiB for the length of a text or a type code before it checks the length.
  limits=(-max_len=4096 -timeout=20 -rss_limit_mb=4096 -malloc_limit_mb=4096)
  export ASAN_OPTIONS=strict_string_checks=1
  case "$target" in
    references | events)
      # Leaks are looked for at the end only: the ORB's own ones, in its lsan.supp, would make every look a long one.
      limits+=(-detect_leaks=0)
      ;;
    giop)
      # The ORB keeps pointers into its buffers, which the leak sanitizer takes for leaks.
      limits+=(-detect_leaks=0)
      export ASAN_OPTIONS+=:detect_leaks=0
      ;;
  esac
  log=$found/log
  if ! build/fuzz/bin/fuzz_"$target" -runs="$runs" -dict=tests/fuzz/"$target".dict -artifact_prefix="$found/" \
      -print_final_stats=1 "${limits[@]}" "$corpus" tests/fuzz/corpus/"$target" >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "fuzz: $target has a finding: $found" >&2
    exit 1
  fi
  echo "fuzz: $target: $(awk '/number_of_executed_units/ {print $2}' "$log") executions without a finding"
done
