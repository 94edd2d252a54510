// Any bytes in place of a JSON document: rules that come in can be saved, go out again and come back the same.

#include <algorithm>
#include <iterator>
#include <string>

#include "fuzz/require.h"
#include "platform/text_file.h"
#include "storage/rules_csv.h"
#include "storage/rules_json.h"

namespace {

void RequireSamePatterns(const std::optional<RuleList>& rules, const RuleList& expected, const char* what) {
  Require(rules && rules->size() == expected.size(), what);
  for (std::size_t index = 0; index < expected.size(); ++index) {
    Require((*rules)[index].processPattern == expected[index].processPattern, what);
    Require((*rules)[index].enabled == expected[index].enabled, what);
  }
}

/// The reader takes the first quoted occurrence of a key for the key, so a pattern that ends in its name after a quote, the
/// pattern's own opening one or an escaped one, hides the number.
bool HidesANumber(const ThresholdRule& rule) {
  static const std::wstring keys[] = {L"maxHandles",     L"maxWorkingSetMB", L"maxPrivateBytesMB",
                                      L"maxCPUPercent",  L"maxThreads",      L"maxGDIObjects",
                                      L"maxUSERObjects", L"alertActions",    L"cooldownSeconds"};
  const std::wstring quoted = L'"' + rule.processPattern;
  return std::any_of(std::begin(keys), std::end(keys), [&](const std::wstring& key) { return quoted.ends_with(L'"' + key); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::optional<RuleList> rules = ParseRulesJson(DecodeTextFile(Bytes(data, size)));
  if (!rules) return 0;
  for (const ThresholdRule& rule : *rules) Require(!rule.processPattern.empty() && rule.ruleId == 0, "every rule has a pattern");
  RequireSamePatterns(ParseRulesCsv(DecodeTextFile(EncodeTextFile(FormatRulesCsv(*rules)))), *rules,
                      "imported rules can be saved");
  const std::wstring document = FormatRulesJson(*rules);
  const std::optional<RuleList> again = ParseRulesJson(document);
  RequireSamePatterns(again, *rules, "exported rules come back");
  const bool numbersKept = std::none_of(rules->begin(), rules->end(), HidesANumber);
  Require(!numbersKept || FormatRulesJson(*again) == document, "a second export writes the same");
  return 0;
}
