#include "ui/main_window/version_link.h"
#include "ui/dialogs/update_installation.h"

#include <atomic>

#include "res/messages.h"
#include "tests/support/program_window_fixture.h"

namespace {

std::atomic<int> installations{0};

}  // namespace

/// The linker finds this one before the program's own, which would download.
void UpdateInstallThread(Program&) { ++installations; }

namespace {

using VersionLinkTest = ProgramWindowTest;

TEST_F(VersionLinkTest, OffersACheckUntilAnUpdateIsKnown) {
  constexpr wchar_t kUpdate[] = L"Version 1.2.3.4 available. <a>Update now</a>";
  const Posts kCheck = {{UWM_CHECK_FOR_UPDATES, 1}};
  const auto notify = [this](UINT code) {
    NMLINK link{};
    link.hdr = {Item(IDC_VERSION_LINK), IDC_VERSION_LINK, code};
    ::SendMessageW(Window(), WM_NOTIFY, IDC_VERSION_LINK, reinterpret_cast<LPARAM>(&link));
  };
  const auto shown = [this] { return ::IsWindowVisible(Item(IDC_VERSION_LINK)) ? Text(IDC_VERSION_LINK) : L"hidden"; };
  std::uint32_t error = 0;
  ASSERT_TRUE(updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error));
  updates.SetLatestVersion(L"1.2.3.4");
  Open();
  EXPECT_EQ(shown(), L"Version 0.0.2.7 BETA. <a>Check for updates</a>");
  notify(NM_CLICK);
  EXPECT_EQ(TakePosts(), kCheck);
  Command(IDM_CHECK_FOR_UPDATES);
  EXPECT_EQ(TakePosts(), kCheck);
  // The real key, which must reach the link and not the default button.
  ::SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(IDC_VERSION_LINK)), TRUE);
  ::PostMessageW(Item(IDC_VERSION_LINK), WM_KEYDOWN, VK_RETURN, 0);
  EXPECT_TRUE(WaitUntil([&] { return TakePosts() == kCheck; }));
  EXPECT_EQ(installations, 0);

  updates.UpdateAvailableEvent.Signal();
  ::SendMessageW(Window(), UWM_UPDATE_AVAILABLE, 0, 0);
  EXPECT_EQ(shown(), kUpdate);
  notify(NM_RETURN);
  EXPECT_TRUE(WaitUntil([] { return installations == 1; }));
  EXPECT_TRUE(TakePosts().empty());
  Close();
  Open();
  EXPECT_EQ(shown(), kUpdate) << "in a new window, too";
}

}  // namespace
