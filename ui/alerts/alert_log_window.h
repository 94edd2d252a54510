#pragma once

// The window that lists every recent alert, with their export and Clear Log.

#include "ui/program.h"

/// Runs a new alert log window until it closes. On a thread of its own.
void AlertLogDialogThread(Program& program);
