#include "ui/dialog.h"

#include <gtest/gtest.h>

#include "res/resource.h"

namespace {

/// The alert log's resource under the base alone, with what the tests ask of the base made public.
class ProbeDialog : public Dialog {
 public:
  explicit ProbeDialog(WORD templateId = IDD_ALERT_LOG) : Dialog(::GetModuleHandleW(nullptr), templateId) {}
  using Dialog::Item;
  using Dialog::StartLayout;

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
}

TEST(DialogBase, OutlivedWindowNoLongerReachesTheObject) {
  HWND window = nullptr;
  {
    ProbeDialog dialog;
    window = dialog.CreateModeless(nullptr);
  }
  EXPECT_EQ(::SendMessageW(window, WM_APP, 21, 0), 0);
  ::DestroyWindow(window);
}

RECT ClientRectOf(const ProbeDialog& dialog, int id) {
  RECT rect{};
  ::GetWindowRect(dialog.Item(id), &rect);
  ::MapWindowPoints(nullptr, dialog.Window(), reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

TEST(DialogBase, ResizingFollowsTheAnchors) {
  constexpr AnchorRow kRows[] = {{IDC_ALERT_LIST, ANCHOR_WIDEN | ANCHOR_GROW_TALLER},
                                 {IDC_EXPORT_CSV, ANCHOR_MOVE_DOWN},
                                 {4711, ANCHOR_MOVE_DOWN},
                                 {IDCANCEL, ANCHOR_MOVE_RIGHT | ANCHOR_MOVE_DOWN}};
  ProbeDialog dialog;
  HWND window = dialog.CreateModeless(nullptr);
  ASSERT_NE(window, nullptr);
  RECT frame{};
  ::GetWindowRect(window, &frame);
  const int width = frame.right - frame.left;
  const int height = frame.bottom - frame.top;
  const auto resize = [&](int dx, int dy) {
    ::SetWindowPos(window, nullptr, 0, 0, width + dx, height + dy, SWP_NOMOVE | SWP_NOZORDER);
  };
  const RECT list = ClientRectOf(dialog, IDC_ALERT_LIST);
  const RECT button = ClientRectOf(dialog, IDC_EXPORT_CSV);
  const RECT close = ClientRectOf(dialog, IDCANCEL);

  resize(10, 10);  // before the layout starts nothing moves
  const RECT unmoved = ClientRectOf(dialog, IDC_ALERT_LIST);
  EXPECT_TRUE(::EqualRect(&list, &unmoved));
  resize(0, 0);
  dialog.StartLayout(kRows, 20, true);
  resize(60, 40);
  RECT now = ClientRectOf(dialog, IDC_ALERT_LIST);
  EXPECT_TRUE(now.left == list.left && now.top == list.top && now.right == list.right + 60 && now.bottom == list.bottom + 40);
  now = ClientRectOf(dialog, IDC_EXPORT_CSV);
  EXPECT_TRUE(now.left == button.left && now.right == button.right && now.top == button.top + 40 &&
              now.bottom == button.bottom + 40);
  now = ClientRectOf(dialog, IDCANCEL);
  EXPECT_TRUE(now.left == close.left + 60 && now.right == close.right + 60 && now.top == close.top + 40);

  // A minimised window keeps its layout; the smallest size is the one at opening, with the extra height.
  ::SendMessageW(window, WM_SIZE, SIZE_MINIMIZED, 0);
  EXPECT_EQ(ClientRectOf(dialog, IDC_ALERT_LIST).right, list.right + 60);
  MINMAXINFO limits{};
  ::SendMessageW(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
  EXPECT_EQ(limits.ptMinTrackSize.x, width);
  EXPECT_EQ(limits.ptMinTrackSize.y, height + 20);
  ::DestroyWindow(window);
}

}  // namespace
