#!/usr/bin/env bash
# Installs missing Debian packages. Prints nothing and returns at once when no package is missing.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

missing=()
while read -r package; do
  case "$package" in
    "" | "#"*) continue ;;
  esac
  # The query fails for an unknown package, which counts as missing.
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done <"$here/packages.txt"

if [ "${#missing[@]}" -eq 0 ]; then
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: these packages are missing, and only root or sudo can install them: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q >/dev/null
"${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
