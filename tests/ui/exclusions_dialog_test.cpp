#include "ui/exclusions_dialog.h"

#include "tests/ui/program_window_fixture.h"

namespace {

class ExclusionsDialogTest : public ProgramWindowTest {
 protected:
  void OpenExclusions() {
    dialog = OpenDialog(IDM_EXCLUSIONS, L"Process Exclusions");
    edit = ::GetDlgItem(dialog, IDC_EXCLUSIONS);
    ASSERT_NE(edit, nullptr);
  }
  void TypeAndAnswer(const wchar_t* text, WORD answer) {
    ::SetWindowTextW(edit, text);
    Answer(dialog, answer);
    EXPECT_TRUE(SavedAsInMemory());
  }

  HWND dialog = nullptr;
  HWND edit = nullptr;
};

TEST_F(ExclusionsDialogTest, OkTakesEffectInTheNextCycleAndCancelDoesNot) {
  ThresholdRule rule = Rule(1, L"*");
  rule.maxHandles = 1;
  rules.Append({rule});
  engine.SetRules(&rules);
  SimulatedProcess process;
  process.pid = 100;
  process.name = L"Busy.exe";
  process.handles = 5;
  processes->Put(process);
  const auto sampled = [this] {
    engine.RunCycle();
    return !processes->Opened().empty();
  };
  Open();
  EXPECT_TRUE(sampled());

  OpenExclusions();
  EXPECT_EQ(TextOf(edit), L"");
  TypeAndAnswer(L"  other.exe  \r\n\r\n\tb*.exe\n\rmy app.exe", IDOK);
  EXPECT_EQ(*engine.Exclusions(), (ExclusionList{L"other.exe", L"b*.exe", L"my app.exe"}));
  EXPECT_FALSE(sampled());

  OpenExclusions();
  EXPECT_EQ(TextOf(edit), L"other.exe\r\nb*.exe\r\nmy app.exe");
  const auto selection = [this] { return ::SendMessageW(edit, EM_GETSEL, 0, 0); };
  EXPECT_TRUE(WaitUntil([&] { return selection() == MAKELRESULT(29, 29); })) << "a first key must not replace the list";
  TypeAndAnswer(L"", IDCANCEL);
  EXPECT_EQ(engine.Exclusions()->size(), 3U);
  EXPECT_FALSE(sampled());

  OpenExclusions();
  TypeAndAnswer(L" \r\n\t", IDOK);
  EXPECT_TRUE(sampled());
}

TEST_F(ExclusionsDialogTest, TakesTenThousandPastedLinesOfAnyLineEnd) {
  Open();
  for (const std::wstring lineEnd : {L"\r\n", L"\n", L"\r"}) {
    ExclusionList expected;
    std::wstring text;
    for (int i = 0; i < 10'000; ++i) {
      expected.push_back(L"process number " + std::to_wstring(i) + L".exe");
      text += expected.back() + lineEnd;
    }
    SetClipboard(text + L'\0');
    engine.SetExclusions({});
    OpenExclusions();
    ::SendMessageW(edit, WM_PASTE, 0, 0);
    EXPECT_EQ(::SendMessageW(edit, EM_GETLINECOUNT, 0, 0), 10'001) << "each on a line of its own, and an empty one at the end";
    Answer(dialog, IDOK);
    EXPECT_TRUE(*engine.Exclusions() == expected) << engine.Exclusions()->size();
    EXPECT_TRUE(SavedAsInMemory());
  }
}

}  // namespace
