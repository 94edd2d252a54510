#pragma once

// The installation of an update as the user meets it: silence while it goes well, a message box when it fails.

#include "ui/program.h"

/// Downloads, verifies and starts the update; on failure says so, on success asks the tray window to end the program. On a thread
/// of its own; without effect while an installation is under way.
void UpdateInstallThread(Program& program);
