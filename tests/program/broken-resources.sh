#!/usr/bin/env bash
# Broken resources through the real program: for each way a theme or the recording
# icon can be broken, fills the resource folder the test build of the program reads
# (TV_TEST_RES_DIR, fixed when it is built) and runs tours/resources/broken-resources.json
# against it with tvtour. A broken theme must be named in the log; a broken icon alone must not.
# Usage: broken-resources.sh TVTOUR PROGRAM TEST_RES_DIR GOOD_RES_DIR PLATFORM_THEME OUT_DIR
set -euo pipefail
tvtour=$1 program=$2 res=$3 good=$4 platform=$5 out=$6
tour=$(cd "$(dirname "$0")/../../tours/resources" && pwd)/broken-resources.json
theme=$res/edje/antenna-selection.edj icon=$res/images/epg_icon_body_recording.png
failed=0
for row in theme-missing theme-empty theme-cut theme-other theme-partless icon-missing icon-corrupt; do
  rm -rf "$res" && mkdir -p "$res/edje" "$res/images"
  cp "$good/edje/antenna-selection.edj" "$theme"
  cp "$good/images/epg_icon_body_recording.png" "$icon"
  case $row in
    theme-missing) rm "$theme" ;;
    theme-empty) : > "$theme" ;;
    theme-cut) head -c $(( $(stat -c %s "$theme") / 2 )) "$good/edje/antenna-selection.edj" > "$theme" ;;
    theme-other) cp "$platform" "$theme" ;;
    theme-partless)
      printf '%s\n' 'collections { group { name: "genlist.layout"; parts { part { name: "x"; type: RECT; } } }' \
        'group { name: "change.antenna.layout"; parts { part { name: "x"; type: RECT; } } } }' > "$res/partless.edc"
      edje_cc "$res/partless.edc" "$theme" >/dev/null 2>&1 ;;
    icon-missing) rm "$icon" ;;
    icon-corrupt) echo "not a picture" > "$icon" ;;
  esac
  # A broken icon keeps the theme: then neither line may be logged.
  present=true
  [[ $row == icon-* ]] && present=false
  sed "s/\"present\": true/\"present\": $present/" "$tour" > "$res/$row.json"
  sed -i "s#\"\\.\\./\\.\\./scenarios/#\"$(dirname "$tour")/../../scenarios/#" "$res/$row.json"
  if "$tvtour" --xvfb --quiet --app "$program" --out "$out" "$res/$row.json"; then
    echo "broken-resources: $row passed"
  else
    echo "broken-resources: $row FAILED (report in $out/$row)"; failed=1
  fi
done
rm -rf "$res"
exit $failed
