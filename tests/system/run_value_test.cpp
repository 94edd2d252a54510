#include "system/run_value.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "storage/settings_registry.h"
#include "system/executable_path.h"

namespace {

/// Another place for the current user's hive while the test runs.
class RunValue : public testing::Test {
 protected:
  void SetUp() override {
    ::RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\VantoraRunValueTest", &hive_);
    ASSERT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, hive_), ERROR_SUCCESS);
  }
  void TearDown() override {
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegCloseKey(hive_);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\VantoraRunValueTest");
  }
  static void MakeRunKey() {
    HKEY key = nullptr;
    ASSERT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, kRunKey, &key), ERROR_SUCCESS);
    ::RegCloseKey(key);
  }
  /// The value's text; the type and the size in bytes behind it.
  static std::wstring Read() {
    HKEY key = nullptr;
    if (::RegOpenKeyW(HKEY_CURRENT_USER, kRunKey, &key) != ERROR_SUCCESS) return L"-";
    wchar_t text[600] = L"";
    DWORD type = 0;
    DWORD sizeBytes = sizeof text;
    // The call that reads the bytes as they are: others add a terminator that is not there.
    const LSTATUS status = ::RegQueryValueExW(key, L"Vantora", nullptr, &type, reinterpret_cast<BYTE*>(text), &sizeBytes);
    ::RegCloseKey(key);
    if (status != ERROR_SUCCESS) return L"-";
    return text + (L"|" + std::to_wstring(type) + L"|" + std::to_wstring(sizeBytes));
  }

 private:
  HKEY hive_ = nullptr;
};

TEST_F(RunValue, TogglesBetweenOwnDataAndNothing) {
  MakeRunKey();
  const std::wstring data = L"\"" + OwnExecutablePath() + L"\" /tray";
  ASSERT_NE(OwnExecutablePath().find(L' '), std::wstring::npos) << "the test is meant to lie in a folder with a blank";
  const std::wstring own = data + L"|" + std::to_wstring(REG_SZ) + L"|" + std::to_wstring((data.size() + 1) * 2);
  EXPECT_FALSE(IsStartWithWindowsEnabled());
  ToggleStartWithWindows();
  EXPECT_TRUE(IsStartWithWindowsEnabled());
  EXPECT_EQ(Read(), own);
  ToggleStartWithWindows();
  EXPECT_FALSE(IsStartWithWindowsEnabled());
  EXPECT_EQ(Read(), L"-");
}

TEST_F(RunValue, AValueOfAnyKindCountsAsOn) {
  MakeRunKey();
  for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_DWORD}}) {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", type, L"ab", type == REG_SZ ? 6 : 4);
    EXPECT_TRUE(IsStartWithWindowsEnabled());
    ToggleStartWithWindows();
    EXPECT_EQ(Read(), L"-");
  }
}

}  // namespace
