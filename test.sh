#!/usr/bin/env bash
# Sets up, builds and runs every test. Further arguments go to ctest.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
scripts/setup.sh
scripts/build.sh release
ctest --preset release -j "$(nproc)" "$@"
