#!/usr/bin/env bash
# soak.sh [--bin DIR] HOURS: runs the real agent under a mix of clients for a number of hours, such as 0.5.
#
# The clients request views, use and abandon iterators, change the network, die, and read slowly. Prints the memory,
# the file descriptors and the threads of the agent every 10 seconds. Ends with status 1 when a well-behaved client was
# not served, or when a value has grown after the first five minutes (the first tenth of a shorter run).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
bin=build/release/bin
if [ "${1:-}" = --bin ]; then
  bin=${2:?soak.sh: --bin needs a folder}
  shift 2
else
  scripts/build.sh release topo-agentd topoctl
fi
hours=${1:?soak.sh: the number of hours is missing}
PYTHONPATH=scripts/abuse exec python3 scripts/soak "$bin" "$hours"
