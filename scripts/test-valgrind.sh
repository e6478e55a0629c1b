#!/usr/bin/env bash
# One whole run of the real application under valgrind on Xvfb: the viewer
# picks another antenna while recordings run, agrees to stop one, the recorder
# reports the stop, the TV switches and the application ends. Fails on any
# definite leak (EFL's own caches are suppressed by tests/valgrind/efl.supp),
# on any invalid read, write or free, and when the TV did not switch or did not
# stop exactly one recording.
# Usage: scripts/test-valgrind.sh [SCENARIO.json]
#   two recordings (default scenarios/two-recordings.json): Down, Return, then
#   Return on the stop popup's first item; one recording: Down, Return, then
#   Left and Return in the message box.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VALGRIND_BUILD_DIR:-$root/build}
scenario=${1:-$root/scenarios/two-recordings.json}
supp=$root/tests/valgrind/efl.supp

source "$root/scripts/install-missing.sh"
install_missing valgrind valgrind jq imagemagick
# The main job's build (optimised, with line numbers): the tests are not needed here.
"$root/scripts/setup.sh" main "$build" -DSANITIZE=

out=$build/valgrind-run
rm -rf "$out"
mkdir -p "$out"
export TVSIM_DB="$out/tv.db" TVSIM_LOG="$out/tv.log"
tvctl="$build/tools/tvctl"
app="$build/antenna-selection"
fail() { echo "valgrind: FAILED: $*" >&2; exit 1; }

"$tvctl" load "$scenario"
"$tvctl" show >"$out/state-before.json"
recordings=$(jq '.recordings | length' "$out/state-before.json")
case $recordings in
  1 | 2) ;;
  *) fail "$scenario has $recordings recordings; the run needs one or two" ;;
esac
jq -e '.recorder.stop_report | .event == 1 and .result == 1 and (.never | not)' "$out/state-before.json" >/dev/null ||
  fail "$scenario: the recorder does not report the stop"
[ "$(jq '.settings["system_info/238"]' "$out/state-before.json")" -le 1 ] || [ "$recordings" -eq 2 ] ||
  fail "$scenario: a spare recordable tuner, nothing would be asked"

display=99
while [ -e "/tmp/.X11-unix/X$display" ] || [ -e "/tmp/.X$display-lock" ]; do display=$((display + 1)); done
Xvfb ":$display" -screen 0 1920x1080x24 -nolisten tcp >"$out/xvfb.log" 2>&1 &
xvfb=$!
app_pid=
cleanup() {
  if [ -n "$app_pid" ]; then kill "$app_pid" 2>/dev/null || true; fi
  kill "$xvfb" 2>/dev/null || true
}
trap cleanup EXIT
export DISPLAY=":$display"
for _ in $(seq 100); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done

# Valgrind makes every step slow: the time-outs are stretched tenfold so that
# none of them ends the run, and each key waits for the log line that shows the
# application is ready for it.
export TVSIM_TIME_SCALE=10
# Eina frees through a deferred queue by default; valgrind must see each free.
export EINA_FREEQ_BYPASS=1
valgrind --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
  --error-exitcode=99 --suppressions="$supp" --num-callers=40 --gen-suppressions=all \
  --log-file="$out/valgrind.log" "$app" >"$out/app.stderr" 2>&1 &
app_pid=$!

lines() { local n; n=$(grep -c -F -- "$1" "$TVSIM_LOG" 2>/dev/null) || true; echo "${n:-0}"; }
wait_line() {  # wait_line TEXT [COUNT]: until the log has COUNT lines with TEXT
  local count=${2:-1}
  for _ in $(seq 1200); do
    [ "$(lines "$1")" -ge "$count" ] && return 0
    kill -0 "$app_pid" 2>/dev/null || fail "the application ended while waiting for \"$1\""
    sleep 0.1
  done
  fail "no \"$1\" in the log within 120 s"
}
settle() {  # until the screen stays the same for three looks a second apart
  local a="$out/.settle-a.png" b="$out/.settle-b.png" same=0
  import -window root "$a"
  for _ in $(seq 60); do
    sleep 1
    import -window root "$b"
    if [ "$(compare -metric AE "$a" "$b" null: 2>&1 || true)" = "0" ]; then
      same=$((same + 1))
      [ "$same" -ge 3 ] && break
    else
      same=0
    fi
    mv "$b" "$a"
  done
  rm -f "$a" "$b"
}
step() { echo "valgrind: $*"; }

step "starting the application under valgrind ($(basename "$scenario"))"
window=$(timeout 180 xdotool search --sync --name "Antenna Selection Wnd" | head -n 1) ||
  fail "no application window within 180 s"
xdotool windowfocus --sync "$window" 2>/dev/null || true
wait_line "m_ItemFocusedCB is call"  # the current antenna has the focus
step "Down, Return: another antenna"
xdotool key Down
wait_line "m_ItemFocusedCB is call" 2
xdotool key Return
if [ "$recordings" -eq 1 ]; then
  wait_line "bMsgBoxVisible:1"
  step "the message box: Left, Return agrees"
  xdotool key Left Return
else
  wait_line "Create ..."  # the stop popup; its first item takes the focus a frame later
  settle
  import -window root "$out/stop-popup.png"
  step "the stop popup: Return on its first item"
  xdotool key Return
fi
step "waiting for the stop report, the switch and the end"
for _ in $(seq 1800); do kill -0 "$app_pid" 2>/dev/null || break; sleep 0.1; done
kill -0 "$app_pid" 2>/dev/null && fail "the application did not end within 180 s"
status=0
wait "$app_pid" || status=$?
app_pid=

"$tvctl" show >"$out/state-after.json"
grep -E 'definitely lost|indirectly lost|possibly lost|ERROR SUMMARY' "$out/valgrind.log" | sed 's/^==[0-9]*== /valgrind:   /'
[ "$status" -ne 99 ] || fail "valgrind reported errors: $out/valgrind.log"
[ "$status" -eq 0 ] || fail "the application ended with status $status ($out/app.stderr)"
! grep -qE 'Invalid (read|write|free)|Mismatched free' "$out/valgrind.log" ||
  fail "invalid memory use: $out/valgrind.log"
grep -q 'ERROR SUMMARY: 0 errors' "$out/valgrind.log" || fail "valgrind found errors: $out/valgrind.log"
jq -e --slurpfile before "$out/state-before.json" '.tv_mode != $before[0].tv_mode' "$out/state-after.json" \
  >/dev/null || fail "the tuning mode did not change"
stops=$(jq '[.recorder_requests[] | select(.op == "stop_recording")] | length' "$out/state-after.json")
[ "$stops" -eq 1 ] || fail "$stops recordings stopped instead of one"
[ "$(jq '.recordings | length' "$out/state-after.json")" -eq $((recordings - 1)) ] ||
  fail "the stopped recording still runs"
step "done: switched to $(jq -c .tv_mode "$out/state-after.json"), one recording stopped, no leak, no invalid access"
