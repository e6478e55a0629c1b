// The platform's confirmation box widget.
#pragma once

#include <Evas.h>

class TimedWidget {
 public:
  enum BackgroundColor { BG_COLOR_DEFAULT = 0, BG_COLOR_WHITE = 1 };
  typedef unsigned char (*TimeOutCallback)(void* data);
  typedef void (*VisibleChangeCallback)(void* data);

  TimedWidget();
  virtual ~TimedWidget();

  virtual void Destroy();
  virtual void Show();
  virtual void Hide();

  void SetTimeOutSecs(int seconds);
  void SetTimeOutCallback(TimeOutCallback callback, void* data);
  void SetVisibleChangeCallback(VisibleChangeCallback callback, void* data);
  bool IsVisible() const { return m_bVisible; }

 protected:
  void t_SetVisible(bool visible);
  void t_StartTimer();
  void t_StopTimer();

  int m_nTimeOutSecs = 0;
  TimeOutCallback m_pTimeOutCb = nullptr;
  void* m_pTimeOutData = nullptr;
  VisibleChangeCallback m_pVisibleCb = nullptr;
  void* m_pVisibleData = nullptr;
  bool m_bVisible = false;
  void* m_pTimer = nullptr;
};

class MessageBox : public TimedWidget {
 public:
  // key is the name of the key that pressed the button ("Return", "XF86Back").
  typedef bool (*ButtonCallback)(void* data, Evas_Object* object, const char* key);

  explicit MessageBox(bool modal);
  ~MessageBox() override;

  bool Create(Evas_Object* parent, int buttonCount, int backgroundColor, int icon, bool richText);
  void SetTitle(const char* text);
  void SetMessage(const char* text);
  void SetButtonText(int button, const char* text, const char* style);
  void SetButtonCallback(int button, ButtonCallback callback, void* data);
  void SetDefaultFocus(int button);

  void Destroy() override;
  void Show() override;
  void Hide() override;

 private:
  struct Impl;
  Impl* m_pImpl = nullptr;
};
