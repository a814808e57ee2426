#!/usr/bin/env bash
# Sets up, builds, starts the agent on a sample network and prints its topology view.
#   ./run.sh                    shows the view, stops the agent, ends with status 0
#   ./run.sh --serve [NETWORK]  keeps the agent running until Ctrl-C; changes stay in NETWORK.db
#                               beside this script
set -euo pipefail

caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")"
network=networks/backbone.json
serve=false

usage() {
  echo "usage: ./run.sh [--serve [NETWORK]]" >&2
  exit 1
}

case "${1:-}" in
  "") ;;
  --serve)
    serve=true
    [ "$#" -le 2 ] || usage
    [ "$#" -lt 2 ] || network=$(cd "$caller" && realpath -- "$2")
    ;;
  *) usage ;;
esac

scripts/setup.sh
scripts/build.sh release topo-agentd topoctl

bin=build/release/bin
work=$(mktemp -d)
agent=""
stop() {
  if [ -n "$agent" ]; then
    kill "$agent" 2>/dev/null || true
    wait "$agent" || true
  fi
  rm -rf "$work"
}
trap stop EXIT

if $serve; then
  store="$PWD/$(basename "${network%.*}").db"
  endpoint=127.0.0.1:2810
else
  store=:memory:
  endpoint=127.0.0.1:0
fi

"$bin/topo-agentd" --network "$network" --store "$store" --endpoint "$endpoint" \
  --ior-file "$work/manager.ior" >"$work/ready" &
agent=$!
while [ ! -s "$work/manager.ior" ]; do
  if ! kill -0 "$agent" 2>/dev/null; then
    wait "$agent" && status=0 || status=$?
    agent=""
    exit "$status"
  fi
  sleep 0.05
done
while [ ! -s "$work/ready" ]; do
  sleep 0.05
done
cat "$work/ready"

if $serve; then
  trap 'exit 0' INT TERM
  echo
  echo "The network and its changes are in $store. The next start continues with this file;"
  echo "remove the file to start from $network again."
  echo
  echo "In another terminal:"
  echo "  $bin/topoctl topo                 the topology view as a table"
  echo "  $bin/topoctl --format json topo   the same as JSON"
  echo "  $bin/topoctl --help               everything else"
  echo "Ctrl-C stops the agent."
  wait "$agent"
else
  "$bin/topoctl" --ior-file "$work/manager.ior" topo
fi
