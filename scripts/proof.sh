#!/usr/bin/env bash
# The further checks, after scripts/test.sh (docs/proof.md): the tests again
# with ASan and UBSan, one whole run of the application under valgrind, and a
# short run of each fuzzer. Too long for the test command's 20 minutes, so a
# command of its own; .ci/run runs both. Every step runs, then the first
# failure decides the exit status.
# Usage: scripts/proof.sh [FUZZ_SECONDS_EACH]   (default 45)
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
fuzz_seconds=${1:-45}
logs=${PROOF_LOG_DIR:-$root/build-proof-logs}
mkdir -p "$logs"

failed=()
run() {  # run NAME COMMAND...: one progress line before and one after, with the time taken
  local name=$1 start status
  shift
  echo "proof: $name ..."
  start=$(date +%s)
  "$@" >"$logs/$name.log" 2>&1
  status=$?
  if [ "$status" -eq 0 ]; then
    echo "proof: $name passed in $(($(date +%s) - start)) s"
  else
    echo "proof: $name FAILED in $(($(date +%s) - start)) s (status $status); the end of $logs/$name.log:"
    tail -60 "$logs/$name.log"
    failed+=("$name")
  fi
}

run sanitizers bash "$root/scripts/test-sanitizers.sh"
run valgrind bash "$root/scripts/test-valgrind.sh"
run fuzz bash "$root/fuzz/run.sh" "$fuzz_seconds"

if [ ${#failed[@]} -gt 0 ]; then
  echo "proof: FAILED: ${failed[*]}"
  exit 1
fi
echo "proof: all passed"
