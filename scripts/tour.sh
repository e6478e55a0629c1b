#!/usr/bin/env bash
# A short headless tour of the popup under Xvfb: it shows with the current mode
# focused, the viewer moves down and picks, the TV switches, the application ends.
# Then the same popup in Arabic (right to left). Writes PNGs and transcript.md to OUT.
# Expects TVSIM_DB/TVSIM_LOG set and the sample TV loaded (scripts/popup.sh does that).
# Usage: scripts/tour.sh OUT
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
out=$1
tvctl="$build/tools/tvctl"
app="$build/antenna-selection"

display=99
while [ -e "/tmp/.X11-unix/X$display" ] || [ -e "/tmp/.X$display-lock" ]; do display=$((display + 1)); done
Xvfb ":$display" -screen 0 1920x1080x24 -nolisten tcp >"$out/xvfb.log" 2>&1 &
xvfb=$!
app_pid=
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null || true
  kill "$xvfb" 2>/dev/null || true
}
trap cleanup EXIT
export DISPLAY=":$display"
for _ in $(seq 100); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done

step=0
shot() {  # shot NAME: waits until the screen shows more than one colour, saves it
  step=$((step + 1))
  local file
  file=$(printf '%s/%02d-%s.png' "$out" "$step" "$1")
  for _ in $(seq 50); do
    import -window root "$file"
    [ "$(identify -format %k "$file")" -gt 1 ] && break
    sleep 0.1
  done
  echo "  screenshot $file"
}
settle() {  # settle: waits until two screenshots in a row are the same
  local a="$out/.settle-a.png" b="$out/.settle-b.png"
  import -window root "$a"
  for _ in $(seq 30); do
    sleep 0.1
    import -window root "$b"
    [ "$(compare -metric AE "$a" "$b" null: 2>&1 || true)" = "0" ] && break
    mv "$b" "$a"
  done
  rm -f "$a" "$b"
}
start_app() {
  "$app" >>"$out/app.stderr" 2>&1 &
  app_pid=$!
  window=$(timeout 20 xdotool search --sync --name "Antenna Selection Wnd" | head -n 1)
  xdotool windowfocus --sync "$window" 2>/dev/null || true
  settle
}
wait_exit() {
  for _ in $(seq 100); do kill -0 "$app_pid" 2>/dev/null || break; sleep 0.1; done
  if kill -0 "$app_pid" 2>/dev/null; then echo "tour: the application did not end" >&2; exit 1; fi
  wait "$app_pid" || true
  app_pid=
}
mode() { "$tvctl" show | jq -c .tv_mode; }

{
  echo "# Tour of the antenna popup"
  echo
  echo "Before: tuning mode $(mode)"
} >"$out/transcript.md"

echo "tour: English, pick the next antenna"
start_app
shot popup-en
xdotool key Down
settle
shot moved-down
xdotool key Return
wait_exit
"$tvctl" show >"$out/state-after.json"

echo "tour: Arabic, right to left, then Back"
"$tvctl" set db/menu/system/language ar_AE
start_app
shot popup-ar
xdotool key Escape
wait_exit
"$tvctl" set db/menu/system/language en_US

# The two questions asked when the pick would cut off a recording. Each loads
# its own TV; the sample's before/after states above are kept.
conflict() {  # conflict NAME SCENARIO LEFT KEYS...: pick the next antenna, answer with KEYS
  local name=$1 scenario=$2 left=$3
  shift 3
  echo "tour: $name"
  "$tvctl" load "$root/scenarios/$scenario"
  start_app
  xdotool key Down
  settle
  xdotool key Return
  settle
  shot "$name"
  for key in "$@"; do
    xdotool key "$key"
    settle
  done
  wait_exit
  # The switch happened, and only after the chosen recording stopped.
  if [ "$("$tvctl" show | jq -c '[.tv_mode.antenna, .recordings]')" != "[1,$left]" ]; then
    echo "tour: $name: expected antenna 1 and recordings $left, got $("$tvctl" show | jq -c '[.tv_mode, .recordings]')" >&2
    exit 1
  fi
  {
    echo
    echo "## $name ($scenario, answered with: $*)"
    echo
    echo "Tuning mode after: $("$tvctl" show | jq -c .tv_mode); recordings left: $("$tvctl" show | jq -c .recordings)"
    echo
    echo '```'
    "$tvctl" show | jq -c '.recorder_requests[]'
    echo '```'
  } >>"$out/conflict.md"
}
: >"$out/conflict.md"
# One recording on the only recordable tuner: the box; Left then Return agrees.
conflict box-one-recording one-recording.json '[]' Left Return
# Two recordings: which one to stop; Return stops the first.
conflict stop-popup-two-recordings two-recordings.json '[8388610]' Return

{
  echo "After: tuning mode $(jq -c .tv_mode "$out/state-after.json")"
  echo
  echo "## What the TV recorded"
  echo
  echo '```'
  jq -c '.tuning_changes[], .kpi_events[]' "$out/state-after.json"
  echo '```'
  echo
  cat "$out/conflict.md"
  echo
  echo "## Log lines"
  echo
  echo '```'
  cat "$TVSIM_LOG"
  echo '```'
} >>"$out/transcript.md"
echo "tour: done; screenshots and transcript in $out"
