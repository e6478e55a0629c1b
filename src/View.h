// The base of every on-screen view: the life cycle owners drive, and the
// inactivity time-out that ends a view left alone.
#pragma once

#include <Ecore.h>

class CView {
 public:
  CView();
  virtual ~CView();

  virtual int GetShowProperty();

  // The only way owners drive a view. Call Destroy() before deleting it: the
  // destructor releases nothing.
  void Create();
  void Destroy();
  void Show();
  void Hide();
  void OnPause();
  void OnResume();

 protected:
  virtual void t_Create();
  virtual void t_Destroy();
  virtual void t_Show();
  virtual void t_Hide();
  virtual void t_Pause();
  virtual void t_Resume();
  // Seconds of inactivity before t_OnTimeOut; 0 or less means no time-out.
  virtual int t_GetTimeOutSeconds();
  virtual void t_OnTimeOut();

  // Starts the full period again; call it on user activity.
  void t_ResetTimeOut();
  static Eina_Bool m_TimeOutCB(void* data);

 private:
  CView(const CView&) = delete;
  CView& operator=(const CView&) = delete;

  Ecore_Timer* m_pTimer;
};
