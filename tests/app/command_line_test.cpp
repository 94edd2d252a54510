#include "app/command_line.h"

#include <gtest/gtest.h>

namespace {

TEST(ParseCommandLine, FindsEachSwitchAnywhereInTheLineByTheOrderOfPrecedence) {
  const std::pair<const wchar_t*, StartOptions> cases[] = {
      {L"vantora.exe /TRAY -Restart --INSTALL-ADMIN-TASK", {}},
      {L"vantora.exe --terminat tray restart", {}},
      {L"vantora.exe /tray", {StartJob::kRun, true, false}},
      {L"vantora.exe --tray-icon", {StartJob::kRun, true, false}},
      {L"\"C:\\my-tray-tools\\vantora.exe\"", {StartJob::kRun, true, false}},
      {L"vantora.exe -restart-tray", {StartJob::kRun, true, true}},
      {L"vantora.exe -restart", {StartJob::kRun, false, true}},
      {L"vantora.exe --remove-admin-task -tray --install-admin-task -terminate -restart", {StartJob::kTerminateRunning}},
      {L"vantora.exe --remove-admin-task --install-admin-task /tray", {StartJob::kInstallAdminTask}},
      {L"vantora.exe -restart --remove-admin-task", {StartJob::kRemoveAdminTask}},
      {L"vantora.exe -install-admin-task -remove-admin-task", {}},
  };
  for (const auto& [commandLine, expected] : cases) {
    EXPECT_EQ(ParseCommandLine(commandLine), expected) << std::wstring(commandLine);
  }
}

}  // namespace
