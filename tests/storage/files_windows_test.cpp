#include <windows.h>

#include <gtest/gtest.h>

#include <thread>

#include "platform/file.h"
#include "platform/handles.h"
#include "storage/rule_store.h"
#include "tests/support/throwaway_folder.h"

namespace {

UniqueHandle Open(const std::wstring& path, DWORD access, DWORD share) {
  return OwnFileHandle(::CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

TEST(FilesOnWindows, ThatOthersHoldOrProtectKeepTheirBytes) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  ThrowawayFolder::Write(path, "old");
  RuleStore store([&] { return path; });
  const auto expectRefused = [&] {
    EXPECT_EQ(AppendToFile(path, "x", ""), WriteResult::kCannotOpen);
    store.Append({MakeNewRule(1)});
    EXPECT_EQ(ThrowawayFolder::Read(path), "old");
  };
  {
    const UniqueHandle reader = Open(path, GENERIC_READ, FILE_SHARE_READ);
    ASSERT_NE(reader, nullptr);
    expectRefused();
  }
  ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
  // Wine lets its superuser write to a read-only file.
  if (Open(path, GENERIC_WRITE, 0) == nullptr) expectRefused();
  ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_TRUE(store.Save(path));
  const UniqueHandle writer = Open(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
  EXPECT_TRUE(store.Load(path)) << "a file that another program still writes can be read";
  EXPECT_FALSE(store.Snapshot()->empty());
}

TEST(FilesOnWindows, ThatAnotherProgramHoldsAreWaitedForAndNeverWrittenUnread) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  ThrowawayFolder::Write(path, "header\r\n1,a.exe,1\r\n");
  RuleStore store([&] { return path; });
  {
    const UniqueHandle holder = Open(path, GENERIC_READ, 0);
    EXPECT_FALSE(store.Load(path));
  }
  EXPECT_FALSE(store.SaveAndClose(path));
  EXPECT_EQ(ThrowawayFolder::Read(path), "header\r\n1,a.exe,1\r\n");

  UniqueHandle holder = Open(path, GENERIC_READ, 0);
  std::thread scanner([&] {
    ::Sleep(200);
    holder.reset();
  });
  EXPECT_TRUE(store.Load(path));
  scanner.join();
}

}  // namespace
