#pragma once

// The editor of the process names that the monitor leaves alone.

#include <windows.h>

struct Program;

/// Runs the dialog. OK replaces the exclusions as one step, in force from the monitor's next cycle, and saves the settings. The
/// owner's thread.
void RunExclusionsDialog(HWND owner, Program& program);
