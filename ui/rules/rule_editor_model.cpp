#include "ui/rules/rule_editor_model.h"

#include "res/resource.h"
#include "ui/rules/number_text.h"
#include "ui/rules/rule_field_text.h"

namespace {

constexpr std::size_t kMaxNumberChars = 63;

std::wstring PatternText(const ThresholdRule& rule) { return rule.processPattern; }
// A cooldown of 0 is a cooldown like any other, not the absence of one.
std::wstring CooldownText(const ThresholdRule& rule) { return FormatText(L"%u", rule.cooldownSec); }

void StorePattern(ThresholdRule& rule, std::wstring_view text) { rule.processPattern = text; }
void StoreCpu(ThresholdRule& rule, std::wstring_view text) { rule.maxCpuPercent = ReadDecimal(text); }

template <std::uint32_t ThresholdRule::*Field>
void StoreCount(ThresholdRule& rule, std::wstring_view text) {
  rule.*Field = ReadFieldInteger(text);
}

template <std::uint64_t ThresholdRule::*Field>
void StoreMegabytes(ThresholdRule& rule, std::wstring_view text) {
  rule.*Field = ReadFieldInteger(text) * kBytesPerMb;
}

template <std::uint32_t ThresholdRule::*Field>
constexpr RuleEditorField CountField(int controlId) {
  return {controlId, kMaxNumberChars, CountText<Field>, StoreCount<Field>};
}

template <std::uint64_t ThresholdRule::*Field>
constexpr RuleEditorField MegabytesField(int controlId) {
  return {controlId, kMaxNumberChars, MegabytesText<Field>, StoreMegabytes<Field>};
}

constexpr RuleEditorField kFields[] = {
    {IDC_PATTERN, kMaxPatternChars, PatternText, StorePattern},
    CountField<&ThresholdRule::maxHandles>(IDC_MAX_HANDLES),
    MegabytesField<&ThresholdRule::maxWorkingSet>(IDC_MAX_WORKING_SET),
    MegabytesField<&ThresholdRule::maxPrivateBytes>(IDC_MAX_PRIVATE_BYTES),
    {IDC_MAX_CPU, kMaxNumberChars, CpuText, StoreCpu},
    CountField<&ThresholdRule::maxThreads>(IDC_MAX_THREADS),
    CountField<&ThresholdRule::maxGdiObjects>(IDC_MAX_GDI),
    CountField<&ThresholdRule::maxUserObjects>(IDC_MAX_USER),
    {IDC_COOLDOWN, kMaxNumberChars, CooldownText, StoreCount<&ThresholdRule::cooldownSec>},
};

}  // namespace

std::span<const RuleEditorField> RuleEditorFields() { return kFields; }
