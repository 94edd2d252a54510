#pragma once

// The About box: icon, name, version, legal notice and the product's web page.

#include <windows.h>

#include <functional>

struct Program;

/// Runs the box. The owner's thread.
void RunAboutDialog(HWND owner, Program& program);

/// Opens an address for the owner window; what comes of it is nobody's concern.
using PageOpener = std::function<void(HWND owner, const wchar_t* address)>;
/// The same with another way to open the page than the user's browser.
void RunAboutDialog(HWND owner, Program& program, const PageOpener& openPage);
