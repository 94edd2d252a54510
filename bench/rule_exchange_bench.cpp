// A JSON document of 200,000 rules, nearly 70 MB: import (which saves the list once), with the memory that it took at
// most.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>

#include "platform/diagnostics.h"
#include "platform/text_file.h"
#include "storage/rule_store.h"
#include "storage/rules_json.h"

namespace {

constexpr std::uint32_t kRules = 200'000;

std::wstring PathOf(const char* name) { return (std::filesystem::temp_directory_path() / name).wstring(); }

double PeakMegabytes() {
  rusage usage = {};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void ImportJson(benchmark::State& state) {
  const std::wstring json = PathOf("vantora-bench-rules.json");
  const std::wstring csv = PathOf("vantora-bench-rules.csv");
  {
    RuleList rules;
    for (std::uint32_t ruleId = 1; ruleId <= kRules; ++ruleId) {
      rules.push_back(MakeNewRule(ruleId));
      rules.back().processPattern = L"service-" + std::to_wstring(ruleId) + L"-*.exe";
      rules.back().maxWorkingSet = ruleId * kBytesPerMb;
    }
    if (WriteTextFile(json, FormatRulesJson(rules)) != WriteResult::kWritten) state.SkipWithError("no room for the document");
  }
  state.counters["document MB"] = static_cast<double>(std::filesystem::file_size(json)) / 1e6;
  for (auto iteration : state) {
    (void)iteration;
    RuleStore store([&] { return csv; });
    if (!store.ImportJson(json) || store.Snapshot()->size() != kRules) state.SkipWithError("not all rules were imported");
  }
  state.counters["peak MB"] = PeakMegabytes();
  std::filesystem::remove(json);
  std::filesystem::remove(csv);
}
BENCHMARK(ImportJson)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

int main(int argumentCount, char** arguments) {
  SetDiagnosticHook([](std::wstring_view) {});
  benchmark::Initialize(&argumentCount, arguments);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
