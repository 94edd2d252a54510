#include "ui/dark/dark_mode.h"

#include <initializer_list>

#include "ui/dark/dark_mode_entry_points.h"

namespace {

constexpr unsigned kFirstDarkBuild = 17763;

/// Decided once at start-up and only read afterwards, by every window's thread.
struct DarkModeState {
  ThemeEntryPoints entryPoints;
  unsigned build = 0;
  bool available = false;
  bool on = false;
};

DarkModeState& State() {
  static DarkModeState state;
  return state;
}

struct VersionNumbers {
  DWORD major = 0;
  DWORD minor = 0;
  DWORD build = 0;
};

/// The system's true version, whatever the program's manifest says; zeros when the system does not tell.
VersionNumbers ReadVersionNumbers() {
  using ReadVersion = void(WINAPI*)(DWORD*, DWORD*, DWORD*);
  VersionNumbers version;
  HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
  if (ntdll == nullptr) return version;
  const auto read = reinterpret_cast<ReadVersion>(reinterpret_cast<void*>(::GetProcAddress(ntdll, "RtlGetNtVersionNumbers")));
  if (read == nullptr) return version;
  read(&version.major, &version.minor, &version.build);
  // The top bits tell a checked build from a free one.
  version.build &= 0x0FFFFFFF;
  return version;
}

bool HasRequired(const ThemeEntryPoints& entries, unsigned build) {
  const bool applicationMode =
      build >= kComposedTitleBarBuild ? entries.setApplicationMode != nullptr : entries.allowForApplication != nullptr;
  return applicationMode && entries.openNonClientTheme != nullptr && entries.refreshColorPolicy != nullptr &&
         entries.systemAsksForDark != nullptr && entries.allowForWindow != nullptr && entries.isAllowedForWindow != nullptr;
}

}  // namespace

void InitDarkMode() {
  const VersionNumbers version = ReadVersionNumbers();
  if (version.major != 10 || version.minor != 0 || version.build < kFirstDarkBuild) return;
  (void)StartDarkMode(LoadThemeEntryPoints(version.build), version.build);
}

bool StartDarkMode(const ThemeEntryPoints& entryPoints, unsigned build) {
  DarkModeState& state = State();
  state = {entryPoints, build, false, false};
  if (!HasRequired(entryPoints, build)) return false;
  state.available = true;
  if (build >= kComposedTitleBarBuild) {
    entryPoints.setApplicationMode(1);
  } else {
    entryPoints.allowForApplication(true);
  }
  entryPoints.refreshColorPolicy();
  state.on = entryPoints.systemAsksForDark() && !IsHighContrast();
  return true;
}

void SetThemeEntryPointsForTest(const ThemeEntryPoints& entryPoints, unsigned build) { StartDarkMode(entryPoints, build); }

const ThemeEntryPoints& Theme() { return State().entryPoints; }
bool DarkModeAvailable() { return State().available; }
bool DarkModeOn() { return State().on; }
bool SystemAsksForDarkNow() { return DarkModeAvailable() && Theme().systemAsksForDark(); }

bool IsHighContrast() {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof(contrast);
  return Theme().systemParameters(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0) &&
         (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

bool IsWindows10OrGreater() {
  OSVERSIONINFOEXW wanted{};
  wanted.dwOSVersionInfoSize = sizeof(wanted);
  wanted.dwMajorVersion = 10;
  DWORDLONG conditions = 0;
  for (const DWORD part : {DWORD{VER_MAJORVERSION}, DWORD{VER_MINORVERSION}, DWORD{VER_SERVICEPACKMAJOR}}) {
    conditions = ::VerSetConditionMask(conditions, part, VER_GREATER_EQUAL);
  }
  return ::VerifyVersionInfoW(&wanted, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR, conditions) != FALSE;
}

unsigned GetWindowsBuildNumber() {
  if (!IsWindows10OrGreater()) return 0;
  return State().build != 0 ? State().build : ReadVersionNumbers().build;
}

void AllowDarkMode(HWND window) {
  if (DarkModeAvailable()) Theme().allowForWindow(window, DarkModeOn());
}

void RefreshTitleBarTheme(HWND window) {
  if (!DarkModeAvailable()) return;
  BOOL dark = Theme().isAllowedForWindow(window) && Theme().systemAsksForDark() && !IsHighContrast();
  if (State().build < kComposedTitleBarBuild) {
    ::SetPropW(window, L"UseImmersiveDarkModeColors", reinterpret_cast<HANDLE>(static_cast<INT_PTR>(dark)));
  } else if (Theme().setComposition != nullptr) {
    constexpr DWORD kDarkTitleBar = 26;
    CompositionAttribute attribute{kDarkTitleBar, &dark, sizeof(dark)};
    Theme().setComposition(window, &attribute);
  }
}
