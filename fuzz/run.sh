#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build-fuzz and runs each for a
# while. New inputs go to build-fuzz/corpus/<target> (the seeds in
# fuzz/corpus/<target> stay as they are); a crash leaves its input in
# build-fuzz/artifacts/ and makes the script fail.
# Usage: fuzz/run.sh [SECONDS_EACH] [TARGET...]   (default 60 s, every target)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${FUZZ_BUILD_DIR:-$root/build-fuzz}
seconds=${1:-60}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(text_utf16 combine_strings channel_number scenario_loader)

packages=(clang-14 libclang-rt-14-dev)
source "$root/scripts/install-missing.sh"
install_missing fuzz "${packages[@]}"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang-14 \
  -DCMAKE_CXX_COMPILER=clang++-14 -DTV_BUILD_FUZZERS=ON -DTV_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target "${targets[@]/#/fuzz_}"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# One target per core at a time: each gets its full time, the whole run a
# fraction of it.
run_target() {
  local target=$1 corpus=$build/corpus/$1 artifacts=$build/artifacts
  mkdir -p "$corpus" "$artifacts"
  "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -print_final_stats=1 \
    -artifact_prefix="$artifacts/$target-" "$corpus" "$root/fuzz/corpus/$target" >"$build/fuzz-$target.log" 2>&1
}
lanes=$(nproc)
failed=()
for ((i = 0; i < ${#targets[@]}; i += lanes)); do
  batch=("${targets[@]:i:lanes}")
  echo "fuzz: ${batch[*]} for ${seconds}s"
  pids=()
  for target in "${batch[@]}"; do
    run_target "$target" &
    pids+=($!)
  done
  for j in "${!batch[@]}"; do
    target=${batch[$j]}
    if ! wait "${pids[$j]}"; then
      failed+=("$target")
      tail -40 "$build/fuzz-$target.log"
    fi
    grep -E '^(stat::number_of_executed_units|stat::new_units_added)' "$build/fuzz-$target.log" | sed "s/^/fuzz: $target /" || true
  done
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: FAILED: ${failed[*]} (inputs in $build/artifacts)"
  exit 1
fi
echo "fuzz: ${#targets[@]} targets ran ${seconds}s each without a finding"
