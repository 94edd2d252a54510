// Usage: screenshot_scenes <scene> <ready file>
//
// Opens one window of the program over made-up rules and alerts, writes the ready file when there is something to look at, and
// ends when the file is deleted. Without arguments writes the names of all scenes to scenes.txt.

#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string_view>

#include "res/resource.h"
#include "tests/ui/test_program.h"
#include "tests/ui/window_driver.h"
#include "ui/about_dialog.h"
#include "ui/dark_mode.h"
#include "ui/dialog_utilities.h"
#include "ui/exclusions_dialog.h"
#include "ui/message_box.h"
#include "ui/rule_editor.h"
#include "ui/update_windows.h"
#include "ui/windows_of_program.h"

namespace {

constexpr UINT kAskRemove = MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2;

void FillProgram(TestProgram& test) {
  struct Row {
    const wchar_t* pattern;
    bool enabled;
    std::uint32_t handles;
    std::uint64_t workingSetMb;
    double cpu;
    std::uint32_t threads;
    std::uint32_t gdi;
  };
  constexpr Row kRows[] = {{L"chrome.exe", true, 0, 2048, 0.0, 0, 0},
                           {L"*", true, 0, 0, 80.0, 0, 0},
                           {L"explorer.exe", true, 10000, 0, 0.0, 0, 5000},
                           {L"build-?.exe", false, 0, 4096, 95.0, 500, 0},
                           {L"a process with a very long pattern*.exe", true, 100000, 131072, 50.0, 1000, 9999}};
  RuleList rules;
  for (const Row& row : kRows) {
    ThresholdRule rule = MakeNewRule(test.rules.TakeRuleId());
    rule.processPattern = row.pattern;
    rule.enabled = row.enabled;
    rule.maxHandles = row.handles;
    rule.maxWorkingSet = row.workingSetMb * kBytesPerMb;
    rule.maxCpuPercent = row.cpu;
    rule.maxThreads = row.threads;
    rule.maxGdiObjects = row.gdi;
    rules.push_back(rule);
  }
  test.rules.Append(rules);
  for (std::uint32_t i = 0; i < 30; ++i) {
    test.recentAlerts.Append({{2026, 3, 4, 5, 9, static_cast<std::uint16_t>(i), 3, 0},
                              1000 + i * 4,
                              L"chrome.exe",
                              1,
                              i % 3 == 0 ? L"Working Set: 2310 MB > 2048 MB; Handles: 1200 > 1000" : L"CPU: 91.5% > 80.0%"});
  }
  test.settings.Update([](AppSettings& settings) {
    settings.logFilePath = L"C:\\users\\someone\\AppData\\Roaming\\Vantora\\alerts.log";
    settings.soundFilePath = L"C:\\windows\\media\\chord.wav";
  });
  test.engine.SetExclusions({L"backup.exe", L"indexer.exe", L"compiler.exe"});
  test.updates.SetLatestVersion(L"0.0.2.9");
}

/// What a scene has to work with once its window's thread runs.
struct Stage {
  TestProgram& test;
  WindowThread& windows;
  [[nodiscard]] HWND Main() const { return windows.WaitForDialog(kMainWindowTitle); }
};

void OpenMain(TestProgram& test) { MainDialogThread(test.program); }

void OpenEditor(TestProgram& test) {
  ThresholdRule rule = (*test.rules.Snapshot())[2];
  (void)RunRuleEditor(test.program.instance, nullptr, rule);
}

void OpenProgress(TestProgram& test) {
  UpdateProgressDialog dialog(test.program.instance);
  dialog.Open();
  MSG message{};
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
}

void ShowSettingsPage(const Stage& stage) { ::SendDlgItemMessageW(stage.Main(), IDC_TABS, TCM_SETCURFOCUS, 1, 0); }

/// Opens the menu bar's popup by its mnemonic.
template <wchar_t Mnemonic>
void OpenMenu(const Stage& stage) {
  ::PostMessageW(stage.Main(), WM_SYSCOMMAND, SC_KEYMENU, Mnemonic);
  (void)stage.windows.WaitForMenu();
}

void OpenPresets(const Stage& stage) {
  PostCommand(stage.Main(), IDC_PRESETS);
  (void)stage.windows.WaitForMenu();
}

void EditCell(const Stage& stage) {
  NMITEMACTIVATE click{};
  click.hdr = {::GetDlgItem(stage.Main(), IDC_RULE_LIST), IDC_RULE_LIST, static_cast<UINT>(NM_DBLCLK)};
  click.iItem = 2;
  click.iSubItem = 1;
  ::SendMessageW(stage.Main(), WM_NOTIFY, IDC_RULE_LIST, reinterpret_cast<LPARAM>(&click));
}

void Move(const wchar_t* title, int x, int y) {
  HWND window = nullptr;
  WaitUntil([&] { return (window = ::FindWindowW(L"#32770", title)) != nullptr; });
  ::SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

template <UINT Text, UINT Caption, UINT Style>
void OpenBox(TestProgram&) {
  XMessageBox(nullptr, MAKEINTRESOURCEW(Text), MAKEINTRESOURCEW(Caption), Style);
}

/// The system's own box above ours with the same content.
void ShowSystemBox(const Stage&) {
  std::thread([] {
    const std::wstring text = LoadResString(IDS_ASK_REMOVE_ONE);
    ::MessageBoxW(nullptr, text.c_str(), L"System", kAskRemove);
  }).detach();
  Move(L"System", 400, 300);
  Move(LoadResString(IDS_CONFIRM_REMOVE_TITLE).c_str(), 400, 480);
}

struct Scene {
  const char* name;
  void (*open)(TestProgram& test);      ///< on the window's thread, until the window closes
  void (*prepare)(const Stage& stage);  ///< on another thread, before the picture; may be null
};

constexpr Scene kScenes[] = {
    {"main-recent-alerts", &OpenMain, nullptr},
    {"main-settings", &OpenMain, &ShowSettingsPage},
    {"main-in-place-edit", &OpenMain, &EditCell},
    {"main-menu-file", &OpenMain, &OpenMenu<L'f'>},
    {"main-menu-rules", &OpenMain, &OpenMenu<L'r'>},
    {"main-menu-monitoring", &OpenMain, &OpenMenu<L'm'>},
    {"main-menu-settings", &OpenMain, &OpenMenu<L's'>},
    {"main-menu-help", &OpenMain, &OpenMenu<L'h'>},
    {"main-menu-presets", &OpenMain, &OpenPresets},
    {"rule-editor", &OpenEditor, nullptr},
    {"alert-log", [](TestProgram& test) { AlertLogDialogThread(test.program); }, nullptr},
    {"exclusions", [](TestProgram& test) { RunExclusionsDialog(nullptr, test.program); }, nullptr},
    {"about", [](TestProgram& test) { RunAboutDialog(nullptr, test.program); }, nullptr},
    {"update-progress", &OpenProgress, nullptr},
    {"message-box-confirm", &OpenBox<IDS_ASK_REMOVE_ONE, IDS_CONFIRM_REMOVE_TITLE, kAskRemove>, nullptr},
    {"message-box-question", &OpenBox<IDS_ASK_CLIPBOARD_IMPORT, IDS_IMPORT_TITLE, MB_YESNOCANCEL | MB_ICONQUESTION>, nullptr},
    {"message-box-information", &OpenBox<IDS_EXPORT_OK, IDS_APP_TITLE, MB_ICONINFORMATION>, nullptr},
    {"message-box-error", &OpenBox<IDS_UPDATE_FAILED, IDS_UPDATE_ERROR_TITLE, MB_ICONERROR | MB_SETFOREGROUND>, nullptr},
    {"message-box-beside-system", &OpenBox<IDS_ASK_REMOVE_ONE, IDS_CONFIRM_REMOVE_TITLE, kAskRemove>, &ShowSystemBox},
};

/// Has every dialog of the process paint itself now, however busy the machine is.
void PaintAll() {
  for (HWND window = nullptr; (window = ::FindWindowExW(nullptr, window, L"#32770", nullptr)) != nullptr;) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window)) {
      ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
  }
}

void WriteFile(const wchar_t* path, const std::string& text) {
  if (std::FILE* file = ::_wfopen(path, L"w")) {
    std::fputs(text.c_str(), file);
    std::fclose(file);
  }
}

int Show(const Scene& scene, const wchar_t* readyFile) {
  InitDarkMode();
  static TestProgram test;
  FillProgram(test);
  WindowThread windows([&scene] { scene.open(test); });
  if (!WaitUntil([] { return ::FindWindowW(L"#32770", nullptr) != nullptr; })) return 2;
  if (scene.prepare != nullptr) scene.prepare({test, windows});
  ::Sleep(500);  // until the window manager has placed and framed everything
  PaintAll();
  ::Sleep(700);
  WriteFile(readyFile, "ready\n");
  WaitUntil([readyFile] { return ::GetFileAttributesW(readyFile) == INVALID_FILE_ATTRIBUTES; });
  // Not every window can be closed without an answer, and nothing here is worth keeping.
  ::TerminateProcess(::GetCurrentProcess(), 0);
  return 0;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
  const INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_WIN95_CLASSES | ICC_LINK_CLASS | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&controls);
  std::string names;
  for (const Scene& scene : kScenes) {
    const std::string_view name = scene.name;
    names += std::string(name) + "\n";
    if (__argc == 3 && std::wstring(name.begin(), name.end()) == __wargv[1]) return Show(scene, __wargv[2]);
  }
  if (__argc != 1) return 1;
  WriteFile(L"scenes.txt", names);
  return 0;
}
