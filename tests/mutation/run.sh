#!/usr/bin/env bash
# Mutation check for developers (not run by CI): copies the tree, plants each deliberate fault of the table
# at the end of this file one at a time, rebuilds and runs the whole test suite as the test command does
# (ctest, tours included), stopping at the first failing test. Prints one line per fault (killed, and by
# which test, or SURVIVED), then the kill count and the faults the tests miss.
#
# Usage: bash tests/mutation/run.sh [SOURCE_TREE] [WORK_DIR]   (defaults: this repository, /tmp/mut)
#   MUT_ONLY="3 7"      runs only those faults
#   MUT_KEEP=1          reuses the copy and the build in WORK_DIR (after a run of the same tree)
#   MUT_TIME_LIMIT=900  seconds one fault's build and suite may take before it counts as TIME-LIMIT (not killed)
#   MUT_JOBS=2          build and ctest parallelism
# A whole run takes a long time (an incremental build and up to a whole suite per fault): start it in the
# background and read its output as it goes.
#
# Each fault replaces an exact text that must occur exactly once in its file; when it does not (the code
# changed), the fault is reported NOT-APPLIED and the run ends with status 2, so a stale table is never a
# silent no-op. Tests run in the order ctest defines them (the cost data of earlier runs is removed first).
set -u
SRC=${1:-$(cd "$(dirname "$0")/../.." && pwd)}
WORK=${2:-/tmp/mut}
BUILD=$WORK/build
JOBS=${MUT_JOBS:-2}
LIMIT=${MUT_TIME_LIMIT:-900}
TABLE=$(cd "$(dirname "$0")" && pwd)/$(basename "$0")

if [ "${MUT_KEEP:-0}" != 1 ] || [ ! -d "$WORK" ]; then
  rm -rf "$WORK" && mkdir -p "$WORK"
  (cd "$SRC" && tar --exclude='./build*' --exclude='./.git' --exclude='./out' -cf - .) | (cd "$WORK" && tar xf -)
fi
# The test command's build type; warnings do not fail a mutant's build.
cmake -S "$WORK" -B "$BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTV_WERROR=OFF -DTV_BUILD_TESTS=ON >/dev/null || exit 1

# plant ID apply|list: applies fault ID to the copy (printing "FILE<TAB>DESCRIPTION"), or lists the ids.
plant() {
  python3 - "$TABLE" "$WORK" "$@" <<'PY'
import sys
table, work, what = sys.argv[1], sys.argv[2], sys.argv[3]
text = open(table, encoding="utf-8").read().split("\n# ---- faults ----\n", 1)[1]
faults = {}
for block in ("\n" + text).split("\n=== ")[1:]:
    head, body = block.split("\n", 1)
    ident, rest = head.split(" ", 1)
    path, desc = rest.split(" : ", 1)
    old, new = body.rstrip("\n").split("\n---\n", 1) if "\n---\n" in body else (body.rstrip("\n").rsplit("\n---", 1)[0], "")
    faults[ident] = (path.strip(), desc.strip(), old, new)
if what == "list":
    print(" ".join(faults))
    sys.exit(0)
path, desc, old, new = faults[sys.argv[4]]
source = open(f"{work}/{path}", encoding="utf-8").read()
count = source.count(old)
print(f"{path}\t{desc}")
if count != 1:
    print(f"the text occurs {count} times in {path}", file=sys.stderr)
    sys.exit(3)
open(f"{work}/{path}", "w", encoding="utf-8").write(source.replace(old, new))
PY
}

# Runs the suite; prints the first failing test, or nothing when all pass, or TIME-LIMIT.
suite() {
  rm -f "$BUILD/Testing/Temporary/CTestCostData.txt" "$BUILD/Testing/Temporary/LastTestsFailed.log"
  setsid ctest --test-dir "$BUILD" -j"$JOBS" --stop-on-failure --timeout 300 >"$WORK/test.log" 2>&1 &
  local pid=$! start=$SECONDS
  while kill -0 "$pid" 2>/dev/null; do
    if [ $((SECONDS - start)) -ge "$1" ]; then
      kill -TERM -- -"$pid" 2>/dev/null; sleep 5; kill -KILL -- -"$pid" 2>/dev/null
      wait "$pid" 2>/dev/null
      echo TIME-LIMIT
      return
    fi
    sleep 1
  done
  wait "$pid"
  grep -m1 -E '\*\*\*|\(Failed\)|Not Run' "$WORK/test.log" | sed -E 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: ([^ ]+).*/\1/'
}

echo "mutation: building the unmutated tree in $BUILD"
cmake --build "$BUILD" -j"$JOBS" >"$WORK/build.log" 2>&1 || { echo "the unmutated tree does not build: see $WORK/build.log"; exit 1; }
failing=$(suite 3600)
[ -z "$failing" ] || { echo "the unmutated tree fails ($failing): see $WORK/test.log"; exit 1; }
echo "mutation: the unmutated suite passes; planting faults"

killed=0; total=0; stale=0; survivors=()
for id in $(plant list); do
  if [ -n "${MUT_ONLY:-}" ] && [[ " $MUT_ONLY " != *" $id "* ]]; then continue; fi
  (cd "$WORK" && tar cf "$WORK/.orig.tar" --exclude=./build --exclude=./.orig.tar CMakeLists.txt src port sim tools res tests)
  info=$(plant apply "$id" 2>"$WORK/plant.err")
  rc=$?
  file=${info%%$'\t'*}; desc=${info#*$'\t'}
  start=$SECONDS
  if [ $rc -ne 0 ]; then
    verdict="NOT-APPLIED"; by=$(cat "$WORK/plant.err"); stale=$((stale + 1))
  elif ! timeout "$LIMIT" cmake --build "$BUILD" -j"$JOBS" >"$WORK/build.log" 2>&1; then
    verdict="build-err"; by="see a rebuild of fault $id"; stale=$((stale + 1))
  else
    total=$((total + 1))
    by=$(suite $((LIMIT - (SECONDS - start))))
    case "$by" in
      "") verdict="SURVIVED"; survivors+=("$id") ;;
      TIME-LIMIT) verdict="TIME-LIMIT"; by=""; survivors+=("$id") ;;
      *) verdict="killed"; killed=$((killed + 1)) ;;
    esac
  fi
  printf '%-3s %-11s %-40s %s%s (%ss)\n' "$id" "$verdict" "$file" "$desc" "${by:+ [$by]}" $((SECONDS - start))
  # Back to the unmutated sources; touched, so that the next build compiles them again.
  (cd "$WORK" && tar xf "$WORK/.orig.tar" && touch "$file")
done

echo "killed $killed of $total"
[ ${#survivors[@]} -eq 0 ] || echo "missed: ${survivors[*]}"
[ "$stale" -eq 0 ] || { echo "$stale faults could not be planted or built: update the table"; exit 2; }
exit 0

# The faults: "=== ID FILE : DESCRIPTION", the exact text, "---", its replacement (empty: removed).
# ---- faults ----
=== 1 src/Util.cpp : country 2 falls to the default service mode
    case 0: case 2:
---
    case 0:
=== 2 src/Util.cpp : country 64 replaced by 66 in the SA-ATV table
case 34: case 64:
---
case 34: case 66:
=== 3 src/Util.cpp : satellite service mode 2 offered
if (m == 2 || (m >= 19 && m <= 21)) continue;
---
if (m >= 19 && m <= 21) continue;
=== 4 src/Util.cpp : satellite service mode 21 offered
if (m == 2 || (m >= 19 && m <= 21)) continue;
---
if (m == 2 || (m >= 19 && m <= 20)) continue;
=== 5 src/Util.cpp : the current mode without services is left out of the list
return ExistChannelByTvMode(candidate) || candidate == current;
---
return ExistChannelByTvMode(candidate);
=== 6 src/Util.cpp : picture-in-picture rule inverted
if (pip != 1 || connection) return true;
---
if (pip == 1 || connection) return true;
=== 7 src/Util.cpp : line-feed byte order swapped
bytes[0] == 0x00 && (bytes[1] == 0x0A || bytes[1] == 0x0D)
---
bytes[1] == 0x00 && (bytes[0] == 0x0A || bytes[0] == 0x0D)
=== 8 src/Util.cpp : KPI filter variant B on service mode 2
GetTvMode().serviceMode == 3;
---
GetTvMode().serviceMode == 2;
=== 9 src/Util.cpp : service mode cache not kept
s_nServiceMode = saAtv ?
---
return saAtv ?
=== 10 src/Util.cpp : PVR support cache not kept
s_bPvrSupportRead = true;
---
s_bPvrSupportRead = false;
=== 11 src/Util.cpp : single satellite connection does not cost a tuner
        tuners = 1;
---
        tuners = 2;
=== 12 src/Util.cpp : a missing minor number defaults to 0, not 65535
  const uint16_t minor = value ? value->GetUint16() : 65535;
---
  const uint16_t minor = value ? value->GetUint16() : 0;
=== 13 src/Util.cpp : an operator profile already listed is added again
if (!Contains(list, profile.tvMode) && 
---
if (
=== 14 src/Util.cpp : recordable tuners not capped by the tuners
std::min(tuners, recordable)
---
std::max(tuners, recordable)
=== 15 src/Util.cpp : list index counted from 1
elm_genlist_item_index_get(item) - 1;
---
elm_genlist_item_index_get(item);
=== 16 src/Util.cpp : KPI category of SELECT_ANTENNA
"EV017"
---
"EV016"
=== 17 src/Util.cpp : KPI description separator
desc += (i == 0 ? "{" : ";");
---
desc += (i == 0 ? "{" : ",");
=== 18 src/Util.cpp : focus zoom on only from 2
return value > 0;
---
return value > 1;
=== 19 src/Util.cpp : a failed recording query keeps its count
    count = 0;  // a failed query
---
    ;  // a failed query
=== 20 sim/services/Navigation.cpp : GetTvMode reports success as 2, not 1
                                 mode.serviceMode = current.serviceMode;
                                 return 1;
---
                                 mode.serviceMode = current.serviceMode;
                                 return 2;
=== 21 sim/state/PortCall.h : output and state written under a result fault
R result = (answered && !fault->keepOutputs) ? FaultResult<R>(*fault->result) : body(context);
    if (answered && fault->keepOutputs) result
---
R result = body(context);
    if (answered) result
=== 22 sim/state/Faults.cpp : a fault's nth call counted off by one
*fault.nth == fault.calls)
---
*fault.nth == fault.calls + 1)
=== 23 sim/control/ScenarioLoader.cpp : a refused scenario clears the TV
  Scenario scenario;
  try {
---
  ClearTv(store);
  Scenario scenario;
  try {
=== 24 sim/services/SettingsWatch.cpp : settings notification not delivered
callback(w.key);
---
(void)callback;
=== 25 sim/services/RecorderService.cpp : stop report delivered inside rec_stop_recording
if (report) ScheduleReport(config, serviceId);
---
if (report) { rec_result r{}; r.event = config.event; r.result = config.result; State().callback(r, State().data); }
=== 26 sim/services/LogService.cpp : log priority letters I and W swapped
"??VDIWEF"
---
"??VDWIEF"
=== 27 sim/ground/TimeScale.cpp : time scale divides
return seconds * TimeScale();
---
return seconds / TimeScale();
=== 28 sim/services/Trace.cpp : TVSIM_TRACE=0 does not turn tracing off
std::strcmp(value, "0") == 0) return "";
---
false) return "";
=== 29 sim/services/ChannelTexts.cpp : minor number not put into the channel number text
return Replace(format, "{minor}", std::to_string(minor));
---
return format;
=== 30 src/AntennaSelectionPopup.cpp : antenna popup times out after 20 s
const int kTimeOutSeconds = 30;
---
const int kTimeOutSeconds = 20;
=== 31 src/AntennaSelectionPopup.cpp : a row taking the focus does not restart the antenna popup's time-out
  if (pThis && pThis->m_pCloseButton) {
    pThis->t_ResetTimeOut();
---
  if (pThis && pThis->m_pCloseButton) {
=== 32 src/AntennaSelectionPopup.cpp : message box times out after 15 s
const int kMsgBoxTimeOutSeconds = 10;
---
const int kMsgBoxTimeOutSeconds = 15;
=== 33 sim/framework/MessageBoxTimedWidget.cpp : a restarted message box keeps counting from its first start
    ecore_timer_interval_set(state->timer, period);
    ecore_timer_reset(state->timer);
---
    ecore_timer_interval_set(state->timer, period);
=== 34 src/StopRecordingPopupView.cpp : stop-recording popup times out after 20 s
const int kTimeOutSeconds = 30;
---
const int kTimeOutSeconds = 20;
=== 35 src/StopRecordingPopupView.cpp : Cancel taking the focus does not restart the stop-recording popup's time-out
  pThis->t_ResetTimeOut();
---
=== 36 src/StopRecordingPopupView.cpp : the stop-recording popup's time-out ends the application instead of the list
void CStopRecordingPopupView::t_OnTimeOut() { m_BackToAntennaList(); }
---
void CStopRecordingPopupView::t_OnTimeOut() { ui_app_exit(); }
=== 37 src/Logging.h : trace lines at info priority
#define LOG_TRACE(fmt, ...) APP_LOG(LOG_ID_MAIN, DLOG_WARN,
---
#define LOG_TRACE(fmt, ...) APP_LOG(LOG_ID_MAIN, DLOG_INFO,
=== 38 src/Logging.h : error lines in the main buffer
#define LOG_ERROR(fmt, ...) APP_LOG(LOG_ID_SYSTEM, DLOG_WARN,
---
#define LOG_ERROR(fmt, ...) APP_LOG(LOG_ID_MAIN, DLOG_WARN,
=== 39 src/main.cpp : app_terminate logged in the main buffer
APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "begin app_terminate\n");
---
APP_LOG(LOG_ID_MAIN, DLOG_WARN, "begin app_terminate\n");
=== 40 sim/services/LogService.cpp : log buffers radio and system swapped
{"main", "radio", "system", "apps"}
---
{"main", "system", "radio", "apps"}
=== 41 src/AntennaSelectionPopup.cpp : KPI reports the picked and the current antenna the other way round
Util::KPILogging(Util::KPI_SELECT_ANTENNA, pSelectedName, strCurrentName.c_str(), strCount.c_str());
---
Util::KPILogging(Util::KPI_SELECT_ANTENNA, strCurrentName.c_str(), pSelectedName, strCount.c_str());
=== 42 src/Util.cpp : KPI status 0 instead of 1
  int status = 1;
---
  int status = 0;
=== 43 src/AntennaSelectionPopup.cpp : one recording with two recordable tuners asks instead of switching
(nRecordCnt == 1 && nTunerCnt > 1)
---
(nRecordCnt == 1 && nTunerCnt > 2)
=== 44 src/AntennaSelectionPopup.cpp : two recordings never show the stop-recording popup
} else if (nRecordCnt == 2) {
---
} else if (nRecordCnt == 3) {
=== 45 src/AntennaSelectionPopup.cpp : the box's Cancel ends the application instead of a fresh list
  DestroyInstance();
  GetInstance()->Show();
  return true;
---
  ui_app_exit();
  return true;
=== 46 src/AntennaSelectionPopup.cpp : agreeing leaves the first recording running
for (int i = 0; i < nCount && i < kMaxRecordings; ++i) {
---
for (int i = 1; i < nCount && i < kMaxRecordings; ++i) {
=== 47 src/AntennaSelectionPopup.cpp : a refused stop in the box switches all the same
    if (StopCurrentRecording() == 0) {
      StopReportWillNotCome(false);
---
    if (StopCurrentRecording() == 0) {
      StopReportWillNotCome(true);
=== 48 src/AntennaSelectionPopup.cpp : an empty recording list waits for a report that cannot come
    } else if (s_nStopRequests == 0) {
      StopReportWillNotCome(true);
    }
---
    }
=== 49 src/AntennaSelectionPopup.cpp : agreeing leaves the box up, so its time-out ends the wait for the report
  if (strcmp(keyName, kKeyReturn) == 0) {
    pThis->m_pMsgBox->Hide();
---
  if (strcmp(keyName, kKeyReturn) == 0) {
=== 50 src/StopRecordingPopupView.cpp : the second item stops the first recording
const uint64_t nServiceId = pThis->m_ServIdList[nItemIndex];
---
const uint64_t nServiceId = pThis->m_ServIdList[0];
=== 51 sim/services/RecorderService.cpp : a scenario's "never" report is sent all the same
!config.never && 
---
=== 52 sim/services/RecorderService.cpp : report delays a tenth as long
static_cast<double>(config.delayMs) / 1000.0
---
static_cast<double>(config.delayMs) / 10000.0
=== 53 src/Util.cpp : multi-screen read from either key alone
if (focus == 2 && state == 1) {
---
if (focus == 2 || state == 1) {
=== 54 src/Util.cpp : picture-in-picture on a single connection keeps satellite while watching it
  return mode.antennaMode != ANTENNA_MODE_SATELLITE;
---
  return true;
=== 55 src/Util.cpp : profiles listed without services of their own
 && ExistChannelByTvMode(profile.tvMode)) list.push_back
---
) list.push_back
=== 56 src/AntennaSelectionPopup.cpp : row names not escaped as markup
return elm_entry_utf8_to_markup(Util::GetSingleLineText(pName).c_str());
---
return strdup(Util::GetSingleLineText(pName).c_str());
=== 57 src/StopRecordingPopupView.cpp : name before number
text += Field(number) + kSeparator + Field(name) + kSeparator;
---
text += Field(name) + kSeparator + Field(number) + kSeparator;
=== 58 src/StopRecordingPopupView.cpp : an untitled programme shows nothing instead of "No information"
  if (pNoInfo) text += Field(pNoInfo);
---
=== 59 sim/services/CombineStrings.cpp : a cut text may end inside a UTF-8 character
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
---
=== 60 src/PopupView.cpp : focus zoom scale 1.3
const double kEnlargedScale = 1.2;
---
const double kEnlargedScale = 1.3;
=== 61 src/main.cpp : a focus zoom change is not followed by the popup
  AntennaSelectionPopup::GetInstance()->Update();
---
=== 62 src/main.cpp : an Arabic start is not mirrored
  if (Util::ReverseOSD()) elm_config_mirrored_set(EINA_TRUE);
---
=== 63 src/PopupView.cpp : keys pressed before the row has the focus are not held
  m_rowFocus.bPending = true;
  m_HoldKeys();
---
  m_rowFocus.bPending = true;
=== 64 src/PopupView.cpp : the window's focus does not retry the row focus
    pThis->m_TryRowFocus();
    return;
---
    return;
=== 65 sim/control/ScenarioLoader.cpp : a load clears the old TV outside its transaction
  Store::Transaction transaction(store);
  ClearTv(store);
---
  ClearTv(store);
  Store::Transaction transaction(store);
=== 66 src/StopRecordingPopupView.cpp : a recording's service name read before its channel number
  const std::string strNumber = Util::GetServiceNumberString(&data);
  const std::string strName = Util::GetServiceName(&data);
---
  const std::string strName = Util::GetServiceName(&data);
  const std::string strNumber = Util::GetServiceNumberString(&data);
=== 67 sim/framework/AppFramework.cpp : a window a window manager placed away from the screen's corner stays there
    if (x != 0 || y != 0) ecore_x_window_move(mapped->win, 0, 0);
---
=== 68 src/PopupView.cpp : released keys go behind the keys queued while the row took the focus
  for (const HeldKey& held : m_vecHeldKeys) {
    ecore_event_add(held.type, held.pEvent, nullptr, nullptr);
    m_vecReplayedKeys.push_back(held.pEvent);
  }
  m_vecHeldKeys.clear();
  if (m_vecReplayedKeys.empty()) m_DropHold();
---
  m_DropHold();
=== 69 CMakeLists.txt : the control room declares the framework, a room it must not use
tv_add_sim_room(control PUBLIC sim_state nlohmann_json::nlohmann_json PRIVATE sim_ground)
---
tv_add_sim_room(control PUBLIC sim_state sim_framework nlohmann_json::nlohmann_json PRIVATE sim_ground)
=== 70 CMakeLists.txt : the program compiles main.cpp with the include folders of the rooms it links
add_executable(antenna-selection $<TARGET_OBJECTS:app_main>)
target_link_libraries(antenna-selection PRIVATE app sim_framework sim_services)
---
add_executable(antenna-selection ${CMAKE_SOURCE_DIR}/src/main.cpp)
target_link_libraries(antenna-selection PRIVATE app sim_framework sim_services)
