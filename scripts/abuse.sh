#!/usr/bin/env bash
# abuse.sh [--bin DIR] [NAME...]: attacks the real agent as a hostile or stalled client would.
#
# Prints one line for each attack with its cost. Ends with status 1 when the agent crashed, stalled, or used memory or
# time out of proportion to the attack. NAME selects attacks by a part of their names. Takes a few minutes.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
bin=build/release/bin
if [ "${1:-}" = --bin ]; then
  bin=${2:?abuse.sh: --bin needs a folder}
  shift 2
else
  scripts/build.sh release topo-agentd topoctl
fi
exec python3 scripts/abuse "$bin" "$@"
