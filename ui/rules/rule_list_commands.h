#pragma once

// What the main window's commands and the rule list's own notifications do to the rules: add, edit, remove, presets, exchange,
// and editing in place. Every change is saved and published by the store before the list shows it.

#include <windows.h>

#include "ui/program.h"
#include "ui/rules/in_place_edit.h"
#include "ui/rules/rule_list_view.h"

/// Main window's thread only; lives as long as the window.
class RuleListCommands {
 public:
  explicit RuleListCommands(Program& program) : program_(program), list_(program.rules) {}

  void OnInitDialog(HWND dialog);
  void Refresh() { list_.Refresh(); }
  /// True when the command was one of these.
  bool OnCommand(WORD id);
  /// True when the notification came from the rule list and was handled.
  bool OnNotify(const NMHDR& header);
  /// Closes the edit box over a cell, if one is open.
  void EndInPlaceEdit(bool commit);

 private:
  void OnAdd();
  void OnEdit();
  void OnRemove();
  void OnPresets();
  void OnImport();
  void OnExport();
  void OnDoubleClick(int row, int column);
  /// Changes the row's rule as the cell's text says, saves, and rewrites that cell alone. Nothing when the rule is gone.
  void ApplyCell(int row, int column, const std::wstring& text);
  [[nodiscard]] bool ConfirmRemove(std::size_t count) const;

  Program& program_;
  RuleListView list_;
  InPlaceEdit inPlaceEdit_;
  HWND dialog_ = nullptr;
};
