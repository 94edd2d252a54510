#pragma once

// The program's one list of rules with the counter that hands out ids, and its file. Readers take immutable snapshots; a change
// edits a copy, saves the file and then publishes, as one step for every reader. The formats live in rules_csv and rules_json.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "core/records.h"

class RuleStore : public RuleSource {
 public:
  /// `rulesFilePath` is asked afresh before every save of a change.
  explicit RuleStore(std::function<std::wstring()> rulesFilePath);

  [[nodiscard]] RuleSnapshot Snapshot() const override;

  /// The id for a new rule; never handed out again in this run, never 0, never one in use.
  [[nodiscard]] std::uint32_t TakeRuleId();
  [[nodiscard]] std::uint32_t NextRuleId() const;

  /// Replaces the list by the file's rules. False (list empty, next id 1) when there is no file or it is empty.
  bool Load(const std::wstring& path);
  bool Save(const std::wstring& path) const;
  /// The program's last save: no change gets through after it. Windows may still be open on other threads while the process ends,
  /// and none of them may then be half-way through writing the file. A list that was never read from this path, although a file
  /// may be there (held by another program, too large for memory), is saved only when something has been changed.
  bool SaveAndClose(const std::wstring& path);

  // Changes. Each saves to the rules file and publishes once; a failed save is a diagnostic line and the change still holds.
  // Without effect once the store is closed. When memory runs out in one (std::bad_alloc), list and file are as they were.
  void Append(const RuleList& rules);
  /// Changes the first rule with the id; false when there is none. `edit` gets the rule of the moment
  /// and must not call the store.
  bool Edit(std::uint32_t ruleId, const std::function<void(ThresholdRule&)>& edit);
  /// For each id in turn removes the first rule that has it; unknown ids are skipped.
  void Remove(const std::vector<std::uint32_t>& ruleIds);
  /// The ids handed out stay used up.
  void RemoveAll();

  bool ExportJson(const std::wstring& path) const;
  /// True when at least one rule was appended; otherwise nothing changed.
  bool ImportJson(const std::wstring& path);
  bool ImportJsonString(const std::wstring& text);

 private:
  bool AppendImported(RuleList imported);
  /// Runs `edit` on a copy of the list; when it returns true the copy is saved and published.
  bool Change(const std::function<bool(RuleList&)>& edit);
  void Publish(RuleSnapshot list, std::uint32_t nextRuleId);

  std::function<std::wstring()> rulesFilePath_;
  mutable std::mutex writers_;  ///< one change at a time, from copy to publication
  mutable std::mutex snapshotLock_;
  RuleSnapshot snapshot_;
  std::uint32_t nextRuleId_ = 1;
  // Guarded by writers_.
  std::wstring readPath_;  ///< whose content, or absence, the list was when it was loaded; empty when it could not be read
  bool changed_ = false;   ///< since it was loaded
  bool closed_ = false;
};

/// A rule as Add Rule and the presets start from: enabled, no ceilings, notify and log, cooldown 60 s.
[[nodiscard]] ThresholdRule MakeNewRule(std::uint32_t ruleId);
