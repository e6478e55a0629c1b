#!/usr/bin/env bash
# Installs the Debian packages the build lacks, then configures and builds.
# Usage: scripts/setup.sh main|all [BUILD_DIR] [extra cmake arguments...]
#   main: what the main job runs (the program, tvctl, tvtour, the resources), without the tests;
#   all:  everything, the tests included.
# Both configure with the same flags, so that `all` after `main` in one folder
# only builds what `main` left out.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
what=${1:?usage: scripts/setup.sh main|all [BUILD_DIR] [cmake arguments...]}
shift
build=${1:-$root/build}
shift || true

packages=(cmake g++ make pkg-config libefl-all-dev libedje-bin nlohmann-json3-dev libsqlite3-dev
          gettext xvfb xauth xdotool fonts-dejavu-core libx11-dev libxtst-dev)
case "$what" in
  main) tests=OFF; targets=(--target antenna-selection tvctl tvtour app_resources platform_theme) ;;
  all) tests=ON; targets=(); packages+=(libgtest-dev libgmock-dev evilwm) ;;
  *) echo "setup: the first argument is main or all, not $what" >&2; exit 2 ;;
esac
source "$root/scripts/install-missing.sh"
install_missing setup "${packages[@]}"

echo "setup: building ($what) in $build"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTV_WERROR=ON -DTV_BUILD_TESTS=$tests "$@" >/dev/null
cmake --build "$build" -j"$(nproc)" "${targets[@]}"
