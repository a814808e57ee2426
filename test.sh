#!/usr/bin/env bash
# Sets up, builds and runs every test. Further arguments go to ctest.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
scripts/setup.sh
scripts/build.sh release
# One test more than processors, because tests wait for processes and the disk.
ctest --preset release -j "$(($(nproc) + 1))" "$@"
