#!/usr/bin/env bash
# Installs the Debian packages of a list (scripts/packages.txt unless another
# list is named) that are missing.
# Idempotent: runs apt-get only when something is missing, and updates the
# package lists only then.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
list=${1:-$here/packages.txt}
mapfile -t wanted < <(grep -v -E '^\s*(#|$)' "$list")
missing=()
for p in "${wanted[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
