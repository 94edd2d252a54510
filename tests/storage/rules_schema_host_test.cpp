#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/text_encoding.h"
#include "storage/rules_json.h"
#include "tests/support/throwaway_folder.h"

namespace {

// A validator of its own reads the schema, as the tools do that people write rules with.
TEST(RulesSchema, DescribesWhatTheProgramExports) {
  const ThrowawayFolder folder;
  ThresholdRule full = {7, L"a\\\"b ä*", false, 1, 2 * kBytesPerMb + 1, 3 * kBytesPerMb, 4.56, 5, 6, 7, 7, 4294967295U};
  const std::string path = EncodeUtf8(folder.Path("rules.json"));
  for (const RuleList& rules : {RuleList{}, RuleList{full, {.processPattern = L"*"}}}) {
    ThrowawayFolder::Write(folder.Path("rules.json"), EncodeUtf8(FormatRulesJson(rules)));
    EXPECT_EQ(std::system(("/usr/bin/python3 -m jsonschema -i " + path + " " VANTORA_RULES_SCHEMA).c_str()), 0);
  }
}

}  // namespace
