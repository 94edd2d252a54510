#pragma once

// Wide formatted text as a string: one printf for the whole program, with the same meaning on Windows and on the host. "%ls" is
// wide text everywhere; sizes are printed through a cast to unsigned or unsigned long long, since old runtimes lack "%zu".

#include <cstdarg>
#include <string>

/// Formats with the wide printf rules. Empty when the format itself is faulty. Any thread.
std::wstring FormatText(const wchar_t* format, ...);
std::wstring FormatTextList(const wchar_t* format, std::va_list arguments);
