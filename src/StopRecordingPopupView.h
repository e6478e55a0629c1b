// The popup asked when the viewer picks another antenna while two recordings
// run: stop the first, stop the second, or do not change. Owned by the
// antenna popup, which applies the change once the recorder reports the stop.
#pragma once

#include <Elementary.h>

#include <cstdint>
#include <string>

#include "PopupView.h"
#include "ServiceData.h"

class CStopRecordingPopupView : public CPopupView {
 public:
  // The recordings the popup deals with; the item after them changes nothing.
  static const int RECORD_NUMBER = 2;

  CStopRecordingPopupView();
  ~CStopRecordingPopupView() override;

 protected:
  void t_Create() override;
  void t_Destroy() override;
  void t_Show() override;
  int t_GetTimeOutSeconds() override;
  void t_OnTimeOut() override;
  Evas_Object* t_GetWindow() override;

 private:
  struct ChangeItem {
    bool hasText2 = false;
    std::string text1;
    std::string text2;
  };

  static char* m_ItemTextGet(void* data, Evas_Object* obj, const char* part);
  static Evas_Object* m_ItemContentGet(void* data, Evas_Object* obj, const char* part);
  static void m_ItemSelectCb(void* data, Evas_Object* obj, void* event_info);
  static void m_ButtonClickCB(void* data, Evas_Object* obj, void* event_info);
  static void m_ButtonFocusedCB(void* data, Evas_Object* obj, void* event_info);
  static Eina_Bool m_PopupPressCB(void* data, Evas_Object* obj, Evas_Object* src, Evas_Callback_Type type,
                                  void* event_info);

  // The texts: gathered once while the popup is built.
  void m_CreateServIdList();
  void m_PrepareItemText();
  void m_SetNotifyInfo();
  std::string m_GetButtonItemText(int index);

  // Replaces the antenna popup, and with it this view, by a fresh list.
  static void m_BackToAntennaList();

  Evas_Object* m_pLayout;
  Evas_Object* m_pBrief;  // the brief text's label when the theme could not be loaded, else null
  Evas_Object* m_pCancelButton;
  Evas_Object* m_pGenlist;
  uint64_t m_ServIdList[RECORD_NUMBER];
  ChangeItem m_ChangeItem[RECORD_NUMBER + 1];
  ServiceData m_ServiceData;
};
