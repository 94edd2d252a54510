#include "storage/rules_csv.h"

#include <gtest/gtest.h>

#include <cfloat>

#include "platform/text_file.h"
#include "storage/rule_numbers.h"

namespace {

const std::wstring kHeader =
    L"RuleId,ProcessPattern,Enabled,MaxHandles,MaxWorkingSetMB,MaxPrivateBytesMB,MaxCPU,MaxThreads,MaxGDI,MaxUSER,AlertActions,"
    L"CooldownSec\n";

/// What a row gives, written down as a row; empty when it is dropped.
std::wstring Reread(const std::wstring& row) {
  return FormatRulesCsv(ParseRulesCsv(L"header\n" + row).value_or(RuleList())).substr(kHeader.size());
}

TEST(RulesCsv, ReadsRowsAsScanfWould) {
  const std::wstring p255(255, L'p');
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"1,foo.exe,1,2,512,0.5,50,6,7,8,4,10\n", L"1,foo.exe,1,2,512.0,0.5,50.0,6,7,8,4,10\n"},
      {L"4,foo.exe,1", L"4,foo.exe,1,0,0.0,0.0,0.0,0,0,0,3,60\n"},
      {L"4, foo ,-1\r\n", L"4, foo ,1,0,0.0,0.0,0.0,0,0,0,3,60\n"},
      {L" +4,foo, 0,\t9, 1.25,\f2e1,-1,1,2,3,4,5,junk", L"4,foo,0,9,1.2,20.0,-1.0,1,2,3,4,5\n"},
      {L"\x00A0"
       L"4,foo,\x3000"
       L"1,\x2003"
       L"5,\x1680"
       L"1e2e",
       L"4,foo,1,5,100.0,0.0,0.0,0,0,0,3,60\n"},
      // The first field that does not fit ends the row.
      {L"4,foo,2,9,1e,2", L"4,foo,1,9,0.0,0.0,0.0,0,0,0,3,60\n"},
      {L"4,foo,2,9,1,nan,7", L"4,foo,1,9,1.0,0.0,0.0,0,0,0,3,60\n"},
      {L"-4,foo,1,-9,-1.5,1e300,1e999,5000000000,,",
       L"0,foo,1,0,0.0,17592186044416.0," + FormatTenths(DBL_MAX) + L",4294967295,0,0,3,60\n"},
      {L"4," + p255 + L",1", L"4," + p255 + L",1,0,0.0,0.0,0.0,0,0,0,3,60\n"},
      {L"4,a\tb\x01\u2028,1", L"4,a\tb\x01\u2028,1,0,0.0,0.0,0.0,0,0,0,3,60\n"},
      // A NUL ends the line.
      {std::wstring(L"4,foo,1,5\0,6", 12), L"4,foo,1,5,0.0,0.0,0.0,0,0,0,3,60\n"},
      // Dropped.
      {L"\n\r\n,\n", L""},
      {L"4,,1", L""},
      {L"4 ,foo,1", L""},
      {L"4," + p255 + L"p,1", L""},
      {L"4,foo,yes", L""},
      {L"\x0085"
       L"4,foo,1",
       L""},
      {L"4,\",\"" + std::wstring(2030, L'p') + L"\",1,5", L""},
      {std::wstring(L"4,fo\0o,1", 8), L""},
  };
  for (const auto& [row, reread] : cases) EXPECT_EQ(Reread(row), reread) << row;
}

TEST(RulesCsv, QuotesPatternsThatAPlainRowCannotCarry) {
  for (const auto& [pattern, field] : std::vector<std::pair<std::wstring, std::wstring>>{
           {L"chrome*.exe", L"chrome*.exe"},
           {L"\"a\\b\"", L"\"a\\b\""},
           {L"", L"\",\"\""},
           {L"\",\"a\"", L"\",\"\\\",\\\"a\\\"\""},
           {L"\r\n\\", L"\",\"\\r\\n\\\\\""},
           {std::wstring(L"\0\x1A", 2), L"\",\"\\u0000\\u001a\""},
           {L"\xD83D", L"\",\"\\ud83d\""},
           {L",\U0001F600", L"\",\",\U0001F600\""},
           {std::wstring(256, L'p'), L"\",\"" + std::wstring(256, L'p') + L"\""},
       }) {
    ThresholdRule rule;
    rule.processPattern = pattern;
    EXPECT_EQ(FormatRulesCsv({rule}), kHeader + L"0," + field + L",1,0,0.0,0.0,0.0,0,0,0,3,60\n");
    EXPECT_EQ(ParseRulesCsv(FormatRulesCsv({rule})), RuleList{rule});
  }
  for (const wchar_t* damaged :
       {L"1,\",\"a,1", L"1,\",\"a\\", L"1,\",\"a\\x\",1", L"1,\",\"\\u00G0\",1", L"1,\",\"\\u00", L"1,\",\"a\"1"}) {
    EXPECT_EQ(Reread(damaged), L"") << damaged;
  }
}

TEST(RulesCsv, TakesLongLinesInReadsOf2047) {
  // The rest of a long line is a line of its own; a line end that still fits is not.
  std::wstring row = L"1,a,1,0,0,0,0,0,0,0,3,60";
  row.resize(LineReader::kMaxReadChars - 1, L' ');
  EXPECT_EQ(ParseRulesCsv(L"header\n" + row + L"\n2,b,1\n3,c,1\n")->size(), 3U);
  EXPECT_EQ(ParseRulesCsv(L"header\n" + row + L" 2,b,1\n3,c,1\n")->size(), 3U);
  EXPECT_EQ(ParseRulesCsv(row + L"h1,a,1\n")->size(), 1U);
  EXPECT_FALSE(ParseRulesCsv(L"").has_value());
  EXPECT_TRUE(ParseRulesCsv(L"\n").has_value());
}

}  // namespace
