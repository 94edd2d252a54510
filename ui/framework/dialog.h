#pragma once

// The one base of all dialogs: binds the object to its window at WM_INITDIALOG, routes messages to handlers, and owns what every
// dialog has: icons, dark colours, anchors, minimum size. A dialog is a resource, a class with state, and handlers.

#include <windows.h>

#include <commctrl.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ui/dark/dark_dialog.h"
#include "ui/framework/anchors.h"

/// Used on the thread that opens it. Not movable: the window points at it. A handler that runs out of memory has handled nothing;
/// an OnInitDialog that does ends the dialog.
class Dialog {
 public:
  virtual ~Dialog();
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  /// Runs the dialog until End; -1 when it could not be created.
  INT_PTR RunModal(HWND owner);
  /// Creates it without waiting; the caller destroys the window and keeps the object longer than it. Null on failure.
  HWND CreateModeless(HWND owner);

  [[nodiscard]] HWND Window() const { return window_; }

 protected:
  static constexpr WORD kNoTemplate = 0;  ///< no resource, and no icons: the dialog is made by CreateFrom
  Dialog(HINSTANCE instance, WORD templateId);
  /// As CreateModeless, from a template in memory.
  HWND CreateFrom(std::span<const std::byte> dialogTemplate, HWND owner);

  /// WM_INITDIALOG; icons are set already. True: the system puts the focus on the first control.
  virtual bool OnInitDialog() = 0;
  /// WM_COMMAND by id and notification code. The default ends with OK and Cancel.
  virtual bool OnCommand(WORD id, WORD notification);
  /// WM_NOTIFY; what it returns is the dialog procedure's result.
  virtual INT_PTR OnNotify(const NMHDR& header);
  virtual void OnTimer(UINT_PTR timerId);
  /// Any other message, and WM_SIZE and WM_GETMINMAXINFO once the base has done its part; empty: not handled.
  virtual std::optional<INT_PTR> OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
  /// WM_DESTROY.
  virtual void OnDestroy();

  /// Ends a modal dialog with the result. A modeless one has no result and overrides OnCommand.
  void End(INT_PTR result);
  /// For messages whose sender reads a value: leaves it in the window and returns what the handler then returns.
  [[nodiscard]] INT_PTR Reply(LRESULT result) const;

  [[nodiscard]] HINSTANCE Instance() const { return instance_; }
  /// Null when the dialog has no such control; all helpers below then do nothing.
  [[nodiscard]] HWND Item(int id) const;
  /// At most maxChars characters, the terminator not counted.
  [[nodiscard]] std::wstring ItemText(int id, std::size_t maxChars) const;
  void SetItemText(int id, const std::wstring& text) const;
  void SetChecked(int id, bool checked) const;
  [[nodiscard]] bool IsChecked(int id) const;
  void ShowItem(int id, bool shown) const;

  /// Dark mode for the dialog and the listed controls, with the program's two colours; without effect where dark mode is
  /// unavailable. `menuBar`: the dialog has a menu bar, which is drawn dark too.
  void ApplyDarkMode(std::span<const int> controlIds, DarkMenuBar menuBar = DarkMenuBar::kNone);

  /// The client area that the template asks for; the system makes a window no larger than the screen.
  [[nodiscard]] SIZE TemplateClient() const;
  /// From now on resizing moves the controls by the table and the window cannot become smaller than it is, `extraMinHeightPx`
  /// added. `eraseOnResize`: whether the invalidation after a resize erases.
  void StartLayout(std::span<const AnchorRow> rows, int extraMinHeightPx, bool eraseOnResize);
  /// Shrinks a resizable window that is larger than its monitor's work area to it, at its opening, after StartLayout; what fits
  /// stays as it is.
  void FitWorkArea();

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  INT_PTR Handle(UINT message, WPARAM wParam, LPARAM lParam);
  void OnSize(WPARAM kind);

  HINSTANCE instance_;
  WORD templateId_;
  HWND window_ = nullptr;
  SIZE initialClient_{};
  SIZE minTrack_{};
  std::int32_t givable_ = 0;  ///< the height that controls can lose for others
  std::int32_t strip_ = 0;    ///< the height that nobody needs, below the lowest controls
  bool eraseOnResize_ = true;
  std::vector<LayoutAnchor> anchors_;
};
