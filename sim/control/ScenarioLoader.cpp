#include "ScenarioLoader.h"

#include "Errors.h"
#include "Records.h"
#include "Scenario.h"

namespace tvsim {

using nlohmann::json;

namespace {

void InsertService(Statement& insert, const ServiceRow& row) {
  insert.Bind(1, IdToSql(row.id))
      .Bind(2, row.antenna)
      .Bind(3, row.service)
      .Bind(4, row.major)
      .BindOptional(5, row.minor)
      .BindOptional(6, row.kind)
      .Bind(7, row.name)
      .Bind(8, row.navigation)
      .BindOptional(9, row.programme)
      .Bind(10, row.current ? 1 : 0);
  insert.Run();
}

void Write(Store& store, const Scenario& scenario) {
  if (scenario.hasTvMode) SetScreenMode(store, 0, scenario.tvMode);
  for (const auto& [screen, mode] : scenario.screens) SetScreenMode(store, screen, mode);
  for (const AntennaName& name : scenario.antennaNames) {
    store.Prepare("INSERT INTO antenna_names(antenna, service, name) VALUES(?,?,?)")
        .Bind(1, name.antenna)
        .BindOptional(2, name.service ? std::optional<int64_t>(*name.service) : std::nullopt)
        .Bind(3, name.name)
        .Run();
  }
  for (const auto& [kind, format] : scenario.numberFormats) {
    store.Prepare("INSERT INTO number_formats(kind, format) VALUES(?,?)").Bind(1, kind).Bind(2, format).Run();
  }
  for (const ModeNumberFormat& format : scenario.modeNumberFormats) {
    store.Prepare("INSERT INTO mode_number_formats(antenna, service, kind, format) VALUES(?,?,?,?)")
        .Bind(1, format.antenna)
        .BindOptional(2, format.service ? std::optional<int64_t>(*format.service) : std::nullopt)
        .Bind(3, format.kind)
        .Bind(4, format.format)
        .Run();
  }
  const std::string insertService =
      "INSERT INTO services(id, antenna, service, major, minor, kind, name, navigation, programme, current) "
      "VALUES(?,?,?,?,?,?,?,?,?,?)";
  for (const ServiceRow& row : scenario.services) {
    Statement insert = store.Prepare(insertService);
    InsertService(insert, row);
  }
  for (const ServiceRange& range : scenario.ranges) {
    for (int64_t i = 0; i < range.count; ++i) {
      Statement insert = store.Prepare(insertService);
      InsertService(insert, range.Row(i));
    }
  }
  // The service counts the navigators report, in one pass over the mode index.
  store.Exec(
      "INSERT INTO service_counts SELECT antenna, service, navigation, COUNT(*) FROM services "
      "GROUP BY antenna, service, navigation");
  int64_t position = 0;
  for (const json& profile : scenario.profiles) {
    store.Prepare("INSERT INTO profiles(position, data) VALUES(?,?)").Bind(1, position++).Bind(2, profile.dump()).Run();
  }
  for (const auto& [key, value] : scenario.settings) WriteSetting(store, key, value);
  for (uint64_t id : scenario.recordings) AddRecording(store, id);
  WritePlaying(store, scenario.playing);
  WriteStopReport(store, scenario.stopReport);
  for (const Fault& fault : scenario.faults) InsertFault(store, fault);
}

}  // namespace

void ClearTv(Store& store) {
  store.Exec(
      "DELETE FROM screens; DELETE FROM antenna_names; DELETE FROM number_formats; DELETE FROM mode_number_formats; DELETE FROM services; "
      "DELETE FROM service_counts; "
      "DELETE FROM profiles; DELETE FROM settings; DELETE FROM recordings; DELETE FROM config; "
      "DELETE FROM faults; DELETE FROM sqlite_sequence WHERE name IN ('recordings', 'faults')");
  ClearRecords(store);
}

void LoadScenario(Store& store, const json& document, const std::string& source) {
  Scenario scenario;
  try {
    scenario = ParseScenario(document);
  } catch (const ScenarioError& e) {
    throw e.InFile(source);
  }
  Store::Transaction transaction(store);
  ClearTv(store);
  Write(store, scenario);
  transaction.Commit();
}

void LoadScenarioFile(Store& store, const std::string& path) { LoadScenario(store, ReadScenarioFile(path), path); }

}  // namespace tvsim
