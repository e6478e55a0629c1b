// The remote control on a desktop keyboard: Escape is the Back key ("XF86Back")
// and both Enter keys are the select key ("Return"), as the application expects.
#pragma once

#include <Ecore.h>

namespace tvsim {

// The remote-control key name for a desktop key name; others are returned unchanged.
const char* RemoteKeyName(const char* keyname);

// While it lives, key-down and key-up events carry the remote-control names before
// any handler (and so Evas) sees them.
class RemoteKeyFilter {
 public:
  RemoteKeyFilter();
  ~RemoteKeyFilter();
  RemoteKeyFilter(const RemoteKeyFilter&) = delete;
  RemoteKeyFilter& operator=(const RemoteKeyFilter&) = delete;

 private:
  Ecore_Event_Filter* m_filter = nullptr;
};

}  // namespace tvsim
