#include "console/process_table.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "core/ceilings.h"
#include "core/printable_text.h"
#include "platform/text_encoding.h"

namespace {

struct Row {
  double share;
  const ProcessMetrics* metrics;
};

std::string FigureText(std::uint32_t count) { return std::to_string(count); }
std::string FigureText(std::uint64_t bytes) { return std::to_string(bytes / kBytesPerMb); }
std::string FigureText(double percent) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", percent);
  return text;
}

/// To the right in its column.
void AddCell(std::string& line, const std::string& cell, std::size_t width) {
  line.append(cell.size() < width ? width - cell.size() : 0, ' ');
  line += cell;
  line += "  ";
}

}  // namespace

std::string FormatProcessTable(const ProcessSample& sample, const RuleList& rules) {
  std::vector<Row> rows;
  for (const SampledProcess& process : sample) {
    if (process.rules == nullptr) continue;
    double share = 0.0;
    for (const std::uint32_t place : *process.rules) {
      for (const Ceiling& ceiling : Ceilings()) share = std::max(share, ceiling.Share(rules[place], process.metrics));
    }
    rows.push_back({share, &process.metrics});
  }
  std::stable_sort(rows.begin(), rows.end(), [](const Row& one, const Row& other) { return one.share > other.share; });
  std::string text = "  NEAR%      PID  HANDLES    WS MB  PRIV MB   CPU %  THREADS    GDI   USER  NAME\n";
  constexpr std::size_t kWidths[kCeilingCount] = {7, 7, 7, 6, 7, 5, 5};
  for (const Row& row : rows) {
    std::string line;
    AddCell(line, FigureText(row.share * 100.0), 7);
    AddCell(line, std::to_string(row.metrics->pid), 7);
    std::size_t column = 0;
    for (const Ceiling& ceiling : Ceilings()) {
      const bool known = (row.metrics->known & ceiling.known) != 0;
      const std::string figure =
          std::visit([&](const auto& limit) { return FigureText(row.metrics->*limit.measured); }, ceiling.limit);
      AddCell(line, known ? figure : "-", kWidths[column++]);
    }
    text += line + EncodeUtf8(PrintableText(row.metrics->name)) + "\n";
  }
  return text;
}
