// The command line, the hand-over between instances, the first seconds of the program, and what it takes from the profile and
// leaves there, the earlier product's included.

#include <windows.h>

#include <shellapi.h>

#include "tests/support/program_test.h"

namespace e2e {
namespace {

using StartUp = EndToEndTest;

TEST_F(StartUp, ShowsIconAndMainWindowOnOlderAndNewerWindowsAlsoOnANewTaskbarUntilTerminated) {
  constexpr wchar_t kVersionKey[] = L"Software\\Wine\\AppDefaults\\vantora.exe";
  const std::wstring add = L"add " + std::to_wstring(NIF_MESSAGE | NIF_ICON | NIF_TIP) + L" " + std::to_wstring(UWM_TRAYICON) +
                           L" " + std::to_wstring(::GetSystemMetrics(SM_CXSMICON)) + L" Vantora 0.0.2.7 BETA";
  std::vector<std::wstring> calls;
  for (const wchar_t* version : {L"win7", L"win10"}) {
    SCOPED_TRACE(testing::PrintToString(version));
    profile_.Set(kVersionKey, L"Version", RegistryValue::Text(version));
    const RunningProgram program(L"");
    EXPECT_NE(program.WaitForMainWindow(), nullptr);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
    EXPECT_FALSE(::IsWindowVisible(program.WaitForTray()));
    ::SendNotifyMessageW(HWND_BROADCAST, ::RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    calls.insert(calls.end(), {L"delete", add, L"delete", add});
    EXPECT_TRUE(WaitUntil([&] { return shell_.Calls() == calls; })) << testing::PrintToString(shell_.Calls());
    EXPECT_NE(UniqueHandle(::OpenEventW(SYNCHRONIZE, FALSE, kRunningEvent)), nullptr);

    EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
    EXPECT_EQ(program.WaitForExit(), 0u);
    calls.emplace_back(L"delete");
    EXPECT_EQ(shell_.Calls(), calls);
    EXPECT_EQ(UniqueHandle(::OpenEventW(SYNCHRONIZE, FALSE, kRunningEvent)), nullptr);
  }
}

TEST_F(StartUp, EveryRequestForTheMainWindowLeadsToTheOneOfTheFirstInstance) {
  const RunningProgram first(L"--minimise -tray");
  first.ChooseFromTrayMenu(L'l');
  ASSERT_NE(first.WaitForDialog(IDC_ALERT_LIST), nullptr);
  EXPECT_EQ(debug_.Count(first.Id(), "MainDialogThread"), 0) << "its thread would have said so before the alert log was there";

  const RunningProgram second(L"/tray");
  EXPECT_EQ(second.WaitForExit(), 0u);
  EXPECT_TRUE(debug_.ComesOnce(second.Id(), "Existing instance found, invoking settings dialog"));
  EXPECT_EQ(debug_.Count(second.Id(), "RuleStore::Load"), 0);
  ASSERT_NE(first.WaitForMainWindow(), nullptr);

  EXPECT_EQ(RunToEnd(L""), 0u);
  first.ChooseFromTrayMenu(L'o');
  for (const LPARAM click : {LPARAM{WM_LBUTTONUP}, LPARAM{NIN_BALLOONUSERCLICK}}) first.PostToTray(UWM_TRAYICON, 0, click);
  first.ChooseFromTrayMenu(L'l');
  EXPECT_TRUE(WaitUntil([&] { return first.DialogCount() == 3; })) << "two alert logs, one main window";
  EXPECT_TRUE(first.End());
  EXPECT_EQ(debug_.Count(first.Id(), "MainDialogThread"), 1);
}

TEST_F(StartUp, LibrariesBesideTheProgramAreNotLoaded) {
  const std::wstring folder = profile_.DataFolder() + L"\\downloads";
  std::filesystem::create_directories(folder);
  const std::wstring copy = folder + L"\\vantora.exe";
  ASSERT_TRUE(::CopyFileW(ProgramPath().c_str(), copy.c_str(), FALSE));
  for (const wchar_t* library : {L"dwmapi", L"secur32", L"uxtheme", L"wininet", L"winmm", L"wintrust", L"version"}) {
    const std::wstring planted = folder + L"\\" + library + L".dll";
    ASSERT_TRUE(::CopyFileW(FullPath(VANTORA_PLANTED_LIBRARY).c_str(), planted.c_str(), FALSE));
  }
  profile_.Set(L"UpdateChecksDisabled", 0);
  const RunningProgram program(L"", copy);
  EXPECT_NE(program.WaitForMainWindow(), nullptr);
  EXPECT_TRUE(debug_.WaitFor(program.Id(), "ERROR checking update")) << "the internet functions have been looked for, too";
  EXPECT_TRUE(program.End());
}

/// Makes or deletes a task by the system's own tool, which says by its exit code whether it could.
std::optional<DWORD> Schtasks(const std::wstring& arguments) {
  return RunningProgram(arguments, FullPath(L"C:\\windows\\system32\\schtasks.exe")).WaitForExit();
}
std::optional<DWORD> CreateTask(const std::wstring& name, const std::wstring& file) {
  WriteFileBytes(file,
                 "<Task version=\"1.2\" xmlns=\"http://schemas.microsoft.com/windows/2004/02/mit/task\">"
                 "<Actions><Exec><Command>cmd.exe</Command></Exec></Actions></Task>");
  return Schtasks(L"/create /tn " + name + L" /xml \"" + file + L"\"");
}

TEST_F(StartUp, JobsSayByTheirExitCodeWhetherThingsAreAsWantedAndDoNothingElse) {
  EXPECT_EQ(RunToEnd(L"-terminate -tray --install-admin-task"), 0u);
  // Wine's Task Scheduler has no logon trigger, so the task cannot be created here, only one of the test's own making.
  EXPECT_EQ(RunToEnd(L"--install-admin-task --remove-admin-task"), 1u);
  EXPECT_EQ(RunToEnd(L"--remove-admin-task /tray"), 0u) << "there is none";
  EXPECT_FALSE(PathExists(profile_.RulesFile()));
  for (const bool removed : {false, true}) {
    ASSERT_EQ(CreateTask(L"VantoraAdminAutoStart", profile_.DataFolder() + L"\\task.xml"), 0u);
    ASSERT_EQ(removed ? RunToEnd(L"--remove-admin-task") : 0u, 0u);
    EXPECT_EQ(Schtasks(L"/delete /tn VantoraAdminAutoStart /f"), removed ? 1u : 0u);
  }
  EXPECT_TRUE(shell_.Calls(L"add").empty());
}

TEST_F(StartUp, RestartTakesOverOnceTheRunningInstanceHasSaved) {
  WriteFileBytes(profile_.RulesFile(), "anything at all\n4,foo.exe,1\nnot a rule\n");
  const RegistryValue exclusions = RegistryValue::Text(std::wstring(L"a*\0b.exe\0", 9), REG_MULTI_SZ);
  const struct {
    const wchar_t* name;
    RegistryValue found;
    std::optional<RegistryValue> left;
  } settings[] = {
      {L"PollIntervalSec", RegistryValue::Number(86'401), RegistryValue::Number(5)},
      {L"PollIntervalMs", RegistryValue::Number(5'500), std::nullopt},
      {L"NotificationThrottleSec", RegistryValue::Number(3'600), RegistryValue::Number(3'600)},
      {L"LogFilePath", RegistryValue::Text(L"C:\\logs\\\x00E9.log"), RegistryValue::Text(L"C:\\logs\\\x00E9.log")},
      {L"SoundFilePath", RegistryValue::Text(std::wstring(260, L'x')), RegistryValue::Text(L"")},
      {L"Exclusions", exclusions, exclusions},
      {L"Foreign", RegistryValue::Text(L"kept"), RegistryValue::Text(L"kept")},
  };
  for (const auto& setting : settings) profile_.Set(kSettings, setting.name, setting.found);
  const RunningProgram first(L"/tray");
  ASSERT_TRUE(debug_.WaitFor(first.Id(), "MonitorEngine::MonitorLoop - Entering loop"));
  const RunningProgram second(L"-restart /tray");
  EXPECT_EQ(first.WaitForExit(), 0u);
  EXPECT_EQ(ReadWholeFile(profile_.RulesFile()), kRulesHead + std::string("4,foo.exe,1,0,0.0,0.0,0.0,0,0,0,3,60\r\n"));
  for (const auto& setting : settings) {
    EXPECT_EQ(profile_.Get(kSettings, setting.name), setting.left) << testing::PrintToString(setting.name);
  }
  EXPECT_TRUE(debug_.ComesOnce(first.Id(), "RuleStore::Save - Saved 1 rules to"));
  EXPECT_TRUE(debug_.ComesOnce(second.Id(), "RuleStore::Load - Loaded 1 rules from"));
  const std::string lines = debug_.All();
  EXPECT_LT(lines.find(" RuleStore::Save"), lines.rfind(" RuleStore::Load"));
  EXPECT_TRUE(second.End());
}

TEST_F(StartUp, OfTwoAtOnceOneRunsHavingGivenTheEarlierProductTimeAndTakenOverWhatItHas) {
  const std::string rules = kRulesHead + std::string("3,old.exe,1,0,0.0,0.0,0.0,5,0,0,3,60\r\n");
  ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettings);
  for (const wchar_t* name : {L"NotificationThrottleSec", L"UpdateChecksDisabled"}) {
    profile_.Set(kLegacySettings, name, RegistryValue::Number(77));
  }
  profile_.Set(kRun, L"Halvern", RegistryValue::Text(L"old.exe"));
  WriteFileBytes(profile_.LegacyFolder() + L"\\rules.csv", rules);
  ASSERT_EQ(CreateTask(L"HalvernAdminAutoStart", profile_.LegacyFolder() + L".xml"), 0u);
  // A window of the test's own stands for its running instance, which hangs: requests wait in this thread's queue.
  const WNDCLASSW legacy{0, ::DefWindowProcW, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, L"HALVERNW"};
  ASSERT_NE(::RegisterClassW(&legacy), 0);
  HWND window = ::CreateWindowW(legacy.lpszClassName, L"Halvern", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  const auto isAsked = [&] {
    MSG message{};
    return WaitUntil([&] { return ::PeekMessageW(&message, window, UWM_TERMINATE, UWM_TERMINATE, PM_REMOVE) != FALSE; });
  };
  const ULONGLONG start = ::GetTickCount64();
  const RunningProgram first;
  const RunningProgram second;
  ASSERT_TRUE(isAsked());
  ASSERT_TRUE(isAsked());
  EXPECT_NE(::FindWindowW(kTrayClass, nullptr), nullptr) << "the one had its turn to the end before the other had its own";
  EXPECT_GE(::GetTickCount64() - start, 5'000u);
  ::DestroyWindow(window);
  EXPECT_TRUE(WaitUntil([&] { return first.WaitForExit(0).has_value() != second.WaitForExit(0).has_value(); }));
  EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
  for (const auto* program : {&first, &second}) EXPECT_EQ(program->WaitForExit(), 0u);
  EXPECT_EQ(debug_.Count(first.Id(), "RuleStore::Load") + debug_.Count(second.Id(), "RuleStore::Load"), 1);

  EXPECT_EQ(Schtasks(L"/delete /tn HalvernAdminAutoStart /f"), 1u);
  for (const wchar_t* key : {kSettings, kLegacySettings}) {
    EXPECT_EQ(profile_.Get(key, L"NotificationThrottleSec"), RegistryValue::Number(77));
  }
  EXPECT_EQ(ReadWholeFile(profile_.RulesFile()), rules);
  EXPECT_FALSE(PathExists(profile_.LegacyFolder()));
  EXPECT_EQ(profile_.Get(kRun, L"Halvern"), std::nullopt);
  EXPECT_EQ(profile_.Get(kRun, L"Vantora"), RegistryValue::Text(L"\"" + ProgramPath() + L"\""));
}

}  // namespace
}  // namespace e2e
