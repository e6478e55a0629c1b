// The present programme of each service, from the services table.
#include "PortCall.h"
#include "ProgramGuide.h"
#include "ServiceTable.h"

namespace {

using tvsim::PortContext;

class DatabaseProgramGuide : public ProgramGuide {
 public:
  int GetPresentProgram(uint64_t serviceId, ProgramInfo& out) override {
    return tvsim::RunPort<int>("GetPresentProgram", {{"service_id", serviceId}}, {std::to_string(serviceId)}, 0,
                               [&](PortContext& c) {
                                 const auto row = tvsim::FindServiceById(c.store, serviceId);
                                 if (!row || !row->programme) return 0;
                                 c.out["title"] = *row->programme;
                                 out.SetTitle(*row->programme);
                                 return 1;
                               });
  }
};

}  // namespace

ProgramGuide* ProgramGuide::GetInstance() {
  static auto* guide = new DatabaseProgramGuide();  // lives as long as the process, as the middleware's does
  return guide;
}
