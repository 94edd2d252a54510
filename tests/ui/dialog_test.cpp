#include "ui/dialog.h"

#include <gtest/gtest.h>

#include "res/resource.h"

namespace {

class ProbeDialog : public Dialog {
 public:
  explicit ProbeDialog(WORD templateId = IDD_ALERT_LOG) : Dialog(::GetModuleHandleW(nullptr), templateId) {}

  bool hadIconsAtInit = false;
  int destroyed = 0;
  INT_PTR endAtInit = 0;

 protected:
  bool OnInitDialog() override {
    hadIconsAtInit =
        ::SendMessageW(Window(), WM_GETICON, ICON_SMALL, 0) != 0 && ::SendMessageW(Window(), WM_GETICON, ICON_BIG, 0) != 0;
    if (endAtInit != 0) End(endAtInit);
    return true;
  }
  std::optional<INT_PTR> OnMessage(UINT message, WPARAM wParam, LPARAM) override {
    if (message == WM_APP) return Reply(static_cast<LRESULT>(wParam) * 2);
    return std::nullopt;
  }
  void OnDestroy() override { ++destroyed; }
};

TEST(DialogBase, BindsItsObjectAndLetsGoOfIt) {
  ProbeDialog dialog;
  HWND window = dialog.CreateModeless(nullptr);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(dialog.Window(), window);
  EXPECT_TRUE(dialog.hadIconsAtInit);
  EXPECT_EQ(::SendMessageW(window, WM_APP, 21, 0), 42);
  ::DestroyWindow(window);
  EXPECT_EQ(dialog.destroyed, 1);
  EXPECT_EQ(dialog.Window(), nullptr);

  ProbeDialog modal;
  modal.endAtInit = 5;
  EXPECT_EQ(modal.RunModal(nullptr), 5);
  EXPECT_EQ(ProbeDialog(9999).RunModal(nullptr), -1);

  // A window that outlives its object no longer reaches it.
  {
    ProbeDialog shortLived;
    window = shortLived.CreateModeless(nullptr);
  }
  EXPECT_EQ(::SendMessageW(window, WM_APP, 21, 0), 0);
  ::DestroyWindow(window);
}

}  // namespace
