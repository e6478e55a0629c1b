#!/usr/bin/env bash
# Benchmarks the application against floor programs: installs what it lacks,
# builds in Release into build-bench/, runs both side by side under Xvfb and
# writes the table of ratios to docs/performance.md.
# Usage: scripts/bench.sh [bench-runner options, e.g. --reps 9 --keys 20 --scale 1000,10000]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BENCH_BUILD_DIR:-$root/build-bench}

packages=(cmake g++ make pkg-config libefl-all-dev libedje-bin nlohmann-json3-dev libsqlite3-dev
          gettext xvfb xauth libx11-dev libxtst-dev libbenchmark-dev fonts-dejavu-core)
source "$root/scripts/install-missing.sh"
install_missing bench "${packages[@]}"

echo "bench: building in Release into $build"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTV_BUILD_BENCH=ON -DTV_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target antenna-selection bench-floor bench-runner bench-antenna-list >/dev/null

display=120
while [ -e "/tmp/.X11-unix/X$display" ] || [ -e "/tmp/.X$display-lock" ]; do display=$((display + 1)); done
Xvfb ":$display" -screen 0 1920x1080x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -e "/tmp/.X11-unix/X$display" ] && break; sleep 0.1; done
DISPLAY=":$display" "$build/bench/bench-runner" --doc "$root/docs/performance.md" "$@"
