#pragma once

// The rule list of the main window: shows the store's rules, row i the rule at position i, and says which rules the user means.
// Every row carries its rule's id, and only by that is a rule ever found again: the list may have changed since the row was made.

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "storage/rule_store.h"

/// Main window's thread only. A dialog without the list is left alone.
class RuleListView {
 public:
  explicit RuleListView(const RuleStore& rules) : rules_(rules) {}

  /// Makes the columns and shows the rules.
  void OnInitDialog(HWND dialog);
  /// Rebuilds the rows. The selection is lost; the keyboard's row and the scroll position stay where rows are left for them.
  void Refresh();
  /// The same, for rules that have been added behind the `before` ones: the keyboard goes to the first of them, in view.
  void RefreshAdded(std::size_t before);

  [[nodiscard]] HWND Window() const { return list_; }
  /// Top to bottom.
  [[nodiscard]] std::vector<std::uint32_t> SelectedRuleIds() const;
  [[nodiscard]] std::optional<std::uint32_t> RuleIdOfRow(int row) const;

 private:
  const RuleStore& rules_;
  HWND list_ = nullptr;
};
