#include "tests/e2e/running_program.h"

#include <commctrl.h>

#include "app/messages.h"
#include "res/resource.h"

namespace e2e {

constexpr int kBoxTextId = 1001;

std::wstring FullPath(const wchar_t* path) {
  wchar_t full[MAX_PATH]{};
  ::GetFullPathNameW(path, MAX_PATH, full, nullptr);
  return full;
}

std::wstring ProgramPath() { return FullPath(VANTORA_EXE); }

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
  if (!process_ || WaitForExit(0)) return;
  ::TerminateProcess(process_.get(), 99);
  ::WaitForSingleObject(process_.get(), kPatienceMs);
}

std::optional<DWORD> RunningProgram::WaitForExit(DWORD timeoutMs) const {
  DWORD code = 0;
  if (!process_ || ::WaitForSingleObject(process_.get(), timeoutMs) != WAIT_OBJECT_0) return std::nullopt;
  if (!::GetExitCodeProcess(process_.get(), &code)) return std::nullopt;
  return code;
}

std::vector<HWND> RunningProgram::Windows(const wchar_t* windowClass) const {
  std::vector<HWND> windows;
  for (HWND window = nullptr; (window = ::FindWindowExW(nullptr, window, windowClass, nullptr)) != nullptr;) {
    DWORD processId = 0;
    ::GetWindowThreadProcessId(window, &processId);
    if (processId == id_) windows.push_back(window);
  }
  return windows;
}

std::vector<HWND> RunningProgram::VisibleWindows(const wchar_t* windowClass) const {
  std::vector<HWND> windows = Windows(windowClass);
  std::erase_if(windows, [](HWND window) { return !::IsWindowVisible(window); });
  return windows;
}

HWND RunningProgram::WaitForTray() const {
  return WaitForResult([&] {
    const auto windows = Windows(kTrayClass);
    return windows.empty() ? nullptr : windows.front();
  });
}

HWND RunningProgram::WaitForDialog(int controlId) const {
  return WaitForResult([&]() -> HWND {
    for (HWND window : VisibleWindows()) {
      if (::GetDlgItem(window, controlId) != nullptr) return window;
    }
    return nullptr;
  });
}

HWND RunningProgram::WaitForMainWindow() const { return WaitForDialog(IDC_RULE_LIST); }

HWND RunningProgram::WaitForBox(const std::wstring& caption, const std::wstring& text) const {
  return WaitForResult([&]() -> HWND {
    for (HWND box : VisibleWindows()) {
      if (TextOf(box) == caption && TextOf(::GetDlgItem(box, kBoxTextId)).starts_with(text)) return box;
    }
    return nullptr;
  });
}

bool RunningProgram::AnswerBox(const std::wstring& caption, const std::wstring& text, int buttonId) const {
  HWND box = WaitForBox(caption, text);
  ::PostMessageW(::GetDlgItem(box, buttonId), BM_CLICK, 0, 0);
  return box != nullptr && WaitUntil([&] { return !::IsWindow(box); });
}

bool RunningProgram::OpenTrayMenu() const {
  PostToTray(UWM_TRAYICON, 0, WM_RBUTTONUP);
  return WaitUntil([&] { return !VisibleWindows(kMenuClass).empty(); });
}

void RunningProgram::ChooseFromTrayMenu(wchar_t mnemonic) const {
  if (OpenTrayMenu()) PostToTray(WM_CHAR, mnemonic, 0);
}

bool RunningProgram::End() const {
  PostToTray(UWM_TERMINATE, 0, 0);
  return WaitForExit() == 0u;
}

std::optional<DWORD> RunToEnd(const std::wstring& arguments) { return RunningProgram(arguments).WaitForExit(); }

std::wstring TextOf(HWND window) {
  wchar_t text[1024]{};
  ::SendMessageW(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
  return text;
}

void PostCommand(HWND dialog, int id) { ::PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

int ListRowCount(HWND list) { return static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)); }

}  // namespace e2e
