// Driving the application's widgets in process on the buffer engine: pump the
// main loop, give the window the input focus, feed remote-control keys, find
// widgets and read their texts.
#pragma once

#include <Elementary.h>

#include <functional>
#include <string>
#include <vector>

namespace tvtest {

// Runs the main loop until pred() holds or timeoutSeconds have passed; returns pred().
bool PumpUntil(const std::function<bool()>& pred, double timeoutSeconds = 5.0);

// Runs the main loop until the window's canvas has been rendered once more.
bool RenderedOnce(Evas_Object* window, double timeoutSeconds = 5.0);

// Gives the window the TV screen's size (1920x1080), as the application
// framework does for every window it sees; without it nothing is laid out.
void ShowOnScreen(Evas_Object* window);

// On the buffer engine a window gets no input focus by itself, and without it
// neither row focus nor fed keys work: this gives it the focus, as a window
// manager would.
void FocusWindow(Evas_Object* window);

// Feeds one press and release of a remote-control key ("Down", "Return",
// "XF86Back") to the window's canvas, then lets the loop render.
void PressKey(Evas_Object* window, const char* key);
// The same without running the loop, for code already running inside it.
void FeedKey(Evas_Object* window, const char* key);
// Queues one press and release on the main loop, as the display's key events
// come: they reach the canvas only when the loop handles them, behind what is
// queued already.
void QueueKey(Evas_Object* window, const char* key);

// Every top-level widget of the window's canvas whose type is `type`
// ("Elm_Popup", ...), visible or not. Widgets inside them are reached through
// their parts (elm_object_part_content_get).
std::vector<Evas_Object*> FindWidgets(Evas_Object* window, const char* type);
// The first of them, or null.
Evas_Object* FindWidget(Evas_Object* window, const char* type);

// The plain text of `part` of a row, as the row's item class gives it (rows
// scrolled out of view included); "" for none.
std::string RowText(Elm_Object_Item* item, const char* part = "elm.text");
// The same for the list's focused row; "" when no row has the focus.
std::string FocusedRowText(Evas_Object* genlist, const char* part = "elm.text");
// The texts of every row, in order.
std::vector<std::string> RowTexts(Evas_Object* genlist, const char* part = "elm.text");

class TempTv;
// After a failed UI test: adds the application's log lines to the failure.
void ReportFailure(const TempTv& tv);

}  // namespace tvtest
