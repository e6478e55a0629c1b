#!/usr/bin/env bash
# Mutation check for developers (not run by CI): copies the tree, applies each deliberate fault below one at a
# time, rebuilds the test targets and reports which mutants the tests kill.
# Usage: tests/mutation/run.sh [SOURCE_TREE] [WORK_DIR]   (defaults: the repository, /tmp/mut)
# MUT_ONLY="3 7" runs only those mutants; MUT_KEEP=1 reuses an existing copy and build in WORK_DIR.
# Each mutant's test executables are built and run one at a time, stopping at the first that fails; a mutant
# of src/Util.cpp is run against the Util tests only, as no other test executable calls it.
set -u
SRC=${1:-$(cd "$(dirname "$0")/../.." && pwd)}
WORK=${2:-/tmp/mut}
BUILD=$WORK/build-mut
UTIL_TESTS=(UtilTvModeTest UtilAntennaListTest UtilRecordingTest UtilServiceTextTest UtilKpiTest UtilWindowTest)
SIM_TESTS=(PortTest FaultsTest ScenarioTest TextsTest LogServiceTest SettingsWatchTest RecorderReportTest TraceTest
           TvctlTest AppFrameworkTest AppFrameworkInstanceTest AppFrameworkTimeScaleTest)
TESTS=("${SIM_TESTS[@]}" "${UTIL_TESTS[@]}")
TARGETS=("${TESTS[@]}" tvsim-tiny-app tvctl)

if [ "${MUT_KEEP:-0}" != 1 ] || [ ! -d "$WORK" ]; then
  rm -rf "$WORK" && mkdir -p "$WORK"
  (cd "$SRC" && tar --exclude='./build*' --exclude='./.git' -cf - .) | (cd "$WORK" && tar xf -)
fi
cmake -S "$WORK" -B "$BUILD" -DCMAKE_BUILD_TYPE=Debug >/dev/null || exit 1

build() { cmake --build "$BUILD" -j2 --target "$@" >"$WORK/build.log" 2>&1; }
# Builds and runs the given test executables in turn: prints the first that fails ("build:" before it when it
# did not build), or nothing when all pass.
run_tests() {
  local t
  build tvsim-tiny-app tvctl || { echo "build:tools"; return; }
  for t in "$@"; do
    build "$t" || { echo "build:$t"; return; }
    (cd "$BUILD" && ELM_ENGINE=buffer TV_BINARY_DIR="$BUILD" timeout 300 "$BUILD/tests/$t" >"$WORK/test.log" 2>&1) \
      || { echo "$t"; return; }
  done
}

build "${TARGETS[@]}" || { echo "the unmutated tree does not build: see $WORK/build.log"; exit 1; }
failing=$(run_tests "${TESTS[@]}")
[ -z "$failing" ] || { echo "the unmutated tree fails $failing: see $WORK/test.log"; exit 1; }

killed=0; total=0
mutant() {  # id file sed-expression description
  local id=$1 file=$WORK/$2 expr=$3 desc=$4
  if [ -n "${MUT_ONLY:-}" ] && [[ " $MUT_ONLY " != *" $id "* ]]; then return; fi
  cp "$file" "$file.orig"
  sed -i -e "$expr" "$file"
  if cmp -s "$file" "$file.orig"; then
    printf '%-3s %-10s %s\n' "$id" "NOT-APPLIED" "$desc"
  else
    total=$((total + 1))
    local verdict by scope=("${TESTS[@]}")
    [ "$2" = src/Util.cpp ] && scope=("${UTIL_TESTS[@]}")
    by=$(run_tests "${scope[@]}")
    case "$by" in
      "") verdict="SURVIVED" ;;
      build:*) verdict="build-err" ;;
      *) verdict="killed"; killed=$((killed + 1)) ;;
    esac
    desc="$desc${by:+ [$by]}"
    printf '%-3s %-10s %s\n' "$id" "$verdict" "$desc"
  fi
  mv "$file.orig" "$file"
  touch "$file"
}

U=src/Util.cpp
mutant 1  $U 's/    case 0: case 2:/    case 0:/' "country 2 falls to the default service mode"
mutant 2  $U 's/case 34: case 64:/case 34: case 66:/' "country 64 replaced by 66 in the SA-ATV table"
mutant 3  $U 's/if (m == 2 || (m >= 19 \&\& m <= 21)) continue;/if (m >= 19 \&\& m <= 21) continue;/' "satellite mode 2 tried"
mutant 4  $U 's/if (m == 2 || (m >= 19 \&\& m <= 21)) continue;/if (m == 2 || (m >= 19 \&\& m <= 20)) continue;/' "satellite mode 21 tried"
mutant 5  $U 's/return ExistChannelByTvMode(candidate) || candidate == current;/return ExistChannelByTvMode(candidate);/' "current-mode fallback dropped"
mutant 6  $U 's/if (pip != 1 || connection) return true;/if (pip == 1 || connection) return true;/' "pip rule inverted"
mutant 7  $U 's/bytes\[0\] == 0x00 \&\& (bytes\[1\] == 0x0A || bytes\[1\] == 0x0D)/bytes[1] == 0x00 \&\& (bytes[0] == 0x0A || bytes[0] == 0x0D)/' "line-feed byte order swapped"
mutant 8  $U 's/GetTvMode().serviceMode == 3;/GetTvMode().serviceMode == 2;/' "KPI variant B condition"
mutant 9  $U 's/s_nServiceMode = saAtv ?/return saAtv ?/' "service mode cache not kept"
mutant 10 $U 's/s_bPvrSupportRead = true;/s_bPvrSupportRead = false;/' "PVR support cache not kept"
mutant 11 $U 's/        tuners = 1;/        tuners = 2;/' "tuner reduction skipped"
mutant 12 $U 's/GetUint16() : 65535;/GetUint16() : 0;/' "attribute default 65535 becomes 0"
mutant 13 $U 's/if (!Contains(list, profile.tvMode) \&\& /if (/' "operator profile already listed added again"
mutant 14 $U 's/std::min(tuners, recordable)/std::max(tuners, recordable)/' "recordable tuners not capped"
mutant 15 $U 's/elm_genlist_item_index_get(item) - 1;/elm_genlist_item_index_get(item);/' "genlist index counted from 1"
mutant 16 $U 's/"EV017"/"EV016"/' "KPI category of SELECT_ANTENNA"
mutant 17 $U 's/desc += (i == 0 ? "{" : ";");/desc += (i == 0 ? "{" : ",");/' "KPI description separator"
mutant 18 $U 's/return value > 0;/return value > 1;/' "enlarge threshold"
mutant 19 $U 's/    count = 0;  \/\/ a failed query/    ;  \/\/ a failed query/' "failed recording query keeps its count"
mutant 20 sim/services/Navigation.cpp '36s/return 1;/return 2;/' "GetTvMode success result is no longer 1"
mutant 21 sim/state/PortCall.h 's/R result = (fault \&\& fault->result) ? FaultResult<R>(\*fault->result) : body(context);/R result = body(context); if (fault \&\& fault->result) result = FaultResult<R>(*fault->result);/' "output and state written under a result fault"
mutant 22 sim/state/Faults.cpp 's/\*fault.nth == fault.calls)/*fault.nth == fault.calls + 1)/' "fault nth counting off by one"
mutant 23 sim/control/ScenarioLoader.cpp '/^  ClearTv(store);$/d; s/^  Scenario scenario;$/  ClearTv(store);\n  Scenario scenario;/' "refused scenario clears the TV"
mutant 24 sim/services/SettingsWatch.cpp 's/callback(w.key);/(void)callback;/' "settings notification not delivered"
mutant 25 sim/services/RecorderService.cpp 's/if (report) ScheduleReport(config, serviceId);/if (report) { rec_result r{}; r.event = config.event; r.result = config.result; State().callback(r, State().data); }/' "stop report delivered synchronously"
mutant 26 sim/services/LogService.cpp 's/"??VDIWEF"/"??VDWIEF"/' "log line priority letters I and W swapped"
mutant 27 sim/ground/TimeScale.cpp 's/return seconds \* TimeScale();/return seconds \/ TimeScale();/' "time scale divides"
mutant 28 sim/services/Trace.cpp 's/std::strcmp(value, "0") == 0) return "";/false) return "";/' "TVSIM_TRACE=0 does not turn tracing off"
mutant 29 sim/services/ChannelTexts.cpp 's/return Replace(format, "{minor}", std::to_string(minor));/return format;/' "minor number not put into the channel number text"

echo "killed $killed of $total"
