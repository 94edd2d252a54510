#include <gtest/gtest.h>

#include <cwctype>

#include "ui/exclusions_text.h"

namespace {

TEST(ExclusionsText, AgreesWithTheRuntimeOnWhiteSpace) {
  for (unsigned unit = 1; unit < 0x10000; ++unit) {
    const auto character = static_cast<wchar_t>(unit);
    EXPECT_EQ(SplitExclusions(std::wstring(1, character)).empty(), std::iswspace(character) != 0) << std::hex << unit;
  }
}

}  // namespace
