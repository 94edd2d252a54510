#include <windows.h>

#include <gtest/gtest.h>

#include "platform/file.h"
#include "platform/handles.h"
#include "storage/rule_store.h"
#include "tests/storage/throwaway_folder.h"

namespace {

TEST(FilesOnWindows, ThatOthersHoldOrProtectKeepTheirBytes) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  ThrowawayFolder::Write(path, "old");
  RuleStore store([&] { return path; });
  const auto expectRefused = [&] {
    EXPECT_EQ(WriteWholeFile(path, "x"), WriteResult::kCannotOpen);
    EXPECT_EQ(AppendToFile(path, "x", ""), WriteResult::kCannotOpen);
    store.Append({MakeNewRule(1)});
    EXPECT_EQ(ThrowawayFolder::Read(path), "old");
  };
  {
    const UniqueHandle reader =
        OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(reader, nullptr);
    expectRefused();
  }
  ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
  // Wine lets its superuser write to a read-only file.
  const auto openForWriting = [&] {
    return OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  };
  if (openForWriting() == nullptr) expectRefused();
  ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_TRUE(store.Save(path));
  EXPECT_TRUE(store.Load(path));
  EXPECT_FALSE(store.Snapshot()->empty());
  const UniqueHandle writer = OwnFileHandle(
      ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_TRUE(ReadWholeFile(path).has_value()) << "a file that another program still writes can be read";
}

}  // namespace
