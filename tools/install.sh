#!/usr/bin/env bash
# Installs the packages of tools/packages.txt that are not there yet. With all of them installed it needs no network.
set -eu
cd "$(dirname "$0")"
missing=()
while read -r package; do
  case "$package" in ''|'#'*) continue ;; esac
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done < packages.txt
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
