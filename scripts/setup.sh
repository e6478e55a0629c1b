#!/usr/bin/env bash
# Installs the Debian packages the build lacks, then configures and builds.
# Usage: scripts/setup.sh [BUILD_DIR] [extra cmake arguments...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
shift || true

packages=(cmake g++ make pkg-config libefl-all-dev libedje-bin nlohmann-json3-dev libsqlite3-dev
          libgtest-dev libgmock-dev gettext xvfb xauth xdotool imagemagick fonts-dejavu-core jq)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
