#include "ui/exclusions_dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "platform/handles.h"
#include "res/resource.h"
#include "storage/settings_registry.h"
#include "test_program.h"
#include "window_driver.h"

namespace {

constexpr wchar_t kTitle[] = L"Process Exclusions";

class ExclusionsDialogTest : public ::testing::Test {
 protected:
  void Open() {
    thread_ = std::make_unique<WindowThread>([this] { RunExclusionsDialog(nullptr, test_.program); });
    dialog_ = thread_->WaitForDialog(kTitle);
    edit_ = ::GetDlgItem(dialog_, IDC_EXCLUSIONS);
    ASSERT_NE(edit_, nullptr);
  }
  void Type(const wchar_t* text) const { ::SendMessageW(edit_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)); }
  void Close(int id) {
    PostCommand(dialog_, id);
    ASSERT_TRUE(thread_->WaitForEnd());
  }
  /// What a program started now would read from the registry.
  static ExclusionList Saved() {
    TestProgram next;
    LoadSettings(next.settings, next.engine);
    return *next.engine.Exclusions();
  }

  TestProgram test_;
  std::unique_ptr<WindowThread> thread_;
  HWND dialog_ = nullptr;
  HWND edit_ = nullptr;
};

TEST_F(ExclusionsDialogTest, OkTakesEffectInTheNextCycleAndCancelDoesNot) {
  ThresholdRule rule = MakeNewRule(test_.rules.TakeRuleId());
  rule.processPattern = L"*";
  rule.maxHandles = 1;
  test_.rules.Append({rule});
  test_.engine.SetRules(&test_.rules);
  SimulatedProcess process;
  process.pid = 100;
  process.name = L"Busy.exe";
  process.handles = 5;
  test_.processes->Put(process);
  const auto sampled = [this] {
    test_.engine.RunCycle();
    return !test_.processes->Opened().empty();
  };
  ASSERT_TRUE(sampled());

  Open();
  EXPECT_EQ(TextOf(edit_), L"");
  Type(L"  other.exe  \r\n\r\n\tb*.exe\n\rmy app.exe");
  Close(IDOK);
  EXPECT_EQ(*test_.engine.Exclusions(), (ExclusionList{L"other.exe", L"b*.exe", L"my app.exe"}));
  EXPECT_EQ(Saved(), *test_.engine.Exclusions());
  EXPECT_FALSE(sampled());

  Open();
  EXPECT_EQ(TextOf(edit_), L"other.exe\r\nb*.exe\r\nmy app.exe");
  const auto selection = [this] { return ::SendMessageW(edit_, EM_GETSEL, 0, 0); };
  EXPECT_TRUE(WaitUntil([&] { return selection() == MAKELRESULT(29, 29); })) << "a first key must not replace the list";
  Type(L"");
  Close(IDCANCEL);
  EXPECT_FALSE(sampled());
  EXPECT_EQ(Saved().size(), 3u);

  Open();
  Type(L" \r\n\t");
  Close(IDOK);
  EXPECT_TRUE(sampled());
  EXPECT_TRUE(Saved().empty());
}

TEST_F(ExclusionsDialogTest, TakesTenThousandPastedLinesOfAnyLineEnd) {
  for (const wchar_t* lineEnd : {L"\r\n", L"\n", L"\r"}) {
    ExclusionList expected;
    std::wstring text;
    for (int i = 0; i < 10'000; ++i) {
      expected.push_back(L"process number " + std::to_wstring(i) + L".exe");
      text += expected.back() + lineEnd;
    }
    {
      const ClipboardLock clipboard(nullptr);
      ASSERT_TRUE(clipboard.IsOpen());
      ::EmptyClipboard();
      HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
      std::memcpy(::GlobalLock(memory), text.c_str(), (text.size() + 1) * sizeof(wchar_t));
      ::GlobalUnlock(memory);
      ::SetClipboardData(CF_UNICODETEXT, memory);
    }
    test_.engine.SetExclusions({});
    Open();
    ::SendMessageW(edit_, WM_PASTE, 0, 0);
    EXPECT_EQ(::SendMessageW(edit_, EM_GETLINECOUNT, 0, 0), 10'001) << "each on a line of its own, and an empty one at the end";
    Close(IDOK);
    EXPECT_EQ(test_.engine.Exclusions()->size(), expected.size());
    EXPECT_TRUE(*test_.engine.Exclusions() == expected);
    EXPECT_TRUE(Saved() == expected);
  }
  Open();
  Type(L"");
  Close(IDOK);
}

}  // namespace
