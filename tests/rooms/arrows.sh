#!/usr/bin/env bash
# Tries the include arrows between the rooms of sim/: every probe (a header of a
# room its room must not see) has to fail to compile, saying the header is not
# there; and no file of src/ may be compiled with an include directory of sim/.
# Usage: arrows.sh SOURCE_DIR BUILD_DIR PROBE_LIST
set -uo pipefail
src=${1:?source dir} build=${2:?build dir} list=${3:?probe list}
failures=0
fail() { echo "room arrows: $*"; failures=$((failures + 1)); }

while read -r target room header; do
  [ -n "$target" ] || continue
  # A probe of a header that does not exist would fail for the wrong reason.
  found=$(ls "$src"/sim/*/"$header" 2>/dev/null | head -1)
  [ -n "$found" ] || { fail "$target: no room has $header"; continue; }
  if out=$(cmake --build "$build" --target "$target" 2>&1); then
    fail "sim/$room sees ${found#$src/}: the include of a room it must not use compiled"
  elif ! grep -q "$header: No such file or directory" <<<"$out"; then
    fail "$target failed, but not for want of $header:"; echo "$out" | tail -20
  else
    echo "room arrows: sim/$room cannot include ${found#$src/} (refused by the compiler)"
  fi
done <"$list"

commands="$build/compile_commands.json"
[ -f "$commands" ] || fail "no $commands"
src_compiles=$(grep '"command"' "$commands" | grep -c -- " -c $src/src/") || true
[ "$src_compiles" -gt 0 ] || fail "no compile of src/ found in $commands"
leaks=$(grep '"command"' "$commands" | grep -- " -c $src/src/" | grep -- "$src/sim/" | sed 's/.* -c //; s/",*$//') || true
if [ -n "$leaks" ]; then
  fail "src/ compiled with an include directory of sim/:"$'\n'"$leaks"
else
  echo "room arrows: $src_compiles compiles of src/ files, none with an include directory of sim/"
fi

[ "$failures" -eq 0 ] || { echo "room arrows: $failures problem(s)"; exit 1; }
