// Figures to table: medians, percentiles, goals, and the markdown page.
#pragma once

#include <string>
#include <vector>

namespace bench {

double Median(std::vector<double> values);
double Percentile(std::vector<double> values, double fraction);  // nearest rank

struct Line {
  std::string measure;
  std::string app;    // the figure, formatted with its unit
  std::string floor;  // the reference it is compared with ("" when none)
  std::string ratio;  // "" when none
  std::string goal;
  bool met = false;
};

std::string Fixed(double value, int decimals);
std::string Table(const std::vector<Line>& lines);

struct Machine {
  std::string date;  // UTC
  std::string arch;
  std::string cpu;
  int cores = 0;
};
Machine ThisMachine();

// docs/performance.md: how it was measured, the table, and the notes.
void WritePage(const std::string& path, const Machine& machine, const std::string& table,
               const std::vector<std::string>& setup, const std::vector<std::string>& notes);

}  // namespace bench
