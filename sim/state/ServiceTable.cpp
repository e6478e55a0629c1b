#include "ServiceTable.h"

#include <memory>

namespace tvsim {

namespace {

const char* const kColumns =
    "SELECT id, antenna, service, major, minor, kind, name, navigation, programme, current FROM services ";

ServiceRow ReadRow(const Statement& s) {
  ServiceRow row;
  row.id = IdFromSql(s.Int(0));
  row.antenna = static_cast<int>(s.Int(1));
  row.service = static_cast<int>(s.Int(2));
  row.major = s.Int(3);
  row.minor = s.OptionalInt(4);
  row.kind = s.OptionalInt(5);
  row.name = s.Text(6);
  row.navigation = s.Int(7);
  row.programme = s.OptionalText(8);
  row.current = s.Int(9) != 0;
  return row;
}

int64_t NavigationBit(int navigationMode) { return int64_t{1} << navigationMode; }

}  // namespace

std::optional<ServiceRow> FindServiceById(Store& store, uint64_t id) {
  auto s = store.Prepare(std::string(kColumns) + "WHERE id = ?");
  s.Bind(1, IdToSql(id));
  if (!s.Step()) return std::nullopt;
  return ReadRow(s);
}

std::optional<ServiceRow> CurrentService(Store& store, const TvMode& mode) {
  auto s = store.Prepare(std::string(kColumns) +
                         "WHERE antenna = ? AND service = ? ORDER BY current DESC, major, minor LIMIT 1");
  s.Bind(1, mode.antennaMode).Bind(2, mode.serviceMode);
  if (!s.Step()) return std::nullopt;
  return ReadRow(s);
}

std::optional<std::vector<ServiceRow>> FindServices(Store& store, const std::vector<std::pair<int, uint64_t>>& where,
                                                    int navigationMode, int limit) {
  std::string sql = std::string(kColumns) + "WHERE 1";
  for (const auto& condition : where) {
    switch (condition.first) {
      case ATTR_SERVICE_ID:
        sql += " AND id = ?";
        break;
      case ATTR_MAJOR_NUMBER:
        sql += " AND major = ?";
        break;
      case ATTR_MINOR_NUMBER:
        sql += " AND minor = ?";
        break;
      case ATTR_NUMBER_KIND:
        sql += " AND kind = ?";
        break;
      default:
        return std::nullopt;
    }
  }
  if (navigationMode >= 0) sql += " AND (navigation & ?) != 0";
  sql += " ORDER BY antenna, service, major, minor, id LIMIT ?";
  auto s = store.Prepare(sql);
  int index = 1;
  for (const auto& condition : where) {
    // Numbers are compared as the record would deliver them; the id as all 64 bits.
    const uint64_t value = condition.second;
    s.Bind(index++, condition.first == ATTR_SERVICE_ID ? IdToSql(value)
                    : condition.first == ATTR_NUMBER_KIND ? static_cast<int64_t>(static_cast<int32_t>(value))
                                                          : static_cast<int64_t>(value));
  }
  if (navigationMode >= 0) s.Bind(index++, NavigationBit(navigationMode));
  s.Bind(index, limit);
  std::vector<ServiceRow> rows;
  while (s.Step()) rows.push_back(ReadRow(s));
  return rows;
}

int64_t CountServices(Store& store, const TvMode& mode, int navigationMode) {
  // From the per-mode totals the loader keeps: a scan of the mode's services
  // would grow with them.
  auto s = navigationMode >= 0
               ? store.Prepare("SELECT COALESCE(SUM(count), 0) FROM service_counts "
                               "WHERE antenna = ? AND service = ? AND (navigation & ?) != 0")
               : store.Prepare("SELECT COALESCE(SUM(count), 0) FROM service_counts WHERE antenna = ? AND service = ?");
  s.Bind(1, mode.antennaMode).Bind(2, mode.serviceMode);
  if (navigationMode >= 0) s.Bind(3, NavigationBit(navigationMode));
  s.Step();
  return s.Int(0);
}

void FillServiceData(const ServiceRow& row, const std::vector<int>& fetch, const std::optional<Fault>& fault,
                     ServiceData& out) {
  if (fault && fault->noTable) {
    out.SetAttributeTable(nullptr);
    return;
  }
  auto table = std::make_unique<ServiceAttributeTable>();
  auto wanted = [&](int id) {
    if (fetch.empty()) return true;
    for (int f : fetch) {
      if (f == id) return true;
    }
    return false;
  };
  if (wanted(ATTR_SERVICE_ID)) table->SetAttribute(ATTR_SERVICE_ID, row.id);
  if (wanted(ATTR_MAJOR_NUMBER)) {
    table->SetAttribute(ATTR_MAJOR_NUMBER, row.major < 0 ? 0xFFFFFFFFull : static_cast<uint64_t>(row.major));
  }
  if (row.minor && wanted(ATTR_MINOR_NUMBER)) table->SetAttribute(ATTR_MINOR_NUMBER, static_cast<uint64_t>(*row.minor));
  if (row.kind && wanted(ATTR_NUMBER_KIND)) {
    table->SetAttribute(ATTR_NUMBER_KIND, static_cast<uint64_t>(static_cast<uint32_t>(static_cast<int32_t>(*row.kind))));
  }
  if (fault && fault->noAttribute) table->RemoveAttribute(static_cast<int>(*fault->noAttribute));
  out.SetAttributeTable(std::move(table));
}

TvMode ScreenMode(Store& store, int screen) {
  auto s = store.Prepare(
      "SELECT antenna, service FROM screens WHERE screen = ? OR screen = 0 ORDER BY screen = ? DESC LIMIT 1");
  s.Bind(1, screen).Bind(2, screen);
  if (!s.Step()) return TvMode();
  return TvMode(static_cast<AntennaMode>(s.Int(0)), static_cast<ServiceMode>(s.Int(1)));
}

void SetScreenMode(Store& store, int screen, const TvMode& mode) {
  store.Prepare("INSERT OR REPLACE INTO screens(screen, antenna, service) VALUES(?,?,?)")
      .Bind(1, screen)
      .Bind(2, mode.antennaMode)
      .Bind(3, mode.serviceMode)
      .Run();
}

std::string ModeTarget(const TvMode& mode) {
  return std::to_string(mode.antennaMode) + "/" + std::to_string(mode.serviceMode);
}

}  // namespace tvsim
