#!/usr/bin/env bash
# The main job: builds, loads the sample TV into a fresh database and runs the
# antenna popup on it. With a display it opens a window; without one it runs the
# main-job tours (tours/main-job/*.json) with tvtour under Xvfb and names the
# report folder with their screenshots, verdicts and logs.
# Usage: scripts/popup.sh [SCENARIO.json]   (the scenario is for the window; each tour names its own)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
scenario=${1:-$root/scenarios/sample.json}
"$root/scripts/setup.sh" main "$build"

out=${OUT_DIR:-$root/out/run-$(date +%Y%m%d-%H%M%S)}
mkdir -p "$out"
tvctl="$build/tools/tvctl"
app="$build/antenna-selection"

if [ -x "$app" ] && ! { [ -n "${DISPLAY:-}" ] && xdotool getdisplaygeometry >/dev/null 2>&1; }; then
  status=0
  "$build/tools/tvtour" --out "$out" "$root"/tours/main-job/*.json || status=$?
  echo "Report: $out/index.md (a page per tour with its screenshots, the TV before and after, the log)"
  exit "$status"
fi

export TVSIM_DB="$out/tv.db" TVSIM_LOG="$out/tv.log"

"$tvctl" load "$scenario"
"$tvctl" show > "$out/state-before.json"

if [ ! -x "$app" ]; then
  echo "The simulated TV, loaded from $scenario:"
  cat "$out/state-before.json"
  exit 0
fi

echo "Opening the popup on $DISPLAY (Escape: back, Enter: pick)."
"$app"
"$tvctl" show > "$out/state-after.json"
echo "State before and after: $out"
