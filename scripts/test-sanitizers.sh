#!/usr/bin/env bash
# Builds the tests with AddressSanitizer and UndefinedBehaviorSanitizer in a
# second build folder and runs them there. Any sanitizer report fails the run.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
asan=${ASAN_BUILD_DIR:-$root/build-asan}

echo "test: with AddressSanitizer and UndefinedBehaviorSanitizer in $asan"
# Without -Werror: under ASan GCC 12 warns falsely (maybe-uninitialized) inside
# libstdc++'s <regex>; scripts/test.sh holds the plain build at zero warnings.
# -O1 with line tables only: half the build time of -O2 -g (CI's budget), and
# reports still name files and lines.
"$root/scripts/setup.sh" all "$asan" -DTV_WERROR=OFF -DSANITIZE=address,undefined -DTV_FIRST_KEY_REPEAT=3 \
  "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG"
reports=$asan/sanitizer-reports
rm -rf "$reports"
mkdir -p "$reports"
# LeakSanitizer is off: EFL's own start-up allocations swamp it (docs/proof.md).
# ASan reports also go to files, so that one from a child whose exit status a
# test does not look at still fails the run. UBSan ignores log_path in GCC's
# combined runtime: its reports abort the process (-fno-sanitize-recover=all).
export ASAN_OPTIONS="detect_leaks=0:log_path=$reports/asan"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
status=0
ctest --test-dir "$asan" --output-on-failure -j"$(nproc)" --timeout 300 || status=$?
if compgen -G "$reports/*" >/dev/null; then
  echo "test: sanitizer reports:"
  for report in "$reports"/*; do
    echo "== $report"
    head -60 "$report"
  done
  exit 1
fi
exit "$status"
