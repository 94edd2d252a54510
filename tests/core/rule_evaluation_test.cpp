#include "core/rule_evaluation.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr std::uint64_t kMb = kBytesPerMb;

ThresholdRule AllCeilings() {
  ThresholdRule rule;
  rule.maxHandles = 20'000;
  rule.maxWorkingSet = 512 * kMb;
  rule.maxPrivateBytes = 1024 * kMb;
  rule.maxCpuPercent = 95.0;
  rule.maxThreads = 500;
  rule.maxGdiObjects = 9'000;
  rule.maxUserObjects = 8'000;
  return rule;
}

/// In the order in which the ceilings are checked.
ProcessMetrics Measured(std::uint32_t handles, std::uint64_t workingSet, std::uint64_t privateBytes, double cpuPercent,
                        std::uint32_t threads, std::uint32_t gdiObjects, std::uint32_t userObjects) {
  ProcessMetrics metrics;
  metrics.handles = handles;
  metrics.workingSet = workingSet;
  metrics.privateBytes = privateBytes;
  metrics.cpuPercent = cpuPercent;
  metrics.threads = threads;
  metrics.gdiObjects = gdiObjects;
  metrics.userObjects = userObjects;
  return metrics;
}

TEST(ViolationText, NamesEveryCeilingThatIsExceededAndNoOther) {
  const struct {
    ProcessMetrics metrics;
    const wchar_t* text;
  } kCases[] = {
      {{}, L""},
      {Measured(20'000, 512 * kMb, 1024 * kMb, 95.0, 500, 9'000, 8'000), L""},
      {Measured(20'001, 0, 0, 0.0, 0, 0, 0), L"Handles: 20001 > 20000"},
      {Measured(0, 512 * kMb + 100, 0, 0.0, 0, 0, 0), L"Working Set: 512 MB > 512 MB"},
      {Measured(0, 0, ~std::uint64_t{0}, 0.0, 0, 0, 0), L"Private Bytes: 17592186044415 MB > 1024 MB"},
      {Measured(0, 0, 0, 95.04, 0, 0, 0), L"CPU: 95.0% > 95.0%"},
      {Measured(25'000, 0, 0, 0.0, 600, 0, 0), L"Handles: 25000 > 20000; Threads: 600 > 500"},
      {Measured(4'294'967'295, 600 * kMb, 2048 * kMb, 100.0, 501, 9'001, 8'001),
       L"Handles: 4294967295 > 20000; Working Set: 600 MB > 512 MB; Private Bytes: 2048 MB > 1024 MB; CPU: 100.0% > 95.0%; "
       L"Threads: 501 > 500; GDI Objects: 9001 > 9000; USER Objects: 8001 > 8000"},
  };
  for (const auto& test : kCases) EXPECT_EQ(ViolationText(AllCeilings(), test.metrics), test.text);
}

TEST(ViolationText, CeilingsWithoutLimitNeverFire) {
  const ProcessMetrics everything = Measured(~0u, ~std::uint64_t{0}, ~std::uint64_t{0}, 100.0, ~0u, ~0u, ~0u);
  for (const double cpu : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    ThresholdRule rule;
    rule.maxCpuPercent = cpu;
    EXPECT_EQ(ViolationText(rule, everything), L"") << cpu;
  }
}

}  // namespace
