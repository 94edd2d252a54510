#pragma once

// What the command line asks for. The whole line, program path included, is searched for each switch as it stands: no words, no
// quotes, no case folding. So a switch counts wherever it occurs, even inside the path.

#include <string_view>

enum class StartJob { kRun, kTerminateRunning, kInstallAdminTask, kRemoveAdminTask };

struct StartOptions {
  StartJob job = StartJob::kRun;  ///< anything but kRun: do only this and exit
  bool startInTray = false;       ///< the main window stays closed
  bool replaceRunning = false;    ///< a running instance ends first

  bool operator==(const StartOptions&) const = default;
};

[[nodiscard]] StartOptions ParseCommandLine(std::wstring_view commandLine);
