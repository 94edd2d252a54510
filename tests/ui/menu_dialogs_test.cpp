// The dialogs that a menu opens: exclusions and About.

#include "product_config.h"
#include "tests/support/program_window_fixture.h"
#include "ui/dialogs/about_dialog.h"

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
  rules.Append({{.ruleId = 1, .processPattern = L"*", .maxHandles = 1}});
  engine.SetRules(&rules);
  processes->Put({.pid = 100, .name = L"Busy.exe", .handles = 5, .memory = {}, .times = {}});
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

TEST(AboutDialog, OpensThePageOnlyFromItsLink) {
  constexpr wchar_t kPage[] = L"" VANTORA_PRODUCT_PAGE;
  TestProgram test;
  std::vector<std::pair<HWND, std::wstring>> opened;
  WindowThread thread([&] {
    RunAboutDialog(nullptr, test.program, [&](HWND owner, const wchar_t* address) { opened.emplace_back(owner, address); });
  });
  HWND dialog = thread.WaitForDialog(L"About Vantora");
  ASSERT_NE(dialog, nullptr);
  ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_ABOUT_LINK, STN_DBLCLK), 0);
  for (const int id : {IDC_ABOUT_NAME, IDC_ABOUT_VERSION, IDC_ABOUT_ICON, IDC_ABOUT_LINK}) {
    EXPECT_TRUE(opened.empty()) << id;
    ::SendDlgItemMessageW(dialog, id, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendDlgItemMessageW(dialog, id, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  }
  EXPECT_EQ(opened, (decltype(opened){{dialog, kPage}}));
  PostCommand(dialog, IDOK);
  EXPECT_TRUE(thread.WaitForEnd());
}

}  // namespace
