// Any bytes in place of rules.csv: what loads from them is what the next save keeps, to the letter.

#include "fuzz/require.h"
#include "platform/text_file.h"
#include "storage/rules_csv.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::optional<RuleList> loaded = ParseRulesCsv(DecodeTextFile(Bytes(data, size)));
  if (!loaded) return 0;
  const std::wstring saved = FormatRulesCsv(*loaded);
  const std::optional<RuleList> reloaded = ParseRulesCsv(DecodeTextFile(EncodeTextFile(saved)));
  Require(reloaded && reloaded->size() == loaded->size(), "every rule comes back");
  for (std::size_t index = 0; index < loaded->size(); ++index) {
    const ThresholdRule& first = (*loaded)[index];
    const ThresholdRule& second = (*reloaded)[index];
    Require(FitsRulesCsv(first.processPattern) || first.processPattern.size() > 255, "short patterns fit");
    Require(second.ruleId == first.ruleId && second.processPattern == first.processPattern && second.enabled == first.enabled &&
                second.maxHandles == first.maxHandles && second.alertActions == first.alertActions &&
                second.cooldownSec == first.cooldownSec,
            "a rule keeps its values");
  }
  Require(FormatRulesCsv(*reloaded) == saved, "a second save writes the same");
  return 0;
}
