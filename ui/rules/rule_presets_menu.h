#pragma once

// The Presets command of the main window.

#include <windows.h>

class RuleStore;

/// Shows the presets below the dialog's Presets button and adds the rules of the chosen one. True when rules were added; a
/// dismissed menu changes nothing. The dialog's thread.
bool RunPresetsCommand(HWND dialog, RuleStore& rules);
