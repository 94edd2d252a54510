#pragma once

// The program's diagnostic lines. On Windows they go to the system debugger channel, in host tools to stderr; nothing written
// here is shown to the user. Kept apart so that every folder can report without knowing where the line ends up.

#include <string_view>

/// Formats a line with the wide printf rules ("%ls" for wide text) and writes it; text beyond 1022 characters is cut. Any thread.
/// Adds no time, level, prefix or line end. Never throws: without memory the line is lost.
void DebugLog(const wchar_t* format, ...);

/// Receives every diagnostic line instead of the system, for tests. Null restores the system's channel. Must itself be
/// thread-safe.
using DiagnosticHook = void (*)(std::wstring_view line);
void SetDiagnosticHook(DiagnosticHook hook);
