// Navigators, the service store and navigation criteria of the simulated TV.
// The hub owns one navigator per screen and one store for the life of the process.
#include <map>
#include <memory>

#include "PortCall.h"
#include "ServiceHub.h"
#include "ServiceTable.h"

namespace {

using nlohmann::json;
using tvsim::PortContext;

constexpr int kMaxScreen = 15;

json ModeJson(const TvMode& mode) { return {{"antenna", mode.antennaMode}, {"service", mode.serviceMode}}; }

json QueryJson(const ServiceQuery& query) {
  json where = json::array();
  for (const auto& condition : query.Conditions()) where.push_back({condition.first, condition.second});
  return {{"fetch", query.FetchedAttributes()}, {"where", where}, {"navigation", query.m_nNavigationMode}};
}

class ScreenNavigator : public Navigator {
 public:
  explicit ScreenNavigator(int screen) : m_nScreen(screen) {}

  int GetTvMode(TvMode& mode) override {
    return tvsim::RunPort<int>("GetTvMode", {{"screen", m_nScreen}}, {std::to_string(m_nScreen)}, -1,
                               [&](PortContext& c) {
                                 const TvMode current = tvsim::ScreenMode(c.store, m_nScreen);
                                 c.out = ModeJson(current);
                                 mode.antennaMode = current.antennaMode;
                                 mode.serviceMode = current.serviceMode;
                                 return 1;
                               });
  }

  int SetTvMode(TvMode mode, const std::string& option) override {
    json args = ModeJson(mode);
    args["screen"] = m_nScreen;
    args["option"] = option;
    return tvsim::RunPort<int>("SetTvMode", args, {std::to_string(m_nScreen), tvsim::ModeTarget(mode)}, -1,
                               [&](PortContext& c) {
                                 if (mode.antennaMode < ANTENNA_MODE_0 || mode.serviceMode < 0) return -1;
                                 tvsim::Store::Transaction transaction(c.store);
                                 tvsim::SetScreenMode(c.store, m_nScreen, mode);
                                 tvsim::RecordTuning(c.store, m_nScreen, mode);
                                 transaction.Commit();
                                 return 1;
                               });
  }

  int GetCurrentService(TvMode mode, const ServiceQuery& fetch, ServiceData& out) override {
    json args = ModeJson(mode);
    args["screen"] = m_nScreen;
    args["query"] = QueryJson(fetch);
    return tvsim::RunPort<int>("GetCurrentService", args, {tvsim::ModeTarget(mode)}, -1, [&](PortContext& c) {
      const auto row = tvsim::CurrentService(c.store, mode);
      if (!row) return 0;
      c.out["service_id"] = row->id;
      tvsim::FillServiceData(*row, fetch.FetchedAttributes(), c.fault, out);
      return 1;
    });
  }

  int GetServiceCount(const ServiceQuery& criteria, int& count, TvMode mode, int reserved) override {
    json args = ModeJson(mode);
    args["screen"] = m_nScreen;
    args["navigation"] = criteria.m_nNavigationMode;
    args["reserved"] = reserved;
    return tvsim::RunPort<int>("GetServiceCount", args, {tvsim::ModeTarget(mode)}, -1, [&](PortContext& c) {
      const int navigation = criteria.m_nNavigationMode;
      if (navigation > tvsim::kMaxNavigationMode) return -1;
      const int64_t counted = tvsim::CountServices(c.store, mode, navigation);
      c.out["count"] = counted;
      count = static_cast<int>(counted);
      return 1;
    });
  }

 private:
  int m_nScreen;
};

class DatabaseServiceStore : public ServiceStore {
 public:
  int FindService(const ServiceQuery& criteria, ServiceData* out, int count) override {
    std::vector<std::string> targets;
    for (const auto& condition : criteria.Conditions()) {
      if (condition.first == ATTR_SERVICE_ID) targets.push_back(std::to_string(condition.second));
    }
    json args = {{"query", QueryJson(criteria)}, {"count", count}};
    return tvsim::RunPort<int>("FindService", args, targets, -1, [&](PortContext& c) {
      if (out == nullptr || count < 1) return -1;
      const auto rows =
          tvsim::FindServices(c.store, criteria.Conditions(), criteria.m_nNavigationMode, count);
      if (!rows) return -1;
      json ids = json::array();
      for (size_t i = 0; i < rows->size(); ++i) {
        tvsim::FillServiceData((*rows)[i], criteria.FetchedAttributes(), c.fault, out[i]);
        ids.push_back((*rows)[i].id);
      }
      c.out["service_ids"] = ids;
      return static_cast<int>(rows->size());
    });
  }
};

struct Hub {
  std::map<int, std::unique_ptr<ScreenNavigator>> navigators;
  DatabaseServiceStore store;
};

Hub& GetHub() {
  static Hub* hub = new Hub();  // handed-out pointers stay valid for the whole process
  return *hub;
}

}  // namespace

int ServiceHub::OpenNavigator(ProfileKind profile, int index, Navigator** navigator) {
  return tvsim::RunPort<int>(
      "OpenNavigator", {{"profile", profile}, {"index", index}},
      {std::to_string(index), profile == PROFILE_MAIN ? std::string("main") : "screen:" + std::to_string(index)}, -1,
      [&](PortContext& c) {
        if (navigator == nullptr) return -1;
        int screen = -1;
        if (profile == PROFILE_MAIN && index == 0) screen = 0;
        if (profile == PROFILE_SCREEN && index >= 0 && index <= kMaxScreen) screen = index;
        if (screen < 0) return -1;
        if (c.fault && c.fault->null) {
          *navigator = nullptr;
          return 0;
        }
        auto& slot = GetHub().navigators[screen];
        if (!slot) slot = std::make_unique<ScreenNavigator>(screen);
        *navigator = slot.get();
        c.out["screen"] = screen;
        return 0;
      });
}

int ServiceHub::OpenServiceStore(ServiceStore** store) {
  return tvsim::RunPort<int>("OpenServiceStore", json::object(), {}, -1, [&](PortContext& c) {
    if (store == nullptr) return -1;
    *store = (c.fault && c.fault->null) ? nullptr : &GetHub().store;
    return 0;
  });
}

int NavigationQueries::GetNavigationCriteria(NavigationMode mode, ServiceQuery& query, NavigationSortMode sort) {
  return tvsim::RunPort<int>("GetNavigationCriteria", {{"mode", mode}, {"sort", sort}}, {}, -1, [&](PortContext&) {
    if (mode < 0 || mode > tvsim::kMaxNavigationMode) return -1;
    query.m_nNavigationMode = mode;
    query.m_nSortMode = sort;
    query.Fetch(ATTR_SERVICE_ID);
    return 0;
  });
}
