#!/usr/bin/env bash
# The main job: builds, loads the sample TV into a fresh database and runs the
# antenna popup on it. With a display it opens a window; without one it runs a
# short tour under Xvfb and writes screenshots and a transcript to an output folder.
# Usage: scripts/popup.sh [SCENARIO.json]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
scenario=${1:-$root/scenarios/sample.json}
"$root/scripts/setup.sh" "$build"

out=${OUT_DIR:-$root/out/run-$(date +%Y%m%d-%H%M%S)}
mkdir -p "$out"
export TVSIM_DB="$out/tv.db" TVSIM_LOG="$out/tv.log"
tvctl="$build/tools/tvctl"
app="$build/antenna-selection"

"$tvctl" load "$scenario"
"$tvctl" show > "$out/state-before.json"

if [ ! -x "$app" ]; then
  echo "The simulated TV, loaded from $scenario:"
  cat "$out/state-before.json"
  exit 0
fi

if [ -n "${DISPLAY:-}" ] && xdotool getdisplaygeometry >/dev/null 2>&1; then
  echo "Opening the popup on $DISPLAY (Escape: back, Enter: pick)."
  "$app"
  "$tvctl" show > "$out/state-after.json"
  echo "State before and after: $out"
  exit 0
fi

exec "$root/scripts/tour.sh" "$out"
