// Loading the recent alerts at start-up must not take longer as the log grows: 1 GB against 10 MB, both files written out in
// full. Fails when the large one takes more than 1.5 times as long.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "core/recent_alerts.h"
#include "platform/text_file.h"
#include "storage/alert_log.h"
#include "storage/alert_log_line.h"

namespace {

constexpr std::uint64_t kSmallBytes = 10'000'000;
constexpr std::uint64_t kLargeBytes = 1'000'000'000;
constexpr double kMaxRatio = 1.5;

std::filesystem::path PathOf(std::uint64_t sizeBytes) {
  return std::filesystem::temp_directory_path() / ("vantora-bench-" + std::to_string(sizeBytes) + ".log");
}

bool WriteLog(std::uint64_t sizeBytes) {
  AlertRecord record;
  record.time = {.year = 2026, .month = 3, .day = 5, .hour = 9, .minute = 7, .second = 3};
  record.processName = L"example.exe";
  record.violation = L"Handles: 5000 > 4000; Working set: 812 MB > 512 MB";
  std::string block;
  for (record.pid = 1; block.size() < 4'000'000; ++record.pid) block += EncodeTextFile(FormatAlertLogLine(record));
  std::FILE* file = std::fopen(PathOf(sizeBytes).c_str(), "wb");
  if (file == nullptr) return false;
  bool written = std::fwrite(kUtf8Mark.data(), kUtf8Mark.size(), 1, file) == 1;
  for (std::uint64_t done = 0; written && done < sizeBytes; done += block.size()) {
    written = std::fwrite(block.data(), block.size(), 1, file) == 1;
  }
  return std::fclose(file) == 0 && written;
}

void LoadAlertLogOf(benchmark::State& state) {
  const std::wstring path = PathOf(static_cast<std::uint64_t>(state.range(0))).wstring();
  RecentAlerts alerts;
  for (auto iteration : state) {
    (void)iteration;
    LoadAlertLog(path, alerts);
  }
  if (alerts.Size() != RecentAlerts::kMaxAlerts) state.SkipWithError("not all alerts were read");
}
BENCHMARK(LoadAlertLogOf)
    ->Arg(kSmallBytes)
    ->Arg(kLargeBytes)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

/// Keeps the best time of each size besides printing: the one that other programs disturbed least.
class BestTimes : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const auto [best, added] = best_.try_emplace(run.run_name.args, run.GetAdjustedRealTime());
      best->second = std::min(best->second, run.GetAdjustedRealTime());
    }
  }
  [[nodiscard]] double Of(std::uint64_t sizeBytes) const {
    const auto best = best_.find(std::to_string(sizeBytes));
    return best == best_.end() ? 0.0 : best->second;
  }

 private:
  std::map<std::string, double> best_;
};

}  // namespace

int main(int argumentCount, char** arguments) {
  benchmark::Initialize(&argumentCount, arguments);
  int status = 1;
  BestTimes times;
  if (WriteLog(kSmallBytes) && WriteLog(kLargeBytes)) {
    benchmark::RunSpecifiedBenchmarks(&times);
    const double ratio = times.Of(kLargeBytes) / times.Of(kSmallBytes);
    std::printf("1 GB takes %.2f times as long as 10 MB (at most %.1f)\n", ratio, kMaxRatio);
    status = ratio <= kMaxRatio ? 0 : 1;
  }
  for (const std::uint64_t sizeBytes : {kSmallBytes, kLargeBytes}) std::filesystem::remove(PathOf(sizeBytes));
  return status;
}
