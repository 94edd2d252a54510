#include "storage/rules_json.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace {

TEST(RulesJson, WritesOneFixedLayout) {
  EXPECT_EQ(FormatRulesJson({}), L"{\n  \"rules\": [\n  ]\n}\n");
  ThresholdRule rule;
  rule.ruleId = 9;
  rule.processPattern = L"C:\\a\"\n\r\tä\x01";
  rule.maxHandles = 4294967295U;
  rule.maxWorkingSet = 512 * kBytesPerMb + kBytesPerMb / 2;
  rule.maxCpuPercent = 12.34;
  const std::wstring object =
      L"    {\n      \"processPattern\": \"C:\\\\a\\\"\\n\\r\\tä\x01\",\n      \"enabled\": true,\n      \"maxHandles\": "
      L"4294967295,\n"
      L"      \"maxWorkingSetMB\": 512.5,\n      \"maxPrivateBytesMB\": 0.0,\n      \"maxCPUPercent\": 12.3,\n      "
      L"\"maxThreads\": 0,\n"
      L"      \"maxGDIObjects\": 0,\n      \"maxUSERObjects\": 0,\n      \"alertActions\": 3,\n      \"cooldownSeconds\": 60\n   "
      L" }";
  EXPECT_EQ(FormatRulesJson({rule, rule}), L"{\n  \"rules\": [\n" + object + L",\n" + object + L"\n  ]\n}\n");
}

TEST(RulesJson, FindsObjectsWhereverTheyStand) {
  const std::tuple<const char*, std::wstring, std::size_t> cases[] = {
      {"before the word", L"{\"processPattern\":\"a\"} \"rules\"", 0},
      {"after the array", L"\"rules\":[] {\"processPattern\":\"a\"}", 1},
      {"word in a value", L"{\"x\":\"\"rules\"\" {\"processPattern\":\"a\"}", 1},
      {"nested: the first brace closes", L"\"rules\" {\"x\":{\"y\":1}, \"processPattern\":\"a\"} {\"processPattern\":\"b\"}", 1},
      {"outer object lends its key", L"\"rules\" {\"processPattern\":\"a\", \"x\":{}}", 1},
      {"brace in a pattern", L"\"rules\" {\"processPattern\":\"a}b\"} {\"processPattern\":\"b\"}", 1},
      {"no pattern, empty pattern", L"\"rules\" {} {\"processPattern\":\"\"} {\"processPattern\"} {\"processPattern\":\"}", 0},
      {"key case", L"\"rules\" {\"ProcessPattern\":\"a\"}", 0},
      {"too long for the rules file", L"\"rules\" {\"processPattern\":\"" + std::wstring(1700, L'x') + L"\"}", 0},
      {"long", L"\"rules\" {\"processPattern\":\"" + std::wstring(1500, L'x') + L"\"}", 1},
  };
  for (const auto& [name, text, count] : cases) EXPECT_EQ(ParseRulesJson(text).value_or(RuleList(99)).size(), count) << name;
  EXPECT_FALSE(ParseRulesJson(L"{\"Rules\": [{\"processPattern\":\"a\"}]}").has_value());
}

TEST(RulesJson, ReadsPatternsFlagsAndNumbersAsTheScannerDoes) {
  const struct {
    std::wstring object;
    std::wstring pattern = L"a";
    bool enabled = false;
    std::uint32_t handles = 0;
  } cases[] = {
      {L"\"processPattern\": \"C:\\\\Tools\\\\*.exe\"", L"C:\\Tools\\*.exe"},
      {L"\"processPattern\": \"a\\\"b\"", L"a\"b"},
      {L"\"processPattern\": \"\\n\\r\\t\\\\n\\u0041\\/\"", L"\n\r\t\\n\\u0041\\/"},
      {L"\"processPattern\": \"a\x01\"", L"a\\"},
      {L"\"processPattern\": 5, \"enabled\": true", L"enabled", true},
      {L"\"processPattern\"\"a\", \"b\":1", L", "},  // the character after the key is passed over unseen
      {L"\"processPattern\": \"a\", \"processPattern\": \"b\""},
      {L"\"enabled\": true", L"a", true},
      {L"\"enabled\":true", L"a", true},
      {L"\"enabled\": trueish", L"a", true},
      {L"\"enabled\": \"true\"", L"a", true},
      {L"\"enabled\":\"1\"", L"a", true},
      {L"\"enabled\" : true"},
      {L"\"enabled\":  true"},
      {L"\"enabled\": \"True\""},
      {L"\"enabled\": 1"},
      {L"\"maxHandles\": 1500.9", L"a", false, 1500},
      {L"\"maxHandles\": \"1500\""},
      {L"\"maxHandles\":-5"},
      {L"\"maxHandles\" , : \t\n+7e2x", L"a", false, 700},
      {L"\"maxHandles\": 4294967296", L"a", false, 4294967295U},
      {L"\"maxHandles\": nan"},
      {L"\"maxHandles\": 0x10"},
      {L"\"maxHandles\""},
      {L"\"maxHandles\": 1e400", L"a", false, 4294967295U},
      // A pattern that reads like the key is taken for it.
      {L"\"processPattern\":\"maxHandles\", \"x\": true, \"maxHandles\":5", L"maxHandles"},
  };
  for (const auto& each : cases) {
    const bool isWhole = each.object.starts_with(L"\"processPattern");
    const std::wstring object = L"{" + (isWhole ? L"" : std::wstring(L"\"processPattern\":\"a\", ")) + each.object + L"}";
    const RuleList rules = ParseRulesJson(L"\"rules\"" + object).value_or(RuleList());
    ThresholdRule expected;
    expected.processPattern = each.pattern;
    expected.enabled = each.enabled;
    expected.maxHandles = each.handles;
    EXPECT_EQ(rules, RuleList{expected}) << each.object;
  }
}

TEST(RulesJson, HostileDocumentsTakeLinearTime) {
  const auto repeat = [](std::wstring_view piece) {
    std::wstring text = L"\"rules\"";
    while (text.size() < 200'000) text += piece;
    return text;
  };
  for (const wchar_t* piece : {L"{", L"}", L"{}", L"\"", L"{\"processPattern\":", L"\\", L"{\"processPattern\":\"\\\\\\",
                               L"\"maxHandles\" ", L"{\"processPattern\":\"}", L" ", L"9"}) {
    (void)ParseRulesJson(repeat(piece) + L"}");
    EXPECT_TRUE(ParseRulesJson(L"\"rules\" {\"maxHandles\":" + repeat(piece) + L"\"processPattern\":\"a\"}").has_value())
        << piece;
  }
}

}  // namespace
