#pragma once

// Where diagnostic lines leave the program; one implementation per system. Only diagnostics.cpp calls it.

#include <string>

/// Any thread; one line at a time stays whole.
void WriteDiagnosticLine(const std::wstring& line);
