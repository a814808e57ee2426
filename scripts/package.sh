#!/usr/bin/env bash
# Builds the Debian packages topo-agent, topoctl and topo-dev of the release build into build/package.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
scripts/build.sh release package_content

out=build/package
log=$(mktemp)
trap 'rm -f "$log"' EXIT
rm -rf "$out"
if ! cpack --config build/release/CPackConfig.cmake -G DEB -B "$out" >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
rm -rf "$out/_CPack_Packages"
ls "$out"/*.deb
