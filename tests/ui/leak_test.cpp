// Each window, opened and closed a hundred times, has to give everything back: GDI objects and the memory of C++ objects, counted
// exactly. Every other opening is dark.

#include <gtest/gtest.h>

#include <array>
#include <new>

#include "res/messages.h"
#include "res/resource.h"
#include "tests/support/limited_memory.h"
#include "tests/support/test_program.h"
#include "tests/support/theme_recorder.h"
#include "tests/support/window_driver.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/main_window/main_window_thread.h"

namespace {

/// GDI objects, bytes.
using LeakCount = std::pair<std::size_t, std::size_t>;

/// The system's own count, which is 0 on some compatible systems; there the non-empty entries of the process's table, found
/// through the process environment block.
std::size_t CountGdiObjects() {
  using Entry = std::array<std::uint16_t, 12>;  // the eighth is the object's kind
  if (const DWORD told = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS)) return told;
  const auto block = reinterpret_cast<const std::byte*(NTAPI*)()>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")))();
  const auto* table = *reinterpret_cast<const Entry* const*>(block + 0xF8);
  MEMORY_BASIC_INFORMATION memory{};
  ::VirtualQuery(table, &memory, sizeof(memory));
  const auto* end = reinterpret_cast<const Entry*>(static_cast<const std::byte*>(memory.BaseAddress) + memory.RegionSize);
  const auto used = [](const Entry& entry) { return entry[7] != 0; };
  return static_cast<std::size_t>(std::count_if(table, std::min(end, table + 0x10000), used));
}

constexpr int kBatch = 20;

/// The least that any of six batches has left: a leak comes with every run, while what the system makes at some time and keeps
/// for reuse, as its device contexts, comes to rest.
LeakCount FindLeak(const std::function<void()>& routine) {
  LeakCount least{SIZE_MAX, SIZE_MAX};
  for (int batch = 0; batch < 6; ++batch) {
    const LeakCount before = {CountGdiObjects(), liveBytes};
    for (int run = 0; run < kBatch; ++run) routine();
    least.first = std::min(least.first, CountGdiObjects() - before.first);
    least.second = std::min(least.second, liveBytes - before.second);
  }
  return least;
}

/// Closes the dialog of this thread as soon as its loop runs; before that goes through the main window's own windows, the box
/// over a cell and those that its commands open.
void CALLBACK VisitAndClose(HWND, UINT, UINT_PTR timer, DWORD) {
  HWND dialog = ::GetActiveWindow();
  if (dialog == nullptr || !::IsWindowEnabled(dialog)) return;
  ::KillTimer(nullptr, timer);
  if (HWND list = ::GetDlgItem(dialog, IDC_RULE_LIST)) {
    SelectRows(list, {0});
    NotifyDoubleClick(list, 0, 1);
    ::SendMessageW(dialog, UWM_END_INPLACE_EDIT, 1, 0);
    for (const int command : {IDC_EDIT_RULE, IDM_EXCLUSIONS, IDM_ABOUT, IDM_RESET_RULES}) {
      ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &VisitAndClose);
      ::SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(command), 0);
    }
  }
  PostCommand(dialog, ::GetDlgItem(dialog, IDNO) != nullptr ? IDNO : IDCANCEL);
}

// On this thread: one of its own would still be giving back what it held when it is counted, and costs the system more than the
// window does.
TEST(Leaks, EveryWindowGivesEverythingBack) {
  [[maybe_unused]] static void* volatile kept = nullptr;
  const auto keep = [] {
    kept = ::CreateSolidBrush(0);
    kept = ::operator new(100);
  };
  EXPECT_EQ(FindLeak(keep), LeakCount(kBatch, 100 * kBatch)) << "nothing below proves anything";
  TestProgram own;
  own.rules.Append({MakeNewRule(1)});
  own.recentAlerts.Append({{}, 5, L"app.exe", 1, L"Threads: 9 > 8"});
  own.engine.SetExclusions({L"a.exe", L"b.exe"});
  bool dark = false;
  for (const auto window : {&MainDialogThread, &AlertLogDialogThread}) {
    const auto open = [&] {
      const ThemeRecorder theme(19045, dark = !dark);
      ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &VisitAndClose);
      window(own.program);
    };
    EXPECT_EQ(FindLeak(open), LeakCount{}) << (window == &MainDialogThread ? "main window" : "alert log");
  }
}

}  // namespace
