#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "platform/diagnostics.h"
#include "storage/alert_log.h"
#include "storage/rule_store.h"
#include "tests/support/limited_memory.h"
#include "tests/support/throwaway_folder.h"

namespace {

void SwallowLine(std::wstring_view) {}

ThresholdRule Rule(std::uint32_t ruleId) {
  ThresholdRule rule = MakeNewRule(ruleId);
  rule.processPattern = L"a pattern that is too long to be kept in place, " + std::to_wstring(ruleId);
  return rule;
}

/// What the list and the file were before, and what they may be afterwards; nothing in between.
TEST(OutOfMemory, AChangeHoldsWholeOrNotAtAll) {
  SetDiagnosticHook(SwallowLine);
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  const std::wstring json = folder.Path("rules.json");
  const RuleList before = {Rule(1), Rule(2), Rule(3)};
  const std::function<void(RuleStore&)> changes[] = {
      [](RuleStore& store) { store.Append({Rule(9)}); },
      [](RuleStore& store) { (void)store.Edit(2, [](ThresholdRule& rule) { rule.processPattern += L" and longer"; }); },
      [](RuleStore& store) { store.Remove({1}); },
      [&](RuleStore& store) { (void)store.ImportJson(json); },
      [&](RuleStore& store) { (void)store.ExportJson(folder.Path("other.json")); },
      [&](RuleStore& store) { (void)(store.Load(path) && store.Save(path)); },
  };
  for (const auto& change : changes) {
    std::unique_ptr<RuleStore> store;
    const auto prepare = [&] {
      store = std::make_unique<RuleStore>([&] { return path; });
      store->Append(before);
      ASSERT_TRUE(store->ExportJson(json));
    };
    prepare();
    change(*store);
    const RuleList after = *store->Snapshot();
    const auto work = [&] {
      try {
        change(*store);
      } catch (const std::bad_alloc&) {
      }
    };
    const auto check = [&](std::size_t allocations) {
      RuleStore reread([&] { return path; });
      ASSERT_TRUE(reread.Load(path));
      EXPECT_TRUE(*reread.Snapshot() == before || *reread.Snapshot() == after) << allocations;
      EXPECT_TRUE(*store->Snapshot() == before || *store->Snapshot() == after || store->Snapshot()->empty()) << allocations;
      store->SaveAndClose(path);
      ASSERT_TRUE(reread.Load(path));
      EXPECT_TRUE(*reread.Snapshot() == before || *reread.Snapshot() == after) << allocations << ": the last save";
    };
    FailEachAllocationOf(prepare, work, check);
  }
  SetDiagnosticHook(nullptr);
}

TEST(OutOfMemory, TheAlertLogLosesALineAndNoMore) {
  SetDiagnosticHook(SwallowLine);
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("alerts.log");
  const AlertRecord record = {
      {.year = 2024, .month = 3, .day = 5}, 7, L"a process with quite a long name.exe", 0, L"Handles: 2 > 1"};
  const std::wstring csv = folder.Path("alerts.csv");
  const std::wstring header = L"Time";
  RecentAlerts alerts;
  const auto prepare = [&] {
    ThrowawayFolder::Write(path, "torn");
    alerts.Replace({record});
  };
  const auto work = [&] {
    AppendAlertLog(path, record);
    LoadAlertLog(path, alerts);
    (void)ExportAlertCsv(csv, header, alerts);
  };
  const auto check = [&](std::size_t allocations) {
    const std::string log = ThrowawayFolder::Read(path);
    EXPECT_TRUE(log == "torn" ||
                log.ends_with("torn\r\n2024-03-05 00:00:00\t7\ta process with quite a long name.exe\tHandles: 2 > 1\r\n"))
        << log;
    EXPECT_LE(alerts.Size(), 1U) << allocations;
  };
  FailEachAllocationOf(prepare, work, check);
  SetDiagnosticHook(nullptr);
}

}  // namespace
