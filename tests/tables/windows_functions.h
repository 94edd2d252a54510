#pragma once

// What the system's registry, Task Scheduler and code page have to do with. Windows only.

#include <gtest/gtest.h>

#include "autostart/elevation.h"
#include "autostart/elevation_system.h"
#include "autostart/executable_path.h"
#include "autostart/logon_task.h"
#include "autostart/run_value.h"
#include "core/monitor_engine.h"
#include "storage/settings_registry.h"
#include "tests/support/fake_http_client.h"
#include "tests/support/fake_task_scheduler.h"
#include "tests/support/limited_memory.h"
#include "tests/support/profile.h"
#include "tests/tables/table_text.h"
#include "update/update_check.h"
#include "update/version.h"

inline std::wstring AskedVersion(const std::wstring& words) {
  FakeHttpClient http;
  http.brokenAt = std::stoul(words);
  http.body = Bytes(words.substr(words.find(L' ') + 1));
  const LimitedMemory limited(1'200'000);
  const std::wstring latest = AskForLatestVersion(http, true);
  return latest == AppVersionDisplay ? L"own" : latest;
}

/// "name type width data" of a value in the registry; each character of the data takes `width` bytes.
inline std::wstring LoadedSetting(const std::wstring& words) {
  std::wistringstream in(words);
  std::wstring name;
  in >> name;
  const auto type = Next<DWORD>(in);
  const auto width = Next<std::size_t>(in);
  std::string bytes;
  for (const wchar_t c : words.substr(static_cast<std::size_t>(in.tellg()) + 1))
    (bytes += static_cast<char>(c)).resize(bytes.size() + width - 1);
  const e2e::Profile profile;
  ::RegSetKeyValueW(HKEY_CURRENT_USER, e2e::kSettings, name.c_str(), type, bytes.data(), static_cast<DWORD>(bytes.size()));
  SettingsStore settings;
  settings.Update([](AppSettings& current) {
    current.logFilePath = L"log";
    current.soundFilePath = L"sound";
    current.mainDialogPlacement = {1, 2, 3, 4};
  });
  const AppSettings before = settings.Get();
  MonitorEngine engine{nullptr, SystemClock(), 1};
  engine.SetExclusions({L"kept"});
  LoadSettings(settings, engine);
  return (settings.Get() == before ? L"" : L"changed ") + Join(*engine.Exclusions());
}

/// With the user and this program for what they are.
inline std::wstring WithoutNames(std::wstring text) {
  wchar_t user[600];
  ::ExpandEnvironmentStringsW(L"%USERDOMAIN%\\%USERNAME%", user, 600);
  for (const auto& [word, name] : {std::pair{OwnExecutablePath(), L"(exe)"}, {std::wstring(user), L"(user)"}}) {
    for (std::size_t at = 0; (at = text.find(word)) != std::wstring::npos;) text.replace(at, word.size(), name);
  }
  return text;
}

/// "job|whether the task exists|call that fails|its failure": the answer, whether the task exists then, the last call, and all
/// where none fails.
inline std::wstring ScheduledTask(const std::wstring& words) {
  const std::vector<std::wstring> all = Split(words, L'|');
  FakeTaskScheduler scheduler;
  scheduler.taskExists = all.at(1) == L"yes";
  scheduler.failingCall = all.at(2);
  if (all.size() > 3) scheduler.failure = static_cast<HRESULT>(std::stoul(all.at(3), nullptr, 16));
  const bool answer = all.at(0) == L"install"  ? InstallAdminTask()
                      : all.at(0) == L"remove" ? RemoveAdminTask()
                                               : IsAdminTaskInstalled();
  EXPECT_EQ(scheduler.references, 0);
  return Words(YesNo(answer), L", ", YesNo(scheduler.taskExists), L", ", scheduler.lastCall,
               all.at(2).empty() ? L": " + WithoutNames(scheduler.log) : L"");
}

/// The calls behind elevation, which work as `given` says: whether the token opens, whether it tells, what it tells even by a
/// call that fails, and whether a start is accepted.
struct Elevation {
  explicit Elevation(const std::wstring& words) {
    std::wistringstream in(words);
    for (DWORD& each : given) each = Next<DWORD>(in);
    SetElevationSystem(&kSystem);
  }
  ~Elevation() { SetElevationSystem(nullptr); }
  Elevation(const Elevation&) = delete;

  static BOOL OpenToken(HANDLE process, DWORD access, HANDLE* token) {
    return given[0] != 0 && access == TOKEN_QUERY && ::OpenProcessToken(process, access, token);
  }
  static BOOL Tell(HANDLE, TOKEN_INFORMATION_CLASS kind, void* data, DWORD sizeBytes, DWORD*) {
    if (kind != TokenElevation || sizeBytes != sizeof(DWORD)) return FALSE;
    *static_cast<DWORD*>(data) = given[2];
    return given[1] != 0;
  }
  static BOOL Start(SHELLEXECUTEINFOW* request) {
    requested = Words(request->lpVerb, L" ", request->lpFile, L" ", request->nShow, L" ", request->fMask);
    return given[3] != 0 && ::ShellExecuteExW(request);
  }
  inline static DWORD given[4];
  inline static std::wstring requested;
  inline static const ElevationSystem kSystem = {OpenToken, Tell, Start};
};

inline std::wstring Elevated(const std::wstring& words) {
  const Elevation elevation(words);
  return YesNo(IsProcessElevated());
}

/// Whether to wait and whether the start is accepted: the answer, the exit code where there is one, and what was asked for. The
/// copy of this program ends at once.
inline std::wstring RunElevatedCopy(const std::wstring& words) {
  const Elevation elevation(L"1 1 0 " + words.substr(2));
  DWORD exitCode = 7;
  const bool answer = RunElevated(L"--gtest_filter=-*", words[0] == L'1', &exitCode);
  return Words(YesNo(answer), L" ", exitCode, L" ", WithoutNames(Elevation::requested));
}

/// What a question for the logon task leaves of its thread's COM: 1 where that was initialised before and still is, 0 where it
/// was not and is not.
inline std::wstring ComAfterwards(const std::wstring& before) {
  if (before == L"initialised") ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  (void)IsAdminTaskInstalled();
  const HRESULT again = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  for (HRESULT times = again; times >= S_OK; --times) ::CoUninitialize();
  return Words(again);
}

/// The Run value while it is toggled, and while others write to it.
class RunValueSteps {
 public:
  std::wstring operator()(const std::wstring& step) {
    if (step == L"new") profile_ = std::make_unique<e2e::Profile>();
    if (step == L"toggle") ToggleStartWithWindows();
    if (step == L"text") e2e::Profile::SetText(e2e::kRun, L"Vantora", L"other");
    if (step == L"number") e2e::Profile::Set(L"Vantora", 7, e2e::kRun);
    const auto [type, text] = e2e::Profile::Values(e2e::kRun)[L"Vantora"];
    return Words(YesNo(IsStartWithWindowsEnabled()), L" ", type, L" ", WithoutNames(text));
  }

 private:
  std::unique_ptr<e2e::Profile> profile_;
};
