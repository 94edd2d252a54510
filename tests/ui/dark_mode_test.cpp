#include "ui/dark/dark_mode.h"

#include <gtest/gtest.h>

#include "platform/handles.h"
#include "tests/support/theme_recorder.h"
#include "ui/dark/dark_scroll_bar.h"

namespace {

TEST(DarkMode, IsDecidedAtStartButTitleBarsFollowWhatIsAskedForNow) {
  const Unique<HWND, ::DestroyWindow> window(::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr));
  for (const unsigned build : {17763u, 18361u, 18362u, 22000u}) {
    for (int bits = 0; bits < 8; ++bits) {
      SCOPED_TRACE(testing::Message() << build << ", " << bits);
      const bool asks = (bits & 2) != 0;
      const bool contrast = (bits & 4) != 0;
      const ThemeRecorder recorder(build, !asks, !contrast);
      EXPECT_EQ(DarkModeOn(), !asks && contrast);
      EXPECT_EQ(recorder->applicationModes, build < 18362 ? 0 : 1);
      EXPECT_EQ(recorder->applicationAllowances, build < 18362 ? 1 : 0);
      EXPECT_EQ(recorder->colorRefreshes, 1);
      recorder->allowedForWindow = (bits & 1) != 0;
      recorder->asksForDark = asks;
      recorder->highContrast = contrast;
      RefreshTitleBarTheme(window.get());
      const int dark = bits == 3 ? 1 : 0;
      const auto property = reinterpret_cast<INT_PTR>(::GetPropW(window.get(), L"UseImmersiveDarkModeColors"));
      EXPECT_EQ(build < 18362 ? property : recorder->composed.at(0), dark);
      EXPECT_EQ(recorder->composed.size(), build < 18362 ? 0u : 1u);
    }
  }
}

TEST(DarkMode, ScrollBarsOfTheControlsAreOpenedAsThemedOnes) {
  for (const bool dark : {true, false}) {
    const ThemeRecorder recorder(19045, dark);
    for (const wchar_t* name : {L"ScrollBar", L"scrollbar"}) DarkScrollBarThemeHook(::GetDesktopWindow(), name);
    EXPECT_EQ(recorder->opened, dark ? L"Explorer::ScrollBar! scrollbar " : L"ScrollBar scrollbar ");
  }
}

}  // namespace
