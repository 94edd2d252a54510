#include "ui/version_link.h"

#include <commctrl.h>

#include <atomic>

#include "app/messages.h"
#include "tests/ui/settings_fixture.h"

namespace {

std::atomic<int> installations{0};
constexpr wchar_t kNoUpdate[] = L"Version 0.0.2.7 BETA. <a>Check for updates</a>";
constexpr wchar_t kUpdate[] = L"Version 1.2.3.4 available. <a>Update now</a>";

}  // namespace

/// The linker finds this one before the program's own, which would download.
void UpdateInstallThread(Program&) { ++installations; }

namespace {

class VersionLinkTest : public SettingsFixture {
 protected:
  void Notify(UINT code) const {
    NMLINK link{};
    link.hdr = {Item(IDC_VERSION_LINK), IDC_VERSION_LINK, code};
    ::SendMessageW(window, WM_NOTIFY, IDC_VERSION_LINK, reinterpret_cast<LPARAM>(&link));
  }
};

TEST_F(VersionLinkTest, OffersACheckUntilAnUpdateIsKnown) {
  const std::vector<Posted> kCheck = {{UWM_CHECK_FOR_UPDATES, 1}};
  OpenWindow();  // without the event
  EXPECT_EQ(Text(IDC_VERSION_LINK), kNoUpdate);
  EXPECT_TRUE(::IsWindowVisible(Item(IDC_VERSION_LINK)));
  Notify(NM_CLICK);
  EXPECT_EQ(TakePosted(), kCheck);
  CloseWindow();
  std::uint32_t error = 0;
  ASSERT_TRUE(updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error));
  updates.SetLatestVersion(L"1.2.3.4");
  OpenWindow();
  EXPECT_EQ(Text(IDC_VERSION_LINK), kNoUpdate);
  // The real key, which must reach the link and not the default button.
  ::SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(IDC_VERSION_LINK)), TRUE);
  ::PostMessageW(Item(IDC_VERSION_LINK), WM_KEYDOWN, VK_RETURN, 0);
  EXPECT_TRUE(WaitUntil([&] { return TakePosted() == kCheck; }));
  EXPECT_EQ(installations, 0);

  updates.UpdateAvailableEvent.Signal();
  ::SendMessageW(window, UWM_UPDATE_AVAILABLE, 0, 0);
  EXPECT_EQ(Text(IDC_VERSION_LINK), kUpdate);
  Notify(NM_RETURN);
  EXPECT_TRUE(WaitUntil([] { return installations == 1; }));
  EXPECT_TRUE(TakePosted().empty());

  CloseWindow();
  OpenWindow();
  EXPECT_EQ(Text(IDC_VERSION_LINK), kUpdate);
  EXPECT_TRUE(::IsWindowVisible(Item(IDC_VERSION_LINK)));
  Notify(NM_CLICK);
  EXPECT_TRUE(WaitUntil([] { return installations == 2; }));
}

}  // namespace
