#include "ui/main_window/shortcuts.h"

#include <commctrl.h>

#include "res/resource.h"

namespace {

constexpr wchar_t kWindowMark[] = L"VantoraShortcuts";

enum class Where { kOutsideEditBoxes, kInRuleListWithSelection };

struct Shortcut {
  WPARAM key;
  bool withCtrl;
  Where where;
  WORD command;
};

// Del belongs to the rule list's own notifications, Alt+F4 to the system.
constexpr Shortcut kShortcuts[] = {
    {VK_INSERT, false, Where::kOutsideEditBoxes, IDM_ADD_RULE},
    {VK_RETURN, false, Where::kInRuleListWithSelection, IDM_EDIT_RULE},
    {'I', true, Where::kOutsideEditBoxes, IDM_IMPORT_RULES},
    {'E', true, Where::kOutsideEditBoxes, IDM_EXPORT_RULES},
};

bool IsDown(int key) { return ::GetKeyState(key) < 0; }

bool IsEditBox(HWND window) {
  wchar_t name[16] = {};
  ::GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return ::lstrcmpiW(name, WC_EDITW) == 0;
}

bool Applies(const Shortcut& shortcut, HWND ruleList, HWND focus) {
  if (shortcut.where == Where::kOutsideEditBoxes) return !IsEditBox(focus);
  return focus == ruleList && ::SendMessageW(ruleList, LVM_GETSELECTEDCOUNT, 0, 0) > 0;
}

/// True when the message was a shortcut of the main window.
bool TranslateShortcut(const MSG& message) {
  if (message.message != WM_KEYDOWN || IsDown(VK_SHIFT) || IsDown(VK_MENU)) return false;
  // Dialogs and boxes that the main window has opened share its thread.
  HWND window = ::GetAncestor(message.hwnd, GA_ROOT);
  if (::GetPropW(window, kWindowMark) == nullptr) return false;
  HWND ruleList = ::GetDlgItem(window, IDC_RULE_LIST);
  for (const Shortcut& shortcut : kShortcuts) {
    if (shortcut.key != message.wParam || shortcut.withCtrl != IsDown(VK_CONTROL)) continue;
    if (!Applies(shortcut, ruleList, message.hwnd)) return false;
    // Posted, not sent: the command may run a dialog, which must not happen inside the hook.
    ::PostMessageW(window, WM_COMMAND, MAKEWPARAM(shortcut.command, 1), 0);
    return true;
  }
  return false;
}

LRESULT CALLBACK OnMessageFilter(int code, WPARAM wParam, LPARAM lParam) noexcept {
  if (code == MSGF_DIALOGBOX && TranslateShortcut(*reinterpret_cast<const MSG*>(lParam))) return TRUE;
  return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

}  // namespace

void MainWindowShortcuts::Remove(HWND window) {
  hook_.reset();
  ::RemovePropW(window, kWindowMark);
}

void MainWindowShortcuts::Install(HWND window) {
  // The hook's routine knows the window by this; it goes when the window goes.
  ::SetPropW(window, kWindowMark, window);
  hook_.reset(::SetWindowsHookExW(WH_MSGFILTER, &OnMessageFilter, nullptr, ::GetCurrentThreadId()));
}
