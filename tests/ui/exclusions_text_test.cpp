#include "ui/exclusions_text.h"

#include <gtest/gtest.h>

namespace {

using List = std::vector<std::wstring>;

TEST(ExclusionsText, SplitsWhateverAUserTypesOrPastes) {
  const struct {
    const wchar_t* text;
    List patterns;
  } kCases[] = {
      {L"", {}},
      {L"\r\n\r\n \t \n\r", {}},
      {L"  a.exe  \r\n\r\n\tb*.exe\n\rc?.exe", {L"a.exe", L"b*.exe", L"c?.exe"}},
      {L"my app.exe\r\n", {L"my app.exe"}},
      {L"a\nb\rc\r\nd\n", {L"a", L"b", L"c", L"d"}},
      {L"same\nsame\nSAME", {L"same", L"same", L"SAME"}},
      {L"\x3000wide\x3000\n\x00A0hard\x00A0\n\x2003\x2028", {L"wide", L"hard"}},
      {L"\v\fa\v b\f", {L"a\v b"}},
      {L"[*", {L"[*"}},
      // Zero-width characters are no white space: they stay, wherever they stand.
      {L"\x200B"
       L"a\xFEFF",
       {L"\x200B"
        L"a\xFEFF"}},
  };
  for (const auto& test : kCases) EXPECT_EQ(SplitExclusions(test.text), test.patterns) << ::testing::PrintToString(test.text);
}

TEST(ExclusionsText, JoinsWithSeparatorsOnlyBetweenPatterns) {
  EXPECT_EQ(JoinExclusions({}), L"");
  EXPECT_EQ(JoinExclusions({L"a"}), L"a");
  EXPECT_EQ(JoinExclusions({L"a", L"b c", L"*"}), L"a\r\nb c\r\n*");
}

TEST(ExclusionsText, GivesEveryLineEndTheFormThatAnEditBoxShows) {
  EXPECT_EQ(WithEditLineEnds(L""), L"");
  EXPECT_EQ(WithEditLineEnds(L"a\r\nb\nc\rd\r\r\n\n\re"), L"a\r\nb\r\nc\r\nd\r\n\r\n\r\n\r\ne");
  EXPECT_EQ(WithEditLineEnds(L"\r"), L"\r\n");
}

TEST(ExclusionsText, TenThousandLinesOfAnyLineEndComeBackUnchanged) {
  List patterns;
  for (int i = 0; i < 10'000; ++i) patterns.push_back(L"process " + std::to_wstring(i) + L"*.exe");
  EXPECT_EQ(SplitExclusions(JoinExclusions(patterns)), patterns);
  for (const wchar_t* lineEnd : {L"\n", L"\r", L"\r\n", L"\r\r\n", L" \n\n "}) {
    std::wstring text;
    for (const std::wstring& pattern : patterns) text += pattern + lineEnd;
    EXPECT_EQ(SplitExclusions(text), patterns);
  }
}

}  // namespace
