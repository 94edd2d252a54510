#include "ui/rules/rule_presets.h"

#include "core/records.h"
#include "res/resource.h"
#include "storage/rule_store.h"

namespace {

constexpr const wchar_t* kBrowsers[] = {L"chrome.exe", L"firefox.exe", L"msedge.exe"};
constexpr const wchar_t* kAnyProcess[] = {L"*"};
constexpr std::uint64_t kFourGb = 4096 * kBytesPerMb;

constexpr RulePreset kPresets[] = {
    {.menuId = IDM_PRESET_BROWSERS,
     .labelStringId = IDS_PRESET_BROWSERS,
     .patterns = kBrowsers,
     .maxHandles = 5'000,
     .maxMemory = kFourGb,
     .cooldownSec = 120},
    {.menuId = IDM_PRESET_CPU,
     .labelStringId = IDS_PRESET_CPU,
     .patterns = kAnyProcess,
     .maxCpuPercent = 95.0,
     .cooldownSec = 300},
    {.menuId = IDM_PRESET_HANDLES,
     .labelStringId = IDS_PRESET_HANDLES,
     .patterns = kAnyProcess,
     .maxHandles = 20'000,
     .cooldownSec = 120},
    {.menuId = IDM_PRESET_MEMORY,
     .labelStringId = IDS_PRESET_MEMORY,
     .patterns = kAnyProcess,
     .maxMemory = kFourGb,
     .cooldownSec = 120},
    {.menuId = IDM_PRESET_GDI,
     .labelStringId = IDS_PRESET_GDI,
     .patterns = kAnyProcess,
     .maxGdiObjects = 8'000,
     .cooldownSec = 120},
    {.menuId = IDM_PRESET_THREADS,
     .labelStringId = IDS_PRESET_THREADS,
     .patterns = kAnyProcess,
     .maxThreads = 500,
     .cooldownSec = 60},
};

}  // namespace

std::span<const RulePreset> RulePresets() { return kPresets; }

bool AddPresetRules(RuleStore& rules, std::uint32_t menuId) {
  for (const RulePreset& preset : kPresets) {
    if (preset.menuId != menuId) continue;
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
    return true;
  }
  return false;
}
