#include "Report.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace bench {

double Median(std::vector<double> values) {
  if (values.empty()) return NAN;
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

double Percentile(std::vector<double> values, double fraction) {
  if (values.empty()) return NAN;
  std::sort(values.begin(), values.end());
  const size_t rank = static_cast<size_t>(std::ceil(fraction * static_cast<double>(values.size())));
  return values[std::min(values.size(), std::max<size_t>(rank, 1)) - 1];
}

std::string Fixed(double value, int decimals) {
  if (std::isnan(value)) return "n/a";
  std::ostringstream out;
  out.setf(std::ios::fixed);
  out.precision(decimals);
  out << value;
  return out.str();
}

std::string Table(const std::vector<Line>& lines) {
  std::ostringstream out;
  out << "| measure | application | reference | ratio | goal | met |\n";
  out << "|---|---:|---:|---:|---|---|\n";
  for (const Line& line : lines) {
    out << "| " << line.measure << " | " << line.app << " | " << (line.floor.empty() ? "-" : line.floor) << " | "
        << (line.ratio.empty() ? "-" : line.ratio) << " | " << line.goal << " | " << (line.met ? "yes" : "**no**")
        << " |\n";
  }
  return out.str();
}

Machine ThisMachine() {
  Machine machine;
  char date[32];
  const std::time_t now = std::time(nullptr);
  std::strftime(date, sizeof date, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
  machine.date = date;
  utsname name{};
  if (uname(&name) == 0) machine.arch = name.machine;
  std::ifstream cpuinfo("/proc/cpuinfo");
  for (std::string line; std::getline(cpuinfo, line);) {
    if (line.rfind("model name", 0) == 0) {
      machine.cpu = line.substr(line.find(':') + 2);
      break;
    }
  }
  machine.cores = static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
  return machine;
}

void WritePage(const std::string& path, const Machine& machine, const std::string& table,
               const std::vector<std::string>& setup, const std::vector<std::string>& notes) {
  std::ofstream out(path);
  if (!out) throw std::runtime_error("cannot write " + path);
  out << "# Performance\n\n"
      << "Written by `bash scripts/bench.sh` (the runner is `bench/Runner.cpp`); do not edit by hand.\n\n"
      << "Measured " << machine.date << " on " << machine.arch << ", " << machine.cpu << ", " << machine.cores
      << " cores.\n\n";
  out << "## How\n\n";
  for (const std::string& line : setup) out << "- " << line << "\n";
  out << "\n## Figures\n\n" << table << "\n";
  out << "## Notes\n\n";
  for (const std::string& line : notes) out << "- " << line << "\n";
}

}  // namespace bench
