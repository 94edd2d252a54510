// Each window, opened and closed two hundred times, has to give everything back: GDI objects, kernel handles and the memory of
// C++ objects, counted exactly. Every other opening is dark.

#include <gtest/gtest.h>

#include <windows.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <vector>

#include "app/messages.h"
#include "tests/ui/main_window_fixture.h"
#include "tests/ui/theme_recorder.h"
#include "ui/about_dialog.h"
#include "ui/exclusions_dialog.h"
#include "ui/message_box.h"

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

struct LeakCount {
  unsigned gdiObjects = 0;
  unsigned handles = 0;
  std::size_t bytes = 0;
  bool operator==(const LeakCount&) const = default;
};

void PrintTo(const LeakCount& count, std::ostream* out) {
  *out << count.gdiObjects << " GDI objects, " << count.handles << " handles, " << count.bytes << " bytes";
}

template <class Function>
Function NtdllFunction(const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name)));
}

/// Non-empty entries of the process's GDI handle table, found through the process environment block.
unsigned CountGdiTableEntries() {
  struct Entry {
    void* object;
    std::uint16_t owner[3];
    std::uint16_t type;
    void* user;
  };
  constexpr std::size_t kTableOffset = 0xF8;
  constexpr std::size_t kTableEntries = 0x10000;
  const std::byte* peb = NtdllFunction<const std::byte*(NTAPI*)()>("RtlGetCurrentPeb")();
  const auto* table = *reinterpret_cast<const Entry* const*>(peb + kTableOffset);
  MEMORY_BASIC_INFORMATION memory{};
  if (table == nullptr || ::VirtualQuery(table, &memory, sizeof(memory)) == 0) return 0;
  const auto* end = reinterpret_cast<const Entry*>(static_cast<const std::byte*>(memory.BaseAddress) + memory.RegionSize);
  end = std::min(end, table + kTableEntries);
  return static_cast<unsigned>(std::count_if(table, end, [](const Entry& entry) { return entry.type != 0; }));
}

/// This process's rows of the system-wide handle list.
unsigned CountHandleListEntries() {
  struct Entry {
    std::uint16_t processId;
    std::uint16_t details[3];
    void* object;
    std::uint32_t access;
  };
  constexpr int kSystemHandleInformation = 16;
  constexpr std::size_t kFirstEntry = 8;
  const auto query = NtdllFunction<LONG(NTAPI*)(int, void*, ULONG, ULONG*)>("NtQuerySystemInformation");
  std::vector<std::byte> buffer(1 << 20);
  ULONG needed = 0;
  while (query(kSystemHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), &needed) != 0) {
    if (buffer.size() > (std::size_t{1} << 28)) return 0;
    buffer.resize(buffer.size() * 2);
  }
  const auto count = *reinterpret_cast<const std::uint32_t*>(buffer.data());
  const auto* entries = reinterpret_cast<const Entry*>(buffer.data() + kFirstEntry);
  const auto isOurs = [self = ::GetCurrentProcessId()](const Entry& entry) { return entry.processId == self; };
  return static_cast<unsigned>(std::count_if(entries, entries + count, isOurs));
}

/// The system's own counters answer 0 on some compatible systems; there the tables behind them are read.
LeakCount CountLeaks() {
  LeakCount count;
  count.gdiObjects = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
  if (count.gdiObjects == 0) count.gdiObjects = CountGdiTableEntries();
  DWORD handles = 0;
  if (!::GetProcessHandleCount(::GetCurrentProcess(), &handles) || handles == 0) handles = CountHandleListEntries();
  count.handles = handles;
  count.bytes = liveBytes;
  return count;
}

constexpr int kBatch = 20;
constexpr int kMostRuns = 600;

/// Runs the routine until two hundred runs in a row have left nothing, looking after every batch of twenty, and gives up after
/// six hundred; returns what the last batch that left something has left. What the system makes at some time and keeps for reuse,
/// as its device contexts, comes to rest: a leak comes with every run.
LeakCount FindLeak(const std::function<void()>& routine) {
  LeakCount left;
  LeakCount before;
  for (int runs = 0, cleanRuns = 0; runs < kMostRuns; runs += kBatch) {
    for (int i = 0; i < kBatch; ++i) routine();
    const LeakCount now = CountLeaks();
    if (now.gdiObjects <= before.gdiObjects && now.handles <= before.handles && now.bytes <= before.bytes) {
      if ((cleanRuns += kBatch) == 200) return {};
    } else {
      left = {now.gdiObjects - before.gdiObjects, now.handles - before.handles, now.bytes - before.bytes};
      cleanRuns = 0;
    }
    before = now;
  }
  return left;
}

// The counter itself must see every kept object, or the tests below prove nothing.
TEST(LeakCounter, SeesEveryKeptObjectAndNoReturnedOne) {
  std::vector<std::unique_ptr<char[]>> blocks;
  std::vector<UniqueBrush> brushes;
  std::vector<UniqueHandle> events;
  const auto make = [&] {
    blocks.push_back(std::make_unique<char[]>(100));
    brushes.emplace_back(::CreateSolidBrush(RGB(1, 2, 3)));
    events.emplace_back(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  };
  blocks.reserve(kMostRuns + 1);
  brushes.reserve(kMostRuns + 1);
  events.reserve(kMostRuns + 1);
  EXPECT_EQ(FindLeak(make), (LeakCount{kBatch, kBatch, 100 * kBatch}));
  EXPECT_EQ(FindLeak([&] {
              blocks.pop_back();
              brushes.pop_back();
              events.pop_back();
              make();
            }),
            LeakCount{});
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
