#!/usr/bin/env bash
# Builds and runs every test. No display needed: UI tests use the buffer engine
# or start their own Xvfb. The sanitizer run is scripts/test-sanitizers.sh, the
# fuzzers fuzz/run.sh (docs/proof.md).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}

"$root/scripts/setup.sh" all "$build"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)" --timeout 300
