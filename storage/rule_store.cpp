#include "storage/rule_store.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "platform/diagnostics.h"
#include "platform/native_file.h"
#include "platform/out_of_memory.h"
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

/// Makes the text the file's content and says in `where`'s name how that went.
bool WriteRules(const wchar_t* where, const wchar_t* done, const std::wstring& path, const RuleList& rules,
                std::wstring (*format)(const RuleList&)) {
  const auto write = [&] { return WriteTextFile(path, format(rules)); };
  switch (UnlessOutOfMemory(where, WriteResult::kWriteFailed, write)) {
    case WriteResult::kWritten:
      DebugLog(L"%ls - %ls %u rules to %ls", where, done, CountOf(rules), path.c_str());
      return true;
    case WriteResult::kCannotOpen:
      DebugLog(L"%ls - Could not open %ls for writing", where, path.c_str());
      return false;
    case WriteResult::kWriteFailed:
      break;
  }
  DebugLog(L"%ls - Could not write %ls", where, path.c_str());
  return false;
}

bool SaveRules(const std::wstring& path, const RuleList& rules) {
  return WriteRules(L"RuleStore::Save", L"Saved", path, rules, FormatRulesCsv);
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
  changed_ = false;
  readPath_.clear();
  std::uint32_t nextRuleId = 1;
  bool found = false;
  auto loaded = std::make_shared<RuleList>();
  const bool read = UnlessOutOfMemory(L"RuleStore::Load", false, [&] {
    const std::optional<std::wstring> text = ReadTextFile(path);
    if (!text) {
      DebugLog(L"RuleStore::Load - Could not open %ls", path.c_str());
      return IsMissingFile(path);
    }
    std::optional<RuleList> rules = ParseRulesCsv(*text);
    if (!rules) return true;
    std::uint32_t highestId = 0;
    for (const ThresholdRule& rule : *rules) highestId = std::max(highestId, rule.ruleId);
    nextRuleId = RuleIdSource(*rules, highestId + 1).Next();
    loaded->swap(*rules);
    found = true;
    return true;
  });
  if (read) readPath_ = path;
  if (found) DebugLog(L"RuleStore::Load - Loaded %u rules from %ls", CountOf(*loaded), path.c_str());
  Publish(std::move(loaded), nextRuleId);
  return found;
}

bool RuleStore::Save(const std::wstring& path) const {
  std::lock_guard writer(writers_);
  return SaveRules(path, *Snapshot());
}

bool RuleStore::SaveAndClose(const std::wstring& path) {
  std::lock_guard writer(writers_);
  closed_ = true;
  if (changed_ || path == readPath_) return SaveRules(path, *Snapshot());
  // The file may hold rules that this run never saw.
  DebugLog(L"RuleStore::SaveAndClose - Left %ls as it is", path.c_str());
  return false;
}

void RuleStore::Append(const RuleList& rules) {
  if (rules.empty()) return;
  (void)Change([&](RuleList& list) {
    list.insert(list.end(), rules.begin(), rules.end());
    return true;
  });
}

bool RuleStore::Edit(std::uint32_t ruleId, const std::function<void(ThresholdRule&)>& edit) {
  return Change([&](RuleList& list) {
    const auto rule = std::ranges::find(list, ruleId, &ThresholdRule::ruleId);
    if (rule == list.end()) return false;
    edit(*rule);
    return true;
  });
}

void RuleStore::Remove(const std::vector<std::uint32_t>& ruleIds) {
  (void)Change([&](RuleList& list) {
    const std::size_t before = list.size();
    for (const std::uint32_t ruleId : ruleIds) {
      const auto rule = std::ranges::find(list, ruleId, &ThresholdRule::ruleId);
      if (rule != list.end()) list.erase(rule);
    }
    return list.size() != before;
  });
}

void RuleStore::RemoveAll() {
  (void)Change([](RuleList& list) {
    list.clear();
    return true;
  });
}

bool RuleStore::ExportJson(const std::wstring& path) const {
  return WriteRules(L"RuleStore::ExportJson", L"Exported", path, *Snapshot(), FormatRulesJson);
}

bool RuleStore::ImportJson(const std::wstring& path) {
  const std::optional<std::wstring> text = ReadTextFile(path, CtrlZ::kIsText);
  if (!text) {
    DebugLog(L"RuleStore::ImportJson - Could not open %ls", path.c_str());
    return false;
  }
  return ImportJsonString(*text);
}

bool RuleStore::ImportJsonString(const std::wstring& text) {
  return UnlessOutOfMemory(L"RuleStore::ImportJsonString", false, [&] {
    std::optional<RuleList> rules = ParseRulesJson(text);
    if (rules && !rules->empty()) return AppendImported(std::move(*rules));
    DebugLog(rules ? L"RuleStore::ImportJsonString - No valid rules found"
                   : L"RuleStore::ImportJsonString - No 'rules' array found");
    return false;
  });
}

bool RuleStore::AppendImported(RuleList imported) {
  return Change([&](RuleList& list) {
    RuleIdSource ids(list, NextRuleId());
    for (ThresholdRule& rule : imported) rule.ruleId = ids.Take();
    list.insert(list.end(), std::make_move_iterator(imported.begin()), std::make_move_iterator(imported.end()));
    DebugLog(L"RuleStore::ImportJsonString - Imported %u rules", CountOf(imported));
    return true;
  });
}

bool RuleStore::Change(const std::function<bool(RuleList&)>& edit) {
  std::lock_guard writer(writers_);
  if (closed_) return false;
  RuleList list = *Snapshot();
  if (!edit(list)) return false;
  const std::uint32_t nextRuleId = RuleIdSource(list, NextRuleId()).Next();
  // Saved before it is published, and under the writers' mutex alone: readers go on with the old list meanwhile.
  const auto changed = std::make_shared<const RuleList>(std::move(list));
  changed_ = true;
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

ThresholdRule MakeNewRule(std::uint32_t ruleId) {
  ThresholdRule rule;
  rule.ruleId = ruleId;
  return rule;
}
