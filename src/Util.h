// TV state utilities shared by both popups: tuning mode, antenna list,
// recording capacity, service texts, KPI events, and the application window.
#pragma once

#include <Elementary.h>

#include <cstdint>
#include <string>
#include <vector>

#include "ServiceData.h"
#include "TvMode.h"

namespace Util {

// Tuning mode and antenna queries.
TvMode GetTvMode();
void SetTvMode(TvMode mode);
void ChangeAntenna(TvMode mode);
bool ExistChannelByTvMode(TvMode mode);
ServiceMode GetServiceMode();
bool GetCountry(int& country);
int GetRegionKind();
std::string GetAntennaNameByMode(TvMode& mode);
std::string GetAntennaName(ServiceData& service, TvMode& mode);

// Antenna list.
void GetAntennaList(std::vector<TvMode>& list);
bool m_IsSupportSatelliteAntenna();

// Recording and tuner capacity.
bool IsPvrSupport();
int PvrRecording(bool unused);
int GetRecordChannelCount();
int NumOfRecordableTuner();
int m_TunerNumWithSingleSatelite();
int StopPlayingMultimedia();

// Service data and text.
bool GetServiceData(uint64_t serviceId, ServiceData* out);
bool GetCurrentService(TvMode mode, ServiceData& out);
std::string GetServiceNumberString(ServiceData* service);
std::string GetServiceNumberString(TvMode mode, ServiceData* service);
std::string GetServiceName(ServiceData* service);
std::string Twstring2String(std::u16string text);
void TransStrExceptLF(unsigned short* text);
// A text from the TV as one line: each line break (LF, CR, CR LF, VT, FF, NEL,
// U+2028, U+2029) and tab becomes a space, which a label would otherwise show
// as a tag or a break.
std::string GetSingleLineText(const std::string& text);
bool Unicode2Utf8(char* out, unsigned int outBytes, char* in, unsigned int inBytes);
int GetGenlistItemIndex(Elm_Object_Item* item);

// KPI event logging.
enum KPI_EVENT {
  KPI_LAUNCHEPG = 0,
  KPI_NAVIGATION = 1,
  KPI_NUMBER_INPUT = 2,
  KPI_PAGE_VIEW_POPUP = 3,
  KPI_SELECT_BUTTON = 4,
  KPI_SELECTCURRENT = 5,
  KPI_SELECTCH = 6,
  KPI_TERMINATEEPG = 7,
  KPI_SELECT_ANTENNA = 8,
  KPI_SL_FILTER = 9,
  KPI_SL_OSD_FILTER = 10,
};
int KPILogging(KPI_EVENT event, const char* a1, const char* a2, const char* a3);

// The application window and display settings.
Evas_Object* GetWindow();
bool IsEnlarge();
bool ReverseOSD();

// Test hook only: forgets the cached service mode and recording-support flags,
// so that the next call reads the platform again as at process start. Nothing
// else is reset (the window stays). Not for use by the application.
void ResetCachesForTesting();

}  // namespace Util
