#include "tests/e2e/running_program.h"

#include <commctrl.h>

#include "app/messages.h"
#include "res/resource.h"

namespace e2e {

namespace {

constexpr UINT kAnswerTimeoutMs = 5'000;

/// 0 when the window does not answer.
LRESULT Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  DWORD_PTR result = 0;
  if (::SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kAnswerTimeoutMs, &result) == 0) return 0;
  return static_cast<LRESULT>(result);
}

struct WindowSearch {
  DWORD processId;
  const wchar_t* windowClass;
  const wchar_t* title;
  bool visibleOnly;
  HWND found;
};

BOOL CALLBACK MatchWindow(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<WindowSearch*>(parameter);
  DWORD processId = 0;
  ::GetWindowThreadProcessId(window, &processId);
  wchar_t windowClass[64]{};
  ::GetClassNameW(window, windowClass, static_cast<int>(std::size(windowClass)));
  if (processId != search.processId || ::wcscmp(windowClass, search.windowClass) != 0) return TRUE;
  if (search.visibleOnly && !::IsWindowVisible(window)) return TRUE;
  if (search.title != nullptr && TextOf(window) != search.title) return TRUE;
  search.found = window;
  return FALSE;
}

HWND FindProcessWindow(DWORD processId, const wchar_t* windowClass, const wchar_t* title, bool visibleOnly) {
  WindowSearch search{processId, windowClass, title, visibleOnly, nullptr};
  ::EnumWindows(&MatchWindow, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

}  // namespace

std::wstring ProgramPath() {
  wchar_t path[MAX_PATH]{};
  ::GetFullPathNameW(VANTORA_EXE, MAX_PATH, path, nullptr);
  return path;
}

RunningProgram::RunningProgram(const std::wstring& arguments, const std::wstring& path) {
  std::wstring commandLine = L"\"" + path + L"\" " + arguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started{};
  if (!::CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started))
    return;
  ::CloseHandle(started.hThread);
  process_.reset(started.hProcess);
  id_ = started.dwProcessId;
}

RunningProgram::~RunningProgram() {
  if (!IsRunning()) return;
  ::TerminateProcess(process_.get(), 99);
  ::WaitForSingleObject(process_.get(), kPatienceMs);
}

bool RunningProgram::IsRunning() const { return process_ && ::WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT; }

std::optional<DWORD> RunningProgram::WaitForExit(DWORD timeoutMs) const {
  DWORD code = 0;
  if (!process_ || ::WaitForSingleObject(process_.get(), timeoutMs) != WAIT_OBJECT_0) return std::nullopt;
  if (!::GetExitCodeProcess(process_.get(), &code)) return std::nullopt;
  return code;
}

HWND RunningProgram::WaitForTray(DWORD timeoutMs) const {
  return WaitForResult([&] { return FindProcessWindow(id_, kTrayClass, kTrayTitle, false); }, timeoutMs);
}

HWND RunningProgram::FindVisibleWindow(const wchar_t* windowClass, const wchar_t* title) const {
  return FindProcessWindow(id_, windowClass, title, true);
}

HWND RunningProgram::WaitForWindow(const wchar_t* windowClass, const wchar_t* title, DWORD timeoutMs) const {
  return WaitForResult([&] { return FindVisibleWindow(windowClass, title); }, timeoutMs);
}

HWND RunningProgram::FindMainWindow() const {
  struct Search {
    DWORD processId;
    HWND found;
  } search{id_, nullptr};
  ::EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& wanted = *reinterpret_cast<Search*>(parameter);
        DWORD processId = 0;
        ::GetWindowThreadProcessId(window, &processId);
        if (processId != wanted.processId || !::IsWindowVisible(window)) return TRUE;
        if (::GetDlgItem(window, IDC_RULE_LIST) == nullptr) return TRUE;
        wanted.found = window;
        return FALSE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND RunningProgram::WaitForMainWindow(DWORD timeoutMs) const {
  return WaitForResult([&] { return FindMainWindow(); }, timeoutMs);
}

bool RunningProgram::OpenTrayMenu() const {
  ::PostMessageW(WaitForTray(), UWM_TRAYICON, 0, WM_RBUTTONUP);
  return WaitForWindow(kMenuClass, nullptr) != nullptr;
}

bool RunningProgram::DismissMenu() const {
  ::PostMessageW(WaitForTray(), WM_CANCELMODE, 0, 0);
  return WaitUntil([&] { return FindVisibleWindow(kMenuClass, nullptr) == nullptr; });
}

bool RunningProgram::ChooseFromTrayMenu(wchar_t mnemonic) const {
  if (!OpenTrayMenu()) return false;
  ::PostMessageW(WaitForTray(), WM_CHAR, mnemonic, 0);
  return WaitUntil([&] { return FindVisibleWindow(kMenuClass, nullptr) == nullptr; });
}

bool RunningProgram::End() const {
  HWND tray = WaitForTray();
  return tray != nullptr && ::PostMessageW(tray, UWM_TERMINATE, 0, 0) && WaitForExit() == 0u;
}

std::optional<DWORD> RunToEnd(const std::wstring& arguments) { return RunningProgram(arguments).WaitForExit(); }

std::wstring TextOf(HWND window) {
  wchar_t text[1024]{};
  Ask(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
  return text;
}

std::wstring ItemTextOf(HWND dialog, int controlId) { return TextOf(::GetDlgItem(dialog, controlId)); }

void PostCommand(HWND dialog, int id) { ::PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

void PostClick(HWND dialog, int controlId) { ::PostMessageW(::GetDlgItem(dialog, controlId), BM_CLICK, 0, 0); }

int ListRowCount(HWND list) { return static_cast<int>(Ask(list, LVM_GETITEMCOUNT, 0, 0)); }

}  // namespace e2e
