// The application's main view: a popup listing the TV's selectable antennas,
// the current one focused; picking another switches the TV and ends the
// application. One object per process.
#pragma once

#include <Elementary.h>

#include <vector>

#include "PopupView.h"
#include "Recorder.h"
#include "TvMode.h"

class MessageBox;
class CStopRecordingPopupView;

class AntennaSelectionPopup : public CPopupView {
 public:
  // Creates the popup (not shown) on first use.
  static AntennaSelectionPopup* GetInstance();
  static void DestroyInstance();
  // The mode waiting to be applied; the default mode when there is no popup.
  static TvMode GetTvMode();

  void Update() override;

  // True while a stopped recording has to be reported before the switch.
  static bool s_bWaitStopRecToChangeAntenna;
  // Sets that flag before a stop request: the switch waits for the recorder's
  // report, however long it takes.
  static void WaitForStopReport();
  // No report will come: the stop request was refused (leave without switching,
  // the recording still runs), or nothing was left to stop (switch, nothing
  // is cut off). Ends the wait and the application at once.
  static void StopReportWillNotCome(bool bNothingLeftToStop);

 protected:
  void t_Create() override;
  void t_Destroy() override;
  void t_Show() override;
  int t_GetTimeOutSeconds() override;
  void t_OnTimeOut() override;
  // Builds and shows the box asking whether the recording may be stopped.
  void t_CreateMsgWidget();

 private:
  AntennaSelectionPopup();
  ~AntennaSelectionPopup() override;

  void m_AddAntennaListItem();
  void m_ForgetWidgets();

  static Eina_Bool m_PopupPressCB(void* data, Evas_Object* obj, Evas_Object* src, Evas_Callback_Type type,
                                  void* event);
  static void m_ItemFocusedCB(void* data, Evas_Object* obj, void* event);
  static void m_ItemRealizedCB(void* data, Evas_Object* obj, void* event);
  static char* m_ItemTextGet(void* data, Evas_Object* obj, const char* part);
  static void m_ItemDelCB(void* data, Evas_Object* obj);
  static void m_AntennaItemSelectCb(void* data, Evas_Object* obj, void* event);
  static char* m_ItemVoiceTextCB(void* data, Evas_Object* obj);
  static void m_ButtonClickCB(void* data, Evas_Object* obj, void* event);
  static void m_ButtonFocusedCB(void* data, Evas_Object* obj, void* event);
  static void m_BeforeRowFocusCB(void* data, Elm_Object_Item* row);
  static void m_ContentDelCB(void* data, Evas* evas, Evas_Object* obj, void* event);
  static void sm_CbSvcPvr(rec_result result, void* data);

  // The confirmation box's callbacks (data: the popup).
  static bool m_ChangeAntennaCB(void* data, Evas_Object* obj, const char* keyName);
  static bool m_ChangeAntennaCancelCB(void* data, Evas_Object* obj, const char* keyName);
  static Eina_Bool m_ChangeAntennaTimeOut(void* data);
  static void m_OnMsgBoxVisibilityChange(void* data);

  Evas_Object* m_pCloseButton;
  Evas_Object* m_pGenlist;
  Evas_Object* m_pLayout;
  Elm_Object_Item* m_pFocusItem;
  bool m_bIgnoreSelect;
  bool m_bFirstVoiceText;
  std::vector<TvMode> m_vecAntennaList;
  MessageBox* m_pMsgBox;
  CStopRecordingPopupView* m_pStopRecPopup;
  TvMode m_tvMode;
  // The current row is selected when it first gets the focus (see t_Show).
  bool m_bSelectCurrentOnShow;

  static AntennaSelectionPopup* s_instance;
};
