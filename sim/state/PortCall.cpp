#include "PortCall.h"

#include <cstdio>

namespace tvsim {

void ReportPortError(const char* op, const char* what) { std::fprintf(stderr, "tvsim: %s: %s\n", op, what); }

}  // namespace tvsim
