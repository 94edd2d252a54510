#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>

#include "core/printable_text.h"
#include "core/rule_evaluation.h"
#include "core/wildcard.h"

namespace {

constexpr std::uint64_t kMb = kBytesPerMb;

TEST(ViolationText, NamesEveryCeilingThatIsExceededAndNoOther) {
  const ThresholdRule rule = {1, L"*", true, 20'000, 512 * kMb, 1024 * kMb, 95.0, 500, 9'000, 8'000};
  // CPU, working set, private bytes, handles, threads, GDI and USER objects behind ID and name.
  const std::pair<ProcessMetrics, const wchar_t*> kCases[] = {
      {{}, L""},
      {{1, L"", 95.0, 512 * kMb, 1024 * kMb, 20'000, 500, 9'000, 8'000}, L""},
      {{1, L"", 0.0, 512 * kMb + 100}, L"Working Set: 512 MB > 512 MB"},
      {{1, L"", 0.0, 0, ~0ull}, L"Private Bytes: 17592186044415 MB > 1024 MB"},
      {{1, L"", 95.04, 0, 0, 25'000}, L"Handles: 25000 > 20000; CPU: 95.0% > 95.0%"},
      {{1, L"", 100.0, 600 * kMb, 2048 * kMb, 4'294'967'295, 501, 9'001, 8'001},
       L"Handles: 4294967295 > 20000; Working Set: 600 MB > 512 MB; Private Bytes: 2048 MB > 1024 MB; CPU: 100.0% > 95.0%; "
       L"Threads: 501 > 500; GDI Objects: 9001 > 9000; USER Objects: 8001 > 8000"},
  };
  for (const auto& [metrics, text] : kCases) EXPECT_EQ(ViolationText(rule, metrics), text);
}

TEST(ViolationText, CeilingsWithoutLimitNeverFire) {
  const ProcessMetrics everything = {1, L"", 100.0, ~0ull, ~0ull, ~0u, ~0u, ~0u, ~0u};
  for (const double cpu : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(ViolationText({1, L"*", true, 0, 0, 0, cpu}, everything), L"") << cpu;
  }
}

TEST(PrintableText, LeavesNothingThatForgesLinesOrSteersATerminal) {
  EXPECT_EQ(PrintableText(L"\x1B[2Ja\n\x7F\x9B\u061C\u200E\u2028\u202E\u2066.exe"), L"?[2Ja????????.exe");
  EXPECT_EQ(PrintableText(L"\xC4 \u20AC\u2065"), L"\xC4 \u20AC\u2065");
}

TEST(WildcardMatch, Table) {
  const std::tuple<std::wstring, std::wstring, bool> kCases[] = {
      {L"CHROME.EXE", L"chrome.exe", true},
      {L"chrome", L"chrome.exe", false},
      {L"chrome*", L"chrome.exe", true},
      {L"*", L"", true},
      {L"", L"", true},
      {L"", L"a", false},
      {L"?", L"", false},
      {L"a?c", L"ac", false},
      {L"a?c", L"a*c", true},
      {L"*.exe", L"a.exe.bak", false},
      {L"*a*b", L"xaxxb", true},
      {L"*a*b", L"ba", false},
      {L"*aab", L"aaab", true},
      {L"\u00c4", L"\u00e4", false},
      {L"[z]", L"{Z}", false},
      {L"abc", L"ab", false},
      {L"ab**", L"AB", true},
  };
  for (const auto& [pattern, name, matches] : kCases) {
    EXPECT_EQ(WildcardMatch(name.c_str(), pattern.c_str()), matches) << pattern << " on " << name;
  }
}

// With more than one backtracking point this would not end within the life of the machine.
TEST(WildcardMatch, HostilePatternStaysCheap) {
  std::wstring pattern;
  for (int star = 0; star < 60; ++star) pattern += L"*a";
  EXPECT_FALSE(WildcardMatch(std::wstring(259, L'a').c_str(), (pattern + L"*b").c_str()));
}

TEST(IsExcluded, AnyPatternWillDoAndNoneIsTrimmed) {
  EXPECT_FALSE(IsExcluded(L"a.exe", {}));
  EXPECT_FALSE(IsExcluded(L"a.exe", {L"b.exe", L" a.exe", L"a.exe ", L""}));
  EXPECT_TRUE(IsExcluded(L"a.exe", {L"b.exe", L"A.*"}));
}

}  // namespace
