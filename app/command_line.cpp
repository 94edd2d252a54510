#include "app/command_line.h"

StartOptions ParseCommandLine(std::wstring_view commandLine) {
  const auto has = [commandLine](std::wstring_view text) { return commandLine.find(text) != std::wstring_view::npos; };
  StartOptions options;
  if (has(L"-terminate")) {
    options.job = StartJob::kTerminateRunning;
  } else if (has(L"--install-admin-task")) {
    options.job = StartJob::kInstallAdminTask;
  } else if (has(L"--remove-admin-task")) {
    options.job = StartJob::kRemoveAdminTask;
  } else {
    options.startInTray = has(L"/tray") || has(L"-tray");
    options.replaceRunning = has(L"-restart");
  }
  return options;
}
