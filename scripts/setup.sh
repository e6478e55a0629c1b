#!/usr/bin/env bash
# Installs the Debian packages the build lacks, then configures and builds.
# Usage: scripts/setup.sh [BUILD_DIR] [extra cmake arguments...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
shift || true

packages=(cmake g++ make pkg-config libefl-all-dev libedje-bin nlohmann-json3-dev libsqlite3-dev
          libgtest-dev libgmock-dev gettext xvfb xauth xdotool imagemagick fonts-dejavu-core jq
          libx11-dev libxtst-dev evilwm)
source "$root/scripts/install-missing.sh"
install_missing setup "${packages[@]}"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
