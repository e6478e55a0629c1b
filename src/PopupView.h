// The base of the application's popups: one toolkit popup in the application
// window, shown and hidden with the view and scaled up for focus zoom.
#pragma once

#include <Ecore_Input.h>
#include <Elementary.h>

#include <vector>

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
  // toolkit takes it: at once when the window has the focus and the row is in
  // the list's focus order, else when the window gets the focus or the row gets
  // there. (Focusing a row earlier is refused or lost.) Keys (held from
  // here on) are replayed in order once the row has the focus, so that the
  // viewer's first Down moves from this row. Without a row the list gets the focus, or, when the list is
  // empty, `pFallback`. Later, a window that gets the focus back gives the
  // list's row focus back too.
  void t_FocusRowSoon(Evas_Object* pGenlist, Elm_Object_Item* pRow, Evas_Object* pFallback, RowFocusCb pfnBefore,
                      void* pData);
  void t_StopRowFocus();

  Evas_Object* m_pWindow;
  Evas_Object* m_pPopup;

 private:
  struct RowFocus {
    Evas_Object* pGenlist = nullptr;
    Elm_Object_Item* pRow = nullptr;
    Elm_Object_Item* pLastRow = nullptr;  // the row that had the focus last
    Evas_Object* pFallback = nullptr;
    RowFocusCb pfnBefore = nullptr;
    void* pData = nullptr;
    bool bPending = false;
    bool bWindowHooked = false;
    bool bListHooked = false;
    bool bRenderHooked = false;
    bool bFocusAsked = false;
    Ecore_Job* pJob = nullptr;
    Ecore_Event_Handler* pKeyDownHold = nullptr;
    Ecore_Event_Handler* pKeyUpHold = nullptr;
  };
  // A key event held back while the row focus is pending: its Ecore type and a
  // copy of the event.
  struct HeldKey {
    int type;
    Ecore_Event_Key* pEvent;
  };

  void m_TryRowFocus();
  bool m_IsRealized(Elm_Object_Item* pRow) const;
  void m_QueueRowFocus();
  void m_HoldKeys();
  void m_ReleaseKeys();
  void m_DropHold();
  void m_HookRender();
  void m_UnhookRender();

  static void m_PopupDelCB(void* data, Evas* evas, Evas_Object* obj, void* event);
  static void m_RowFocusJobCB(void* data);
  static void m_WindowFocusInCB(void* data, Evas_Object* obj, void* event);
  static void m_RowRealizedCB(void* data, Evas_Object* obj, void* event);
  static void m_RowFocusedCB(void* data, Evas_Object* obj, void* event);
  static void m_RenderPostCB(void* data, Evas* evas, void* event);
  static Eina_Bool m_KeyHoldCB(void* data, int type, void* event);
  static Ecore_Event_Key* m_CopyKey(const Ecore_Event_Key* pKey);

  RowFocus m_rowFocus;
  std::vector<HeldKey> m_vecHeldKeys;  // oldest first
  // Released keys back in the main loop's queue, not yet handled: until they
  // are, a key queued before them goes behind them.
  std::vector<Ecore_Event_Key*> m_vecReplayedKeys;
};
