#include "core/alert_delivery.h"

#include <gtest/gtest.h>

#include "core/balloon_text.h"
#include "tests/core/monitor_doubles.h"

namespace {

class FakeOutputs final : public AlertOutputs {
 public:
  AlertDeliverySettings Settings() override { return settings; }
  void ShowBalloon(const std::wstring& title, const std::wstring& text) override { balloons.push_back({title, text}); }
  void AppendToLog(const std::wstring& path, const AlertRecord& record) override {
    done.push_back(L"log " + path + L" " + record.violation);
  }
  void PlaySoundFile(const std::wstring& path) override { done.push_back(L"sound " + path); }

  AlertDeliverySettings settings{ACTION_NOTIFY, 30, L"", L""};
  std::vector<Balloon> balloons;
  std::vector<std::wstring> done;
};

AlertRecord Record(std::uint32_t pid, std::wstring violation = L"Threads: 2 > 1", std::uint32_t ruleId = 99) {
  return {{}, pid, L"a.exe", ruleId, std::move(violation)};
}

class AlertDeliveryTest : public testing::Test {
 protected:
  /// Delivers at a tick and tells what was shown.
  std::vector<Balloon> DeliverAt(std::uint64_t tickMs, const AlertRecord& record) {
    clock.tickMs = tickMs;
    delivery.DeliverAlert(record);
    return std::exchange(outputs.balloons, {});
  }

  RecentAlerts recent;
  FakeRules rules;
  FakeClock clock;
  FakeOutputs outputs;
  AlertDelivery delivery{recent, rules, clock, outputs};
};

using Balloons = std::vector<Balloon>;

TEST_F(AlertDeliveryTest, ActionsAreTheFirstRulesOrElseTheGlobalOnes) {
  const auto rule = [](std::uint32_t ruleId, std::uint32_t actions) {
    ThresholdRule result;
    result.ruleId = ruleId;
    result.alertActions = actions;
    return result;
  };
  rules.Set({rule(1, 0), rule(2, ACTION_LOG), rule(2, ACTION_NOTIFY), rule(3, ACTION_SOUND | 8), rule(4, 7)});
  outputs.settings.alertActions = ACTION_SOUND;
  outputs.settings.notificationThrottleSec = 1;
  const struct {
    std::uint32_t ruleId;
    bool withPaths;
    std::size_t balloons;
    std::vector<std::wstring> done;
  } kCases[] = {
      {1, true, 0, {}},           {2, true, 0, {L"log l v"}}, {3, true, 0, {L"sound s"}}, {4, true, 1, {L"log l v", L"sound s"}},
      {5, true, 0, {L"sound s"}}, {4, false, 1, {}},
  };
  std::size_t delivered = 0;
  for (const auto& test : kCases) {
    outputs.settings.logFilePath = test.withPaths ? L"l" : L"";
    outputs.settings.soundFilePath = test.withPaths ? L"s" : L"";
    EXPECT_EQ(DeliverAt(1'000'000 + 1000 * delivered, Record(1, L"v", test.ruleId)).size(), test.balloons) << test.ruleId;
    EXPECT_EQ(std::exchange(outputs.done, {}), test.done) << test.ruleId;
    EXPECT_EQ(recent.Size(), ++delivered);
  }
}

TEST_F(AlertDeliveryTest, ThrottledAlertsAreMergedIntoTheNextBalloon) {
  EXPECT_EQ(DeliverAt(100'000, Record(1)), (Balloons{{L"Vantora Alert: a.exe (PID 1)", L"Threads: 2 > 1"}}));
  EXPECT_EQ(DeliverAt(110'000, Record(2)), Balloons{});
  EXPECT_EQ(DeliverAt(140'000, Record(3)),
            (Balloons{{L"Vantora: 2 Alerts", L"a.exe (PID 2): Threads: 2 > 1\na.exe (PID 3): Threads: 2 > 1"}}));
  EXPECT_EQ(DeliverAt(169'999, Record(4)), Balloons{});
  outputs.settings.notificationThrottleSec = 3600;
  EXPECT_EQ(DeliverAt(170'000, Record(5)), Balloons{});
  outputs.settings.notificationThrottleSec = 30;
  EXPECT_EQ(DeliverAt(170'000, Record(6)).at(0).title, L"Vantora: 3 Alerts");
  EXPECT_EQ(DeliverAt(200'000, Record(7)).at(0).title, L"Vantora Alert: a.exe (PID 7)");
}

TEST_F(AlertDeliveryTest, ThrottleRunsFromTheStartOfTheTickAndOverItsWrap) {
  constexpr std::uint64_t kWrap = std::uint64_t{1} << 32;
  EXPECT_EQ(DeliverAt(29'999, Record(1)), Balloons{});
  EXPECT_EQ(DeliverAt(30'000, Record(2)).size(), 1u);
  EXPECT_EQ(DeliverAt(kWrap - 10'000, Record(3)).size(), 1u);
  EXPECT_EQ(DeliverAt(kWrap + 19'999, Record(4)), Balloons{});
  EXPECT_EQ(DeliverAt(kWrap + 20'000, Record(5)).at(0).title, L"Vantora: 2 Alerts");
}

TEST_F(AlertDeliveryTest, WaitingAlertsCostOneBalloonTextHoweverMany) {
  const std::wstring violation(200, L'x');
  ASSERT_EQ(DeliverAt(100'000, Record(1)).size(), 1u);
  for (int count = 0; count < 100'000; ++count) delivery.DeliverAlert(Record(2, violation));
  EXPECT_LT(delivery.PendingChars(), 1024u);
  const Balloons shown = DeliverAt(130'000, Record(3));
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].title, L"Vantora: 100001 Alerts");
  const std::wstring line = L"a.exe (PID 2): " + violation;
  EXPECT_EQ(shown[0].text, (line + L"\n" + line).substr(0, 255));
  EXPECT_EQ(recent.Size(), 1000u);
}

TEST_F(AlertDeliveryTest, BalloonIsCutWhileTheListKeepsTheWhole) {
  AlertRecord record = Record(1, std::wstring(300, L'v'));
  record.processName = std::wstring(80, L'n');
  const Balloons shown = DeliverAt(100'000, record);
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].title, L"Vantora Alert: " + std::wstring(48, L'n'));
  EXPECT_EQ(shown[0].text, std::wstring(255, L'v'));
  EXPECT_EQ(recent.Copy(), std::vector<AlertRecord>{record});
}

// The counts are UTF-16 units, of which the last character takes two, on machines with wider characters too.
TEST(CutToUtf16Units, NeverSplitsACharacter) {
  const std::wstring pair = L"\U0001F600";
  const struct {
    std::wstring text;
    std::size_t units;
    std::wstring cut;
  } kCases[] = {
      {L"", 3, L""},
      {L"abc", 3, L"abc"},
      {L"abcd", 3, L"abc"},
      {L"ab" + pair, 4, L"ab" + pair},
      {L"ab" + pair, 3, L"ab"},
      {L"ab" + pair + L"c", 4, L"ab" + pair},
      {pair + pair, 3, pair},
      {pair, 1, L""},
      {L"abc" + pair, 3, L"abc"},
      {std::wstring(1, wchar_t{0xD83D}) + L"abc", 2, std::wstring(1, wchar_t{0xD83D}) + L"a"},
  };
  for (const auto& test : kCases) EXPECT_EQ(CutToUtf16Units(test.text, test.units), test.cut) << test.units;
}

}  // namespace
