#pragma once

// The main window as the tray window and the menus start it, on a thread of its own.

#include "ui/program.h"

/// Runs the main window until it closes, or brings the open one forward.
void MainDialogThread(Program& program);
