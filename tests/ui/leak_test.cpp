// Each window, opened and closed a hundred times, has to give everything back: GDI objects and the memory of C++ objects, counted
// exactly. Every other opening is dark.

#include <gtest/gtest.h>

#include <windows.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <new>
#include <ostream>
#include <utility>

#include "res/messages.h"
#include "res/resource.h"
#include "tests/support/test_program.h"
#include "tests/support/theme_recorder.h"
#include "tests/support/window_driver.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/dialogs/exclusions_dialog.h"
#include "ui/main_window/main_window_thread.h"
#include "ui/message_box/message_box.h"

namespace {
std::atomic<std::size_t> liveBytes{0};
}

// What C++ objects hold; what the system's own libraries keep is not in it. The other forms of new and delete end in these.
void* operator new(std::size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  liveBytes += _msize(block);
  return block;
}
void operator delete(void* block) noexcept {
  if (block != nullptr) liveBytes -= _msize(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

/// GDI objects, bytes.
using LeakCount = std::pair<std::size_t, std::size_t>;

/// The system's own count, which is 0 on some compatible systems; there the non-empty entries of the process's table, found
/// through the process environment block.
std::size_t CountGdiObjects() {
  struct Entry {
    void* object;
    std::uint16_t owner[3];
    std::uint16_t type;
    void* user;
  };
  if (const DWORD told = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS)) return told;
  const auto block = reinterpret_cast<const std::byte*(NTAPI*)()>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")))();
  const auto* table = *reinterpret_cast<const Entry* const*>(block + 0xF8);
  MEMORY_BASIC_INFORMATION memory{};
  ::VirtualQuery(table, &memory, sizeof(memory));
  const auto* end = reinterpret_cast<const Entry*>(static_cast<const std::byte*>(memory.BaseAddress) + memory.RegionSize);
  const auto used = [](const Entry& entry) { return entry.type != 0; };
  return static_cast<std::size_t>(std::count_if(table, std::min(end, table + 0x10000), used));
}

constexpr int kBatch = 20;
constexpr int kWantedRuns = 100;
constexpr int kMostRuns = 600;

/// Runs the routine until a hundred runs in a row have left nothing, looking after every batch, and gives up after six hundred;
/// returns what the last batch that left something has left. What the system makes at some time and keeps for reuse, as its
/// device contexts, comes to rest: a leak comes with every run.
LeakCount FindLeak(const std::function<void()>& routine) {
  LeakCount left{};
  LeakCount before{};
  for (int runs = 0, cleanRuns = 0; runs < kMostRuns && cleanRuns < kWantedRuns; runs += kBatch) {
    for (int i = 0; i < kBatch; ++i) routine();
    const LeakCount now = {CountGdiObjects(), liveBytes};
    const LeakCount grown = {std::max(now.first, before.first) - before.first,
                             std::max(now.second, before.second) - before.second};
    cleanRuns = grown == LeakCount{} ? cleanRuns + kBatch : 0;
    left = cleanRuns == 0 ? grown : cleanRuns == kWantedRuns ? LeakCount{} : left;
    before = now;
  }
  return left;
}

// The counter itself must see every kept object, or the tests below prove nothing.
TEST(LeakCounter, SeesEveryKeptObjectAndNoReturnedOne) {
  for (const bool giveBack : {false, true}) {
    const LeakCount left = FindLeak([giveBack] {
      HBRUSH brush = ::CreateSolidBrush(RGB(1, 2, 3));
      void* block = ::operator new(100);
      if (!giveBack) return;
      ::DeleteObject(brush);
      ::operator delete(block);
    });
    EXPECT_EQ(left, giveBack ? LeakCount{} : LeakCount(kBatch, 100 * kBatch));
  }
}

/// Closes the dialog of this thread as soon as its loop runs.
void CALLBACK CancelActiveDialog(HWND, UINT, UINT_PTR timer, DWORD) {
  HWND dialog = ::GetActiveWindow();
  if (dialog == nullptr || !::IsWindowEnabled(dialog)) return;
  ::KillTimer(nullptr, timer);
  PostCommand(dialog, IDCANCEL);
}

/// Goes through the main window's own windows, the box over a cell and the rule editor, then closes it.
void CALLBACK VisitMainWindow(HWND, UINT, UINT_PTR timer, DWORD) {
  HWND window = ::GetActiveWindow();
  if (window == nullptr) return;
  ::KillTimer(nullptr, timer);
  HWND list = ::GetDlgItem(window, IDC_RULE_LIST);
  SelectRows(list, {0});
  NotifyDoubleClick(list, 0, 1);
  ::SendMessageW(window, UWM_END_INPLACE_EDIT, 1, 0);
  ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &CancelActiveDialog);
  SendCommand(window, IDC_EDIT_RULE);
  PostCommand(window, IDM_EXIT);
}

struct Window {
  const char* name;
  TIMERPROC drive;
  void (*run)(Program& program);
};

void PrintTo(const Window& window, std::ostream* out) { *out << window.name; }

class WindowLeak : public testing::TestWithParam<Window>, protected TestProgram {};

// On this thread: one of its own would still be giving back what it held when it is counted, and costs the system more than the
// window does.
TEST_P(WindowLeak, GivesEverythingBack) {
  rules.Append({MakeNewRule(1)});
  recentAlerts.Append({{}, 5, L"app.exe", 1, L"Threads: 9 > 8"});
  engine.SetExclusions({L"a.exe", L"b.exe"});
  bool dark = false;
  EXPECT_EQ(FindLeak([&] {
              const ThemeRecorder theme(19045, dark = !dark);
              ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, GetParam().drive);
              GetParam().run(program);
            }),
            LeakCount{});
}

INSTANTIATE_TEST_SUITE_P(
    Of, WindowLeak,
    testing::Values(Window{"Main", &VisitMainWindow, &MainDialogThread},
                    Window{"AlertLog", &CancelActiveDialog, &AlertLogDialogThread},
                    Window{"Exclusions", &CancelActiveDialog, [](Program& program) { RunExclusionsDialog(nullptr, program); }},
                    Window{"About", &CancelActiveDialog, [](Program& program) { RunAboutDialog(nullptr, program); }},
                    Window{"MessageBox", &CancelActiveDialog,
                           [](Program&) { XMessageBox(nullptr, L"Remove?", L"Caption", MB_OKCANCEL | MB_ICONQUESTION); }}),
    [](const auto& window) { return std::string(window.param.name); });

}  // namespace
