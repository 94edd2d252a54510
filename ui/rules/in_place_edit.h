#pragma once

// The small edit box over a cell of the rule list. It takes text and says, by UWM_END_INPLACE_EDIT to the main window, that the
// user is done with it; what the text means for a rule is not its business.

#include <windows.h>

#include <optional>
#include <string>

/// At most one box at a time. Main window's thread only.
class InPlaceEdit {
 public:
  struct Entry {
    int row;
    int column;
    std::wstring text;
    bool edited;  ///< by the user, since the box opened
  };

  InPlaceEdit() = default;
  InPlaceEdit(const InPlaceEdit&) = delete;
  InPlaceEdit& operator=(const InPlaceEdit&) = delete;

  [[nodiscard]] bool IsOpen() const { return box_ != nullptr; }
  /// Opens the box over the cell of `list`, a child of the window that is to be told, with the cell's text selected. No box may
  /// be open.
  void Start(HWND list, int row, int column);
  /// What is typed and where; empty when no box is open.
  [[nodiscard]] std::optional<Entry> Content() const;
  /// Destroys the box. Requests to end that are still on their way are taken back: they meant this box and must not end the next
  /// one.
  void Close();

 private:
  static LRESULT CALLBACK InPlaceEditSubclassProc(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                                  DWORD_PTR self) noexcept;
  void RequestEnd(bool commit) const;

  HWND window_ = nullptr;
  HWND box_ = nullptr;
  int row_ = -1;
  int column_ = -1;
  std::wstring shownText_;
};
