#pragma once

// Import Rules and Export Rules of the main window: the clipboard offer, the file dialogs and what the user is told.

#include <windows.h>

class RuleStore;

/// Adds the rules of the clipboard, when it holds some and the user agrees, or of a file that the user chooses. True when the
/// list has changed; it is saved and published already. The owner's thread.
bool RunImportRulesCommand(HWND owner, RuleStore& rules);
/// Writes the rule list to a file that the user names. The owner's thread.
void RunExportRulesCommand(HWND owner, const RuleStore& rules);
