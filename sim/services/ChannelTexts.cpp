// Display texts of the simulated TV: service names (UTF-16, big-endian in
// memory), antenna names and channel numbers, and the middleware's converter.
#include <cstring>

#include "ChannelText.h"
#include "PortCall.h"
#include "ServiceTable.h"
#include "TextCodec.h"

namespace {

using nlohmann::json;
using tvsim::PortContext;

std::string Replace(std::string text, const std::string& placeholder, const std::string& value) {
  for (size_t pos = text.find(placeholder); pos != std::string::npos; pos = text.find(placeholder, pos + value.size())) {
    text.replace(pos, placeholder.size(), value);
  }
  return text;
}

}  // namespace

bool ServiceNames::GetServiceName(uint64_t serviceId, std::u16string& name, bool flag) {
  return tvsim::RunPort<bool>("GetServiceName", {{"service_id", serviceId}, {"flag", flag}},
                              {std::to_string(serviceId)}, false, [&](PortContext& c) {
                                const auto row = tvsim::FindServiceById(c.store, serviceId);
                                if (!row) return false;
                                std::u16string converted;
                                if (!tvsim::Utf8ToUtf16BigEndian(row->name, &converted)) return false;
                                c.out["name"] = row->name;
                                name = converted;
                                return true;
                              });
}

std::string ChannelText::GetChannelTypeString(TvMode mode, ChannelKind kind) {
  json args = {{"antenna", mode.antennaMode}, {"service", mode.serviceMode}, {"kind", kind}};
  return tvsim::RunPort<std::string>("GetChannelTypeString", args, {tvsim::ModeTarget(mode)}, std::string(),
                                     [&](PortContext& c) {
                                       // A name for the exact mode wins over the antenna's general name.
                                       auto s = c.store.Prepare(
                                           "SELECT name FROM antenna_names WHERE antenna = ? AND "
                                           "(service = ? OR service IS NULL) ORDER BY service IS NULL LIMIT 1");
                                       s.Bind(1, mode.antennaMode).Bind(2, mode.serviceMode);
                                       return s.Step() ? s.Text(0) : std::string();
                                     });
}

std::string ChannelText::GetChannelNumberString(TvMode mode, int kind, uint16_t major, uint16_t minor) {
  json args = {{"antenna", mode.antennaMode}, {"service", mode.serviceMode}, {"kind", kind}, {"major", major},
               {"minor", minor}};
  return tvsim::RunPort<std::string>("GetChannelNumberString", args, {tvsim::ModeTarget(mode)}, std::string(),
                                     [&](PortContext& c) {
                                       // The mode's own format, then the antenna's, then the kind's.
                                       auto s = c.store.Prepare(
                                           "SELECT format, service IS NULL FROM mode_number_formats WHERE "
                                           "kind = ?1 AND antenna = ?2 AND (service = ?3 OR service IS NULL) "
                                           "UNION ALL SELECT format, 2 FROM number_formats WHERE kind = ?1 "
                                           "ORDER BY 2 LIMIT 1");
                                       s.Bind(1, kind).Bind(2, mode.antennaMode).Bind(3, mode.serviceMode);
                                       std::string format = s.Step() ? s.Text(0)
                                                            : minor == 0xFFFF ? "{major}"
                                                                              : "{major}-{minor}";
                                       format = Replace(format, "{major}", std::to_string(major));
                                       return Replace(format, "{minor}", std::to_string(minor));
                                     });
}

int UnicodeToUtf8Buffer(char* out, int outSize, const uint16_t* text, int length) {
  return tvsim::RunPurePort<int>("UnicodeToUtf8Buffer", {{"out_size", outSize}, {"length", length}}, {}, 0,
                                 [&](json& result) {
                               if (out == nullptr || text == nullptr || outSize <= 0 || length < 0) return 0;
                               const long written = tvsim::Utf16BigEndianToUtf8(
                                   text, static_cast<size_t>(length) * 2, out, static_cast<size_t>(outSize));
                               if (written < 0) return 0;
                               // A terminator when there is room, for callers that did not zero the buffer.
                               if (written < outSize) out[written] = '\0';
                               result["text"] = std::string(out, strnlen(out, static_cast<size_t>(written)));
                               return 1;
                             });
}
