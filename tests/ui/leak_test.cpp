// Each window, opened and closed a hundred times, has to give everything back: GDI objects and the memory of C++ objects, counted
// exactly. Every other opening is dark.

#include <gtest/gtest.h>

#include <windows.h>

#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <new>
#include <vector>

#include "res/messages.h"
#include "tests/support/main_window_fixture.h"
#include "tests/support/theme_recorder.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/dialogs/exclusions_dialog.h"
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
using LeakCount = std::array<std::size_t, 2>;

/// The system's own count is 0 on some compatible systems; there the non-empty entries of the process's table are counted,
/// found through the process environment block.
std::size_t CountGdiObjects() {
  struct Entry {
    void* object;
    std::uint16_t owner[3];
    std::uint16_t type;
    void* user;
  };
  if (const DWORD told = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS)) return told;
  const auto findBlock = reinterpret_cast<const std::byte*(NTAPI*)()>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
  const auto* block = findBlock();
  const auto* table = *reinterpret_cast<const Entry* const*>(block + 0xF8);
  MEMORY_BASIC_INFORMATION memory{};
  ::VirtualQuery(table, &memory, sizeof(memory));
  const auto* end = reinterpret_cast<const Entry*>(static_cast<const std::byte*>(memory.BaseAddress) + memory.RegionSize);
  const auto used = [](const Entry& entry) { return entry.type != 0; };
  return static_cast<std::size_t>(std::count_if(table, std::min(end, table + 0x10000), used));
}

constexpr int kBatch = 20;
constexpr int kMostRuns = 300;

/// Runs the routine until a hundred runs in a row have left nothing, looking after every batch of twenty, and gives up after
/// three hundred; returns what the last batch that left something has left. What the system makes at some time and keeps for
/// reuse, as its device contexts, comes to rest: a leak comes with every run.
LeakCount FindLeak(const std::function<void()>& routine) {
  LeakCount left{};
  LeakCount before{};
  for (int runs = 0, cleanRuns = 0; runs < kMostRuns && cleanRuns < 100; runs += kBatch) {
    for (int i = 0; i < kBatch; ++i) routine();
    const LeakCount now = {CountGdiObjects(), liveBytes};
    LeakCount grown{};
    for (std::size_t i = 0; i < now.size(); ++i) grown[i] = std::max(now[i], before[i]) - before[i];
    cleanRuns = grown == LeakCount{} ? cleanRuns + kBatch : 0;
    left = cleanRuns == 0 ? grown : cleanRuns == 100 ? LeakCount{} : left;
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
    EXPECT_EQ(left, giveBack ? LeakCount{} : (LeakCount{kBatch, 100 * kBatch}));
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

class WindowLeak : public testing::Test, protected TestProgram {
 protected:
  /// On this thread: one of its own would still be giving back what it held when it is counted, and costs the system more than
  /// the window does.
  static void ExpectNoGrowth(TIMERPROC drive, const std::function<void()>& run) {
    bool dark = false;
    EXPECT_EQ(FindLeak([&] {
                const ThemeRecorder theme(19045, dark = !dark);
                ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, drive);
                run();
              }),
              LeakCount{});
  }
};

TEST_F(WindowLeak, Main) {
  rules.Append({MakeNewRule(1)});
  ExpectNoGrowth(&VisitMainWindow, [this] { MainDialogThread(program); });
}

TEST_F(WindowLeak, AlertLog) {
  for (std::uint32_t pid = 0; pid < 30; ++pid) recentAlerts.Append({{}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
  ExpectNoGrowth(&CancelActiveDialog, [this] { AlertLogDialogThread(program); });
}

TEST_F(WindowLeak, Exclusions) {
  engine.SetExclusions({L"a.exe", L"b.exe"});
  ExpectNoGrowth(&CancelActiveDialog, [this] { RunExclusionsDialog(nullptr, program); });
}

TEST_F(WindowLeak, About) {
  ExpectNoGrowth(&CancelActiveDialog, [this] { RunAboutDialog(nullptr, program); });
}

TEST_F(WindowLeak, OurMessageBox) {
  ExpectNoGrowth(&CancelActiveDialog, [] { XMessageBox(nullptr, L"Remove?", L"Caption", MB_OKCANCEL | MB_ICONQUESTION); });
}

}  // namespace
