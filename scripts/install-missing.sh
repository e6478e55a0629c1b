#!/usr/bin/env bash
# Installs those of the given Debian packages that are not installed yet
# (apt-get update first). Sourced or run: scripts/install-missing.sh WHO PACKAGE...
# WHO prefixes the progress line ("setup: installing ...").
install_missing() {
  local who=$1 p
  shift
  local missing=()
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "$who: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  set -euo pipefail
  install_missing "$@"
fi
