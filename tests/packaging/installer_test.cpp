// The real installer and uninstaller, run as users and the program's own updates run them.

#include <windows.h>

#include <shellapi.h>

#include "tests/support/program_test.h"
#include "tests/update_server/test_server.h"
#include "update/version.h"

namespace e2e {
namespace {

constexpr wchar_t kEntry[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Vantora";
constexpr DWORD kGiveUpMs = 40'000;

class Installer : public EndToEndTest {
 protected:
  void SetUp() override {
    EndToEndTest::SetUp();
    Uninstall(L"/S /PURGE");
    ASSERT_FALSE(PathExists(folder_));
    profile_.Set(L"UpdateChecksDisabled", 1);
  }
  void TearDown() override {
    EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
    Uninstall(L"/S /PURGE");
  }

  static std::optional<DWORD> Install(const wchar_t* setup, const wchar_t* arguments = L"/S") {
    return RunningProgram(arguments, FullPath(setup)).WaitForExit(kGiveUpMs);
  }
  /// The uninstaller goes on as a copy of itself, so its work is waited for: the entry goes last.
  void Uninstall(const std::wstring& arguments) const {
    if (!PathExists(uninstaller_)) return;
    const RunningProgram uninstall(arguments, uninstaller_);
    EXPECT_TRUE(WaitUntil([&] { return !Entry(L"DisplayName").has_value(); }, kGiveUpMs));
  }
  std::optional<RegistryValue> Entry(const wchar_t* name) const { return profile_.Get(kEntry, name); }
  /// The process that the installer has started, once it works.
  DWORD WaitForInstance() const {
    DWORD processId = 0;
    ::GetWindowThreadProcessId(WaitForResult([] { return ::FindWindowW(kTrayClass, nullptr); }), &processId);
    EXPECT_TRUE(debug_.WaitFor(processId, "MonitorEngine::MonitorLoop - Entering loop"));
    return processId;
  }
  /// What an installation leaves where nothing ran.
  void ExpectInstalled() const {
    EXPECT_EQ(ReadWholeFile(program_), ReadWholeFile(ProgramPath()));
    EXPECT_TRUE(PathExists(shortcut_));
    EXPECT_EQ(::FindWindowW(kTrayClass, nullptr), nullptr) << "nothing ran, so nothing is started";
    // Of the file and of the product, as a resource holds them: the upper half, then the lower one.
    const std::string version("\0\0\0\0\7\0\2\0\0\0\0\0\7\0\2\0", 16);
    std::size_t bytes = 0;
    for (const std::wstring& file : {program_, uninstaller_, folder_ + L"\\vantora-console.exe"}) {
      bytes += ReadWholeFile(file)->size();
    }
    for (const std::wstring& file : {program_, FullPath(VANTORA_SETUP)}) {
      EXPECT_NE(ReadWholeFile(file)->find(version), std::string::npos) << testing::PrintToString(file);
    }
    const auto size = Entry(L"EstimatedSize").value_or(RegistryValue::Number(0));
    EXPECT_NEAR(*reinterpret_cast<const DWORD*>(size.bytes.data()), static_cast<DWORD>(bytes / 1024), 100);
    const std::pair<const wchar_t*, RegistryValue> values[] = {
        {L"DisplayName", RegistryValue::Text(L"Vantora")},
        {L"DisplayVersion", RegistryValue::Text(AppVersion)},
        {L"Publisher", RegistryValue::Text(L"Vantora")},
        {L"DisplayIcon", RegistryValue::Text(program_ + L",0")},
        {L"InstallLocation", RegistryValue::Text(folder_)},
        {L"UninstallString", RegistryValue::Text(L"\"" + uninstaller_ + L"\"")},
        {L"QuietUninstallString", RegistryValue::Text(L"\"" + uninstaller_ + L"\" /S")},
        {L"NoModify", RegistryValue::Number(1)},
        {L"NoRepair", RegistryValue::Number(1)},
    };
    for (const auto& [name, value] : values) EXPECT_EQ(Entry(name), value) << testing::PrintToString(name);
  }

  const std::wstring folder_ = ::_wgetenv(L"LOCALAPPDATA") + std::wstring(L"\\Programs\\Vantora");
  const std::wstring program_ = folder_ + L"\\vantora.exe";
  const std::wstring uninstaller_ = folder_ + L"\\uninstall.exe";
  const std::wstring shortcut_ =
      ::_wgetenv(L"APPDATA") + std::wstring(L"\\Microsoft\\Windows\\Start Menu\\Programs\\Vantora.lnk");
};

TEST_F(Installer, UpgradesOverTheRunningProgramOnceThatHasEndedAndStartsItAgainAsItsOwnUpdateDoes) {
  const auto finished = [this] { return profile_.Get(kSettings, L"UpdateFinished"); };
  const auto isVersion = [this](const wchar_t* version) {
    return Entry(L"DisplayVersion") == RegistryValue::Text(version) && !PathExists(program_ + L".new");
  };
  ASSERT_EQ(Install(VANTORA_OLD_SETUP), 0u);
  profile_.Set(L"UpdateFinished", 1);
  {
    // An instance that nothing ends, as one with more rights would be.
    const UniqueHandle running(::CreateEventW(nullptr, FALSE, FALSE, kRunningEvent));
    EXPECT_EQ(Install(VANTORA_SETUP), 3u);
  }
  EXPECT_TRUE(isVersion(L"0.0.2.6"));
  EXPECT_EQ(ReadWholeFile(program_), ReadWholeFile(ProgramPath())) << "left whole";
  EXPECT_EQ(finished(), RegistryValue::Number(0)) << "no balloon for what did not happen";
  const DWORD old = WaitForInstance();

  ASSERT_EQ(Install(VANTORA_SETUP), 0u);
  EXPECT_TRUE(debug_.ComesOnce(old, "RuleStore::Save - Saved")) << "ended by its own protocol";
  EXPECT_TRUE(isVersion(AppVersion));
  const DWORD restarted = WaitForInstance();
  EXPECT_NE(restarted, old);
  EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
  EXPECT_EQ(debug_.Count(restarted, "MainDialogThread"), 0) << "in the tray only";

  const TestServer server;
  profile_.Set(kEntry, L"DisplayVersion", RegistryValue::Text(L"to be replaced"));
  profile_.Set(L"UpdateChecksDisabled", 0);
  {
    const RunningProgram updated(L"/tray", FullPath(VANTORA_UPDATED_EXE));
    EXPECT_EQ(shell_.WaitForBalloon(0), L"Vantora Update Available\nClick here to update to version 0.0.2.9.");
    updated.PostToTray(UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
    EXPECT_EQ(updated.WaitForExit(), 0u);
    EXPECT_TRUE(debug_.ComesOnce(updated.Id(), "RuleStore::Save - Saved")) << "an orderly end";
  }
  EXPECT_EQ(shell_.WaitForBalloon(1), L"Vantora Updated\nNewly installed version is 0.0.2.7 BETA.") << "started by the installer";
  EXPECT_TRUE(isVersion(AppVersion));
  EXPECT_EQ(finished(), RegistryValue::Number(0));
}

TEST_F(Installer, InstallsForTheUserAndUninstallsAllButWhatIsTheUsersOwn) {
  const auto autostart = [this] { return profile_.Get(kRun, L"Vantora"); };
  for (const bool purge : {false, true}) {
    SCOPED_TRACE(purge);
    ASSERT_EQ(Install(VANTORA_SETUP), 0u);
    ExpectInstalled();
    // A program that answers every switch with a failure has a logon task that nobody can remove.
    ASSERT_TRUE(::CopyFileW(L"C:\\windows\\system32\\reg.exe", program_.c_str(), FALSE));
    EXPECT_EQ(RunningProgram(L"/S _?=" + folder_, uninstaller_).WaitForExit(kGiveUpMs), 4u);
    EXPECT_TRUE(PathExists(program_));

    EXPECT_EQ(autostart(), std::nullopt) << "only on request";
    for (const wchar_t* arguments : {L"/S /AUTOSTART", L"/S"}) ASSERT_EQ(Install(VANTORA_SETUP, arguments), 0u);
    EXPECT_EQ(autostart(), RegistryValue::Text(L"\"" + program_ + L"\" /tray")) << "and kept by an upgrade";
    WriteFileBytes(profile_.DataFolder() + L"\\my notes.txt", "mine");
    profile_.Set(kRun, L"Other", RegistryValue::Text(program_));
    const RunningProgram program(L"/tray", program_);
    EXPECT_EQ(WaitForInstance(), program.Id());

    Uninstall(purge ? L"/S /PURGE" : L"/S");
    EXPECT_EQ(program.WaitForExit(), 0u);
    for (const std::wstring& path : {folder_, shortcut_}) EXPECT_FALSE(PathExists(path)) << testing::PrintToString(path);
    EXPECT_EQ(autostart(), std::nullopt);
    EXPECT_TRUE(profile_.Get(kRun, L"Other").has_value());
    EXPECT_NE(PathExists(profile_.RulesFile()), purge);
    EXPECT_NE(profile_.Get(kSettings, L"PollIntervalSec").has_value(), purge);
    EXPECT_TRUE(PathExists(profile_.DataFolder() + L"\\my notes.txt")) << "not the program's to delete";
  }
}

}  // namespace
}  // namespace e2e
