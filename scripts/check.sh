#!/usr/bin/env bash
# check.sh [--fix]: format, layering and lint of our own code. --fix reformats in place.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

mapfile -t sources < <(git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp')

if [ "${1:-}" = --fix ]; then
  clang-format -i "${sources[@]}"
else
  clang-format --dry-run -Werror "${sources[@]}"
fi

python3 scripts/check_tree.py
python3 scripts/check_behaviour.py
python3 scripts/check_guide.py

# clang-tidy on our own code; .clang-tidy gives a reason for each disabled check.
cmake --preset dev >/dev/null
cmake --build --preset dev --target topo_idl topo_agent_idl >/dev/null
python3 scripts/tidy.py build/dev
echo "check: format, tree and lint are fine"
