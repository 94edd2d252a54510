// Usage: screenshot_scenes <scene> <ready file>
//
// Opens one window of the program over made-up rules and alerts, writes the ready file when there is something to look at, and
// ends when the file is deleted. Without arguments writes the names of all scenes to scenes.txt.

#include <windows.h>

#include <string>
#include <thread>

#include "app/tray_window.h"
#include "platform/file.h"
#include "platform/text_file.h"
#include "res/messages.h"
#include "res/resource.h"
#include "tests/support/test_program.h"
#include "tests/support/window_driver.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dark/dark_mode.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/dialogs/exclusions_dialog.h"
#include "ui/dialogs/update_progress_dialog.h"
#include "ui/framework/resources.h"
#include "ui/main_window/main_window_thread.h"
#include "ui/message_box/message_box.h"
#include "ui/rules/rule_editor.h"

namespace {

constexpr UINT kAskRemove = MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2;

constexpr wchar_t kRules[] =
    L"Id,Pattern,Enabled,Handles,WS,PB,CPU,Threads,GDI,USER,Actions,Cooldown\n"
    L"1,chrome.exe,1,0,2048,0,0,0,0,0,3,60\n"
    L"2,*,1,0,0,0,80,0,0,0,3,60\n"
    L"3,explorer.exe,1,10000,0,0,0,0,5000,0,3,60\n"
    L"4,build-?.exe,0,0,4096,0,95,500,0,0,3,60\n"
    L"5,a process with a very long pattern*.exe,1,100000,131072,0,50,1000,9999,0,3,60\n";

void FillProgram(TestProgram& test) {
  (void)WriteTextFile(test.folder.Path(L"rules.csv"), kRules);
  (void)test.rules.Load(test.folder.Path(L"rules.csv"));
  for (std::uint16_t i = 0; i < 30; ++i) {
    const wchar_t* violation = i % 3 == 0 ? L"Working Set: 2310 MB > 2048 MB; Handles: 1200 > 1000" : L"CPU: 91.5% > 80.0%";
    test.recentAlerts.Append({{2026, 3, 4, 5, 9, i, 3, 0}, 1000U + i * 4U, L"chrome.exe", 1, violation});
  }
  test.settings.Update([](AppSettings& settings) {
    settings.logFilePath = L"C:\\users\\someone\\AppData\\Roaming\\Vantora\\alerts.log";
    settings.soundFilePath = L"C:\\windows\\media\\chord.wav";
  });
  test.engine.SetExclusions({L"backup.exe", L"indexer.exe", L"compiler.exe"});
  test.updates.SetLatestVersion(L"0.0.2.9");
}

void OpenEditor(Program& program) {
  ThresholdRule rule = (*program.rules.Snapshot())[2];
  (void)RunRuleEditor(program.instance, nullptr, rule);
}

template <UINT Text, UINT Caption, UINT Style>
void OpenBox(Program&) {
  XMessageBox(nullptr, MAKEINTRESOURCEW(Text), MAKEINTRESOURCEW(Caption), Style);
}

/// The tray window, until the picture is taken. No update is looked for: its balloon would come into the picture.
void RunTray(Program& program, void (*prepare)(HWND tray, IAlertSink& sink)) {
  GUIAlertSink sink;
  const InstanceName name{L"VantoraScene", L"Vantora"};
  const TrayRoutines nothing{[] {}, [] {}, [] {}, [](Event&) {}};
  TrayWindow tray(program, sink, nothing, [](LPCWSTR, HMODULE, DWORD) -> BOOL { return TRUE; });
  if (!TrayWindow::RegisterWindowClass(program.instance, name.windowClass) || tray.Create(name) == nullptr) return;
  prepare(program.trayWindow, sink);
  for (MSG message{}; ::GetMessageW(&message, nullptr, 0, 0) > 0;) ::DispatchMessageW(&message);
}

void OpenTrayMenu(HWND tray, IAlertSink&) { ::PostMessageW(tray, UWM_TRAYICON, 0, WM_RBUTTONUP); }

void ShowBalloon(HWND tray, IAlertSink& sink) {
  ::SendMessageW(tray, UWM_ADD_ICON, 0, 0);
  std::thread([&sink] {
    ::Sleep(3000);  // until the icon is drawn
    sink.OnAlert({{2026, 3, 4, 5, 9, 7, 3, 0}, 1044, L"chrome.exe", 1, L"Working Set: 2310 MB > 2048 MB"});
  }).detach();
}

void ShowSettingsPage(HWND window) { ::SendDlgItemMessageW(window, IDC_TABS, TCM_SETCURFOCUS, 1, 0); }

/// Posts what opens a popup menu.
template <UINT Message, WPARAM First, LPARAM Second = 0>
void OpenPopup(HWND window) {
  ::PostMessageW(window, Message, First, Second);
  WaitForPopup();
}

void EditCell(HWND window) { NotifyDoubleClick(::GetDlgItem(window, IDC_RULE_LIST), 2, 1); }

/// The system's own box above ours with the same content.
void ShowSystemBox(HWND ours) {
  std::thread([] { ::MessageBoxW(nullptr, LoadResString(IDS_ASK_REMOVE_ONE).c_str(), L"System", kAskRemove); }).detach();
  HWND system = nullptr;
  WaitUntil([&system] { return (system = ::FindWindowW(kDialogClass, L"System")) != nullptr; });
  ::SetWindowPos(system, nullptr, 400, 300, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  ::SetWindowPos(ours, nullptr, 400, 480, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

struct Scene {
  const char* name;
  void (*open)(Program& program);  ///< on the window's thread, until the window closes
  void (*prepare)(HWND window);    ///< on another thread, before the picture; may be null
  const wchar_t* windowClass = kDialogClass;
};

constexpr Scene kScenes[] = {
    {"main-recent-alerts", &MainDialogThread, nullptr},
    {"main-settings", &MainDialogThread, &ShowSettingsPage},
    {"main-in-place-edit", &MainDialogThread, &EditCell},
    {"main-menu-file", &MainDialogThread, &OpenPopup<WM_SYSCOMMAND, SC_KEYMENU, L'f'>},
    {"main-menu-rules", &MainDialogThread, &OpenPopup<WM_SYSCOMMAND, SC_KEYMENU, L'r'>},
    {"main-menu-monitoring", &MainDialogThread, &OpenPopup<WM_SYSCOMMAND, SC_KEYMENU, L'm'>},
    {"main-menu-settings", &MainDialogThread, &OpenPopup<WM_SYSCOMMAND, SC_KEYMENU, L's'>},
    {"main-menu-help", &MainDialogThread, &OpenPopup<WM_SYSCOMMAND, SC_KEYMENU, L'h'>},
    {"main-menu-presets", &MainDialogThread, &OpenPopup<WM_COMMAND, IDC_PRESETS>},
    {"rule-editor", &OpenEditor, nullptr},
    {"alert-log", &AlertLogDialogThread, nullptr},
    {"exclusions", [](Program& program) { RunExclusionsDialog(nullptr, program); }, nullptr},
    {"about", [](Program& program) { RunAboutDialog(nullptr, program); }, nullptr},
    {"update-progress", [](Program& program) { UpdateProgressDialog(program.instance).RunModal(nullptr); }, nullptr},
    {"message-box-confirm", &OpenBox<IDS_ASK_REMOVE_ONE, IDS_CONFIRM_REMOVE_TITLE, kAskRemove>, nullptr},
    {"message-box-question", &OpenBox<IDS_ASK_CLIPBOARD_IMPORT, IDS_IMPORT_TITLE, MB_YESNOCANCEL | MB_ICONQUESTION>, nullptr},
    {"message-box-information", &OpenBox<IDS_EXPORT_OK, IDS_APP_TITLE, MB_ICONINFORMATION>, nullptr},
    {"message-box-error", &OpenBox<IDS_UPDATE_FAILED, IDS_UPDATE_ERROR_TITLE, MB_ICONERROR | MB_SETFOREGROUND>, nullptr},
    {"message-box-beside-system", &OpenBox<IDS_ASK_REMOVE_ONE, IDS_CONFIRM_REMOVE_TITLE, kAskRemove>, &ShowSystemBox},
    {"tray-menu", [](Program& program) { RunTray(program, &OpenTrayMenu); }, nullptr, kMenuClass},
    {"tray-balloon", [](Program& program) { RunTray(program, &ShowBalloon); }, nullptr, TOOLTIPS_CLASSW},
};

HWND VisibleWindow(const wchar_t* className) {
  HWND window = nullptr;
  do window = ::FindWindowExW(nullptr, window, className, nullptr);
  while (window != nullptr && !::IsWindowVisible(window));
  return window;
}

int Show(const Scene& scene, const wchar_t* readyFile) {
  InitDarkMode();
  static TestProgram test;
  FillProgram(test);
  const WindowThread thread([&scene] { scene.open(test.program); });
  HWND window = nullptr;
  if (!WaitUntil([&] { return (window = VisibleWindow(scene.windowClass)) != nullptr; })) return 2;
  if (scene.prepare != nullptr) scene.prepare(window);
  ::Sleep(500);  // until the window manager has placed and framed everything
  for (window = nullptr; (window = ::FindWindowExW(nullptr, window, kDialogClass, nullptr)) != nullptr;) {
    ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);  // now, however busy
  }
  ::Sleep(700);
  (void)WriteWholeFile(readyFile, "ready\n");
  WaitUntil([readyFile] { return ::GetFileAttributesW(readyFile) == INVALID_FILE_ATTRIBUTES; });
  // Not every window can be closed without an answer, and nothing here is worth keeping.
  ::TerminateProcess(::GetCurrentProcess(), 0);
  return 0;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
  std::string names;
  for (const Scene& scene : kScenes) {
    const std::string name = scene.name;
    names += name + "\n";
    if (__argc == 3 && std::wstring(name.begin(), name.end()) == __wargv[1]) return Show(scene, __wargv[2]);
  }
  if (__argc != 1) return 1;
  (void)WriteWholeFile(L"scenes.txt", names);
  return 0;
}
