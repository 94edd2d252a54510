#include "core/wildcard.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

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
