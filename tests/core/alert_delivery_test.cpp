#include "core/alert_delivery.h"

#include <gtest/gtest.h>

#include "core/balloon_text.h"
#include "tests/support/monitor_doubles.h"

namespace {

AlertRecord Record(std::uint32_t pid, std::wstring violation = L"v", std::uint32_t ruleId = 99) {
  return {{}, pid, L"a.exe", ruleId, std::move(violation)};
}

/// Receives what it delivers.
class AlertDeliveryTest : public testing::Test, public AlertOutputs {
 protected:
  AlertDeliverySettings Settings() override { return settings; }
  void ShowBalloon(const std::wstring& title, const std::wstring& text) override { done.push_back(title + L"|" + text); }
  void AppendToLog(const std::wstring& path, const AlertRecord& record) override { done.push_back(path + record.violation); }
  void PlaySoundFile(const std::wstring& path) override { done.push_back(path); }

  Texts DeliverAt(std::uint64_t tickMs, const AlertRecord& record) {
    clock.tickMs = tickMs;
    delivery.DeliverAlert(record);
    return std::exchange(done, {});
  }

  AlertDeliverySettings settings{ACTION_NOTIFY, 30, L"", L""};
  Texts done;
  RecentAlerts recent;
  FakeRules rules;
  FakeClock clock;
  AlertDelivery delivery{recent, rules, clock, *this};
};

TEST_F(AlertDeliveryTest, ActionsAreTheFirstRulesOrElseTheGlobalOnes) {
  RuleList list;
  for (const auto& [ruleId, actions] : {std::pair{1u, 0u}, {2u, 2u}, {2u, 1u}, {3u, 4u | 8u}, {4u, 7u}}) {
    list.push_back(ThreadRule(ruleId, 1));
    list.back().alertActions = actions;
  }
  rules.Set(list);
  settings = {ACTION_SOUND, 30, L"log:", L"sound"};
  const std::wstring balloon = L"Vantora Alert: a.exe (PID 1)|v";
  EXPECT_EQ(DeliverAt(30'000, Record(1, L"v", 1)), Texts{});
  EXPECT_EQ(DeliverAt(30'000, Record(1, L"v", 2)), Texts{L"log:v"});
  EXPECT_EQ(DeliverAt(30'000, Record(1, L"v", 3)), Texts{L"sound"});
  EXPECT_EQ(DeliverAt(30'000, Record(1, L"v", 4)), (Texts{balloon, L"log:v", L"sound"}));
  EXPECT_EQ(DeliverAt(30'000, Record(1, L"v", 5)), Texts{L"sound"});
  settings.logFilePath = settings.soundFilePath = L"";
  EXPECT_EQ(DeliverAt(60'000, Record(1, L"v", 4)), Texts{balloon});
  EXPECT_EQ(recent.Size(), 6u);
}

// From the first tick on and over the wrap of the 32-bit tick.
TEST_F(AlertDeliveryTest, ThrottledAlertsAreMergedIntoTheNextBalloon) {
  constexpr std::uint64_t kWrap = std::uint64_t{1} << 32;
  const struct {
    std::uint64_t tickMs;
    Texts shown;
    std::uint32_t throttleSec = 30;
  } kSteps[] = {
      {29'999, {}},
      {30'000, {L"Vantora: 2 Alerts|a.exe (PID 1): v\na.exe (PID 2): v"}},
      {59'999, {}},
      {60'000, {}, 3600},
      {60'000, {L"Vantora: 3 Alerts|a.exe (PID 3): v\na.exe (PID 4): v\na.exe (PID 5): v"}},
      {kWrap - 10'000, {L"Vantora Alert: a.exe (PID 6)|v"}},
      {kWrap - 1, {}},
      {kWrap + 19'999, {}},
      {kWrap + 20'000, {L"Vantora: 3 Alerts|a.exe (PID 7): v\na.exe (PID 8): v\na.exe (PID 9): v"}},
  };
  std::uint32_t pid = 0;
  for (const auto& step : kSteps) {
    settings.notificationThrottleSec = step.throttleSec;
    EXPECT_EQ(DeliverAt(step.tickMs, Record(++pid)), step.shown) << step.tickMs;
  }
}

TEST_F(AlertDeliveryTest, WaitingAlertsCostOneBalloonTextHoweverMany) {
  AlertRecord large = Record(1, std::wstring(300, L'x'));
  large.processName = std::wstring(80, L'n');
  EXPECT_EQ(DeliverAt(100'000, large),
            Texts{L"Vantora Alert: " + std::wstring(48, L'n') + L"|" + std::wstring(kBalloonTextUnits, L'x')});
  EXPECT_EQ(recent.Copy(), std::vector<AlertRecord>{large}) << "the list keeps the whole";
  for (int count = 0; count < 10'000; ++count) delivery.DeliverAlert(large);
  EXPECT_LT(delivery.PendingChars(), 1024u);
  EXPECT_EQ(recent.Size(), RecentAlerts::kMaxAlerts);
  EXPECT_EQ(DeliverAt(130'000, large), Texts{L"Vantora: 10001 Alerts|" + AlertLine(large).substr(0, kBalloonTextUnits)});
}

// The counts are UTF-16 units, of which the last character takes two, on machines with wider characters too.
TEST(CutToUtf16Units, NeverSplitsACharacter) {
  const std::wstring pair = L"\U0001F600";
  const std::wstring half(1, wchar_t{0xD83D});
  EXPECT_EQ(CutToUtf16Units(L"abc", 3), L"abc");
  EXPECT_EQ(CutToUtf16Units(L"ab" + pair, 4), L"ab" + pair);
  EXPECT_EQ(CutToUtf16Units(L"ab" + pair, 3), L"ab");
  EXPECT_EQ(CutToUtf16Units(pair, 1), L"");
  EXPECT_EQ(CutToUtf16Units(half + L"abc", 2), half + L"a");
}

}  // namespace
