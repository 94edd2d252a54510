#include "storage/rule_presets.h"

#include "core/records.h"
#include "storage/rule_store.h"

namespace {

constexpr const wchar_t* kBrowsers[] = {L"chrome.exe", L"firefox.exe", L"msedge.exe"};
constexpr const wchar_t* kAnyProcess[] = {L"*"};
constexpr std::uint64_t kFourGb = 4096 * kBytesPerMb;

constexpr RulePreset kPresets[] = {
    {.patterns = kBrowsers, .maxHandles = 5'000, .maxMemory = kFourGb, .cooldownSec = 120},
    {.patterns = kAnyProcess, .maxCpuPercent = 95.0, .cooldownSec = 300},
    {.patterns = kAnyProcess, .maxHandles = 20'000, .cooldownSec = 120},
    {.patterns = kAnyProcess, .maxMemory = kFourGb, .cooldownSec = 120},
    {.patterns = kAnyProcess, .maxGdiObjects = 8'000, .cooldownSec = 120},
    {.patterns = kAnyProcess, .maxThreads = 500, .cooldownSec = 60},
};

}  // namespace

std::span<const RulePreset> RulePresets() { return kPresets; }

void AddPresetRules(RuleStore& rules, const RulePreset& preset) {
  RuleList added;
  for (const wchar_t* pattern : preset.patterns) {
    ThresholdRule& rule = added.emplace_back(MakeNewRule(rules.TakeRuleId()));
    rule.processPattern = pattern;
    rule.maxHandles = preset.maxHandles;
    rule.maxWorkingSet = preset.maxMemory;
    rule.maxPrivateBytes = preset.maxMemory;
    rule.maxCpuPercent = preset.maxCpuPercent;
    rule.maxThreads = preset.maxThreads;
    rule.maxGdiObjects = preset.maxGdiObjects;
    rule.cooldownSec = preset.cooldownSec;
  }
  rules.Append(added);
}
