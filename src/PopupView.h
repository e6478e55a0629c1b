// The base of the application's popups: one toolkit popup in the application
// window, shown and hidden with the view and scaled up for focus zoom.
#pragma once

#include <Elementary.h>

#include "View.h"

class CPopupView : public CView {
 public:
  CPopupView();
  ~CPopupView() override;

  // Re-applies the focus-zoom scale to the popup.
  virtual void Update();

 protected:
  // Called right before a row gets the focus through t_FocusRowSoon.
  typedef void (*RowFocusCb)(void* data, Elm_Object_Item* row);

  void t_Create() override;
  void t_Destroy() override;
  void t_Show() override;
  void t_Hide() override;
  // The window the popup goes into.
  virtual Evas_Object* t_GetWindow();
  // The key name of a key event delivered to elm_object_event_callback_add's
  // callback; null for other events (the wheel) and for a missing event.
  static const char* t_KeyName(Evas_Callback_Type type, void* event);

  // Puts the input focus on a row of a list in this popup as soon as the
  // toolkit takes it: the window focused and the row on screen. (Focusing a
  // row earlier is refused or lost, and the viewer's first key would land on
  // the list's first row.) Without a row the list gets the focus, or, when
  // the list is empty, `pFallback`.
  void t_FocusRowSoon(Evas_Object* pGenlist, Elm_Object_Item* pRow, Evas_Object* pFallback, RowFocusCb pfnBefore,
                      void* pData);
  void t_StopRowFocus();

  Evas_Object* m_pWindow;
  Evas_Object* m_pPopup;

 private:
  struct RowFocus {
    Evas_Object* pGenlist = nullptr;
    Elm_Object_Item* pRow = nullptr;
    Evas_Object* pFallback = nullptr;
    RowFocusCb pfnBefore = nullptr;
    void* pData = nullptr;
    bool bPending = false;
    bool bWindowHooked = false;
    bool bListHooked = false;
    bool bRenderHooked = false;
    bool bSeenOnScreen = false;
    Ecore_Job* pJob = nullptr;
  };

  void m_QueueRowFocus();
  bool m_IsOnScreen(Elm_Object_Item* pRow) const;
  void m_UnhookRender();

  static void m_PopupDelCB(void* data, Evas* evas, Evas_Object* obj, void* event);
  static void m_RowFocusJobCB(void* data);
  static void m_WindowFocusInCB(void* data, Evas_Object* obj, void* event);
  static void m_RowRealizedCB(void* data, Evas_Object* obj, void* event);
  static void m_RenderPostCB(void* data, Evas* evas, void* event);

  RowFocus m_rowFocus;
};
