#include "Keys.h"

#include <Ecore_Input.h>

#include <cstring>

namespace tvsim {
namespace {

struct KeyAlias {
  const char* desktop;
  const char* remote;
};
const KeyAlias kAliases[] = {
    {"Escape", "XF86Back"},
    {"KP_Enter", "Return"},
};

Eina_Bool RewriteKey(void*, void*, int type, void* event) {
  if ((type != ECORE_EVENT_KEY_DOWN && type != ECORE_EVENT_KEY_UP) || event == nullptr) return EINA_TRUE;
  auto* key = static_cast<Ecore_Event_Key*>(event);
  // The names point into the event's own allocation, which is freed as a whole,
  // so pointing them at static strings instead is safe.
  key->keyname = RemoteKeyName(key->keyname);
  key->key = RemoteKeyName(key->key);
  return EINA_TRUE;
}

}  // namespace

const char* RemoteKeyName(const char* keyname) {
  if (keyname == nullptr) return nullptr;
  for (const KeyAlias& alias : kAliases) {
    if (std::strcmp(keyname, alias.desktop) == 0) return alias.remote;
  }
  return keyname;
}

RemoteKeyFilter::RemoteKeyFilter() {
  ecore_event_init();
  m_filter = ecore_event_filter_add(nullptr, RewriteKey, nullptr, nullptr);
}

RemoteKeyFilter::~RemoteKeyFilter() {
  if (m_filter != nullptr) ecore_event_filter_del(m_filter);
  ecore_event_shutdown();
}

}  // namespace tvsim
