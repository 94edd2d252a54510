#include "storage/rule_store.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <stdexcept>

#include "platform/diagnostics.h"
#include "platform/text_file.h"
#include "storage/rules_csv.h"
#include "storage/rules_json.h"

namespace {

unsigned CountOf(const RuleList& rules) { return static_cast<unsigned>(rules.size()); }

/// Hands out ids that no rule of a list has, never 0, upwards from a start and round again at the end of the range.
class RuleIdSource {
 public:
  RuleIdSource(const RuleList& rules, std::uint32_t start) : next_(start) {
    used_.reserve(rules.size());
    for (const ThresholdRule& rule : rules) used_.push_back(rule.ruleId);
    std::sort(used_.begin(), used_.end());
    PassUsed();
  }

  [[nodiscard]] std::uint32_t Next() const { return next_; }
  std::uint32_t Take() {
    const std::uint32_t id = next_++;
    PassUsed();
    return id;
  }

 private:
  void PassUsed() {
    while (next_ == 0 || std::binary_search(used_.begin(), used_.end(), next_)) ++next_;
  }

  std::vector<std::uint32_t> used_;
  std::uint32_t next_;
};

WriteResult WriteRules(const std::wstring& path, const RuleList& rules) {
  try {
    return WriteTextFile(path, FormatRulesCsv(rules));
  } catch (const std::bad_alloc&) {
    return WriteResult::kWriteFailed;
  }
}

bool SaveRules(const std::wstring& path, const RuleList& rules) {
  switch (WriteRules(path, rules)) {
    case WriteResult::kWritten:
      DebugLog(L"RuleStore::Save - Saved %u rules to %ls", CountOf(rules), path.c_str());
      return true;
    case WriteResult::kCannotOpen:
      DebugLog(L"RuleStore::Save - Could not open %ls for writing", path.c_str());
      return false;
    case WriteResult::kWriteFailed:
      break;
  }
  DebugLog(L"RuleStore::Save - Could not write %ls", path.c_str());
  return false;
}

}  // namespace

RuleStore::RuleStore(std::function<std::wstring()> rulesFilePath)
    : rulesFilePath_(std::move(rulesFilePath)), snapshot_(std::make_shared<const RuleList>()) {}

RuleSnapshot RuleStore::Snapshot() const {
  std::lock_guard lock(snapshotLock_);
  return snapshot_;
}

std::uint32_t RuleStore::NextRuleId() const {
  std::lock_guard lock(snapshotLock_);
  return nextRuleId_;
}

std::uint32_t RuleStore::TakeRuleId() {
  std::lock_guard writer(writers_);
  RuleSnapshot rules = Snapshot();
  RuleIdSource ids(*rules, NextRuleId());
  const std::uint32_t id = ids.Take();
  Publish(std::move(rules), ids.Next());
  return id;
}

bool RuleStore::Load(const std::wstring& path) {
  std::lock_guard writer(writers_);
  std::optional<RuleList> rules;
  const std::optional<std::wstring> text = ReadTextFile(path);
  if (text) {
    rules = ParseRulesCsv(*text);
  } else {
    DebugLog(L"RuleStore::Load - Could not open %ls", path.c_str());
  }
  const auto loaded = std::make_shared<const RuleList>(rules ? std::move(*rules) : RuleList());
  std::uint32_t highestId = 0;
  for (const ThresholdRule& rule : *loaded) highestId = std::max(highestId, rule.ruleId);
  Publish(loaded, RuleIdSource(*loaded, highestId + 1).Next());
  if (rules) DebugLog(L"RuleStore::Load - Loaded %u rules from %ls", CountOf(*loaded), path.c_str());
  return rules.has_value();
}

bool RuleStore::Save(const std::wstring& path) const {
  std::lock_guard writer(writers_);
  return SaveRules(path, *Snapshot());
}

bool RuleStore::SaveAndClose(const std::wstring& path) {
  std::lock_guard writer(writers_);
  closed_ = true;
  return SaveRules(path, *Snapshot());
}

void RuleStore::Append(const RuleList& rules) {
  if (rules.empty()) return;
  (void)Change([&](RuleList& list, std::uint32_t&) {
    list.insert(list.end(), rules.begin(), rules.end());
    return true;
  });
}

bool RuleStore::Edit(std::uint32_t ruleId, const std::function<void(ThresholdRule&)>& edit) {
  return Change([&](RuleList& list, std::uint32_t&) {
    const auto rule = std::find_if(list.begin(), list.end(), [&](const ThresholdRule& each) { return each.ruleId == ruleId; });
    if (rule == list.end()) return false;
    edit(*rule);
    return true;
  });
}

void RuleStore::Remove(const std::vector<std::uint32_t>& ruleIds) {
  (void)Change([&](RuleList& list, std::uint32_t&) {
    const std::size_t before = list.size();
    for (const std::uint32_t ruleId : ruleIds) {
      const auto rule = std::find_if(list.begin(), list.end(), [&](const ThresholdRule& each) { return each.ruleId == ruleId; });
      if (rule != list.end()) list.erase(rule);
    }
    return list.size() != before;
  });
}

void RuleStore::RemoveAll() {
  (void)Change([](RuleList& list, std::uint32_t&) {
    list.clear();
    return true;
  });
}

bool RuleStore::ExportJson(const std::wstring& path) const {
  const RuleSnapshot rules = Snapshot();
  switch (WriteTextFile(path, FormatRulesJson(*rules))) {
    case WriteResult::kWritten:
      DebugLog(L"RuleStore::ExportJson - Exported %u rules to %ls", CountOf(*rules), path.c_str());
      return true;
    case WriteResult::kCannotOpen:
      DebugLog(L"RuleStore::ExportJson - Could not open %ls for writing", path.c_str());
      return false;
    case WriteResult::kWriteFailed:
      break;
  }
  DebugLog(L"RuleStore::ExportJson - Could not write %ls", path.c_str());
  return false;
}

bool RuleStore::ImportJson(const std::wstring& path) {
  const std::optional<std::wstring> text = ReadTextFile(path);
  if (!text) {
    DebugLog(L"RuleStore::ImportJson - Could not open %ls", path.c_str());
    return false;
  }
  return ImportJsonString(*text);
}

bool RuleStore::ImportJsonString(const std::wstring& text) {
  try {
    std::optional<RuleList> rules = ParseRulesJson(text);
    if (rules && !rules->empty()) return AppendImported(std::move(*rules));
    DebugLog(rules ? L"RuleStore::ImportJsonString - No valid rules found"
                   : L"RuleStore::ImportJsonString - No 'rules' array found");
  } catch (const std::bad_alloc&) {
    DebugLog(L"RuleStore::ImportJsonString - Out of memory");
  } catch (const std::length_error&) {
    DebugLog(L"RuleStore::ImportJsonString - Out of memory");
  }
  return false;
}

bool RuleStore::AppendImported(RuleList imported) {
  return Change([&](RuleList& list, std::uint32_t& nextRuleId) {
    RuleIdSource ids(list, nextRuleId);
    for (ThresholdRule& rule : imported) rule.ruleId = ids.Take();
    nextRuleId = ids.Next();
    list.insert(list.end(), std::make_move_iterator(imported.begin()), std::make_move_iterator(imported.end()));
    DebugLog(L"RuleStore::ImportJsonString - Imported %u rules", CountOf(imported));
    return true;
  });
}

bool RuleStore::Change(const std::function<bool(RuleList&, std::uint32_t& nextRuleId)>& edit) {
  std::lock_guard writer(writers_);
  if (closed_) return false;
  RuleList list = *Snapshot();
  std::uint32_t nextRuleId = NextRuleId();
  if (!edit(list, nextRuleId)) return false;
  nextRuleId = RuleIdSource(list, nextRuleId).Next();
  // Saved before it is published, and under the writers' mutex alone: readers go on with the old list meanwhile.
  const auto changed = std::make_shared<const RuleList>(std::move(list));
  (void)SaveRules(rulesFilePath_(), *changed);
  Publish(changed, nextRuleId);
  return true;
}

void RuleStore::Publish(RuleSnapshot list, std::uint32_t nextRuleId) {
  // The swapped-out list, when nobody else holds it any more, is freed after the lock.
  std::lock_guard lock(snapshotLock_);
  snapshot_.swap(list);
  nextRuleId_ = nextRuleId;
}

const ThresholdRule* FindRule(const RuleList& rules, std::uint32_t ruleId) {
  const auto rule = std::find_if(rules.begin(), rules.end(), [&](const ThresholdRule& each) { return each.ruleId == ruleId; });
  return rule == rules.end() ? nullptr : &*rule;
}

ThresholdRule MakeNewRule(std::uint32_t ruleId) {
  ThresholdRule rule;
  rule.ruleId = ruleId;
  return rule;
}
