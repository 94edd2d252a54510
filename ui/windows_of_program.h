#pragma once

// The program's windows that open on threads of their own, as the tray window and the menus start them. Each routine runs its
// window until it closes.

#include "ui/program.h"

/// The main window, or brings the open one forward.
void MainDialogThread(Program& program);
/// A new alert log window.
void AlertLogDialogThread(Program& program);
/// Downloads, verifies and starts the update; on failure says so, on success asks the tray window to end the program.
void UpdateInstallThread(Program& program);
