#include "ui/dark/delay_import_slot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kSlot = 0x350;

void Put(std::vector<std::byte>& image, std::size_t offset, std::uint32_t value) {
  std::memcpy(image.data() + offset, &value, sizeof(value));
}

/// A minimal 64-bit module image with two late-imported libraries. Exactly as large as what it holds, so that a sanitizer sees
/// any step beyond it.
std::vector<std::byte> MakeImage() {
  constexpr std::uint32_t kByOrdinal = 0x80000000;  // the upper half of an import's name
  const std::pair<std::size_t, std::uint32_t> kValues[] = {
      {0, 0x5A4D},     {0x3C, 0x80},        {0x80, 0x4550},                       // headers
      {0x98, 0x20B},   {0x104, 14},         {0x170, 0x200}, {0x174, 2 * 32},      // directory of late imports, the last one
      {0x200, 1},      {0x204, 0x280},      {0x20C, 0x2C0}, {0x210, 0x2D0},       // the other library
      {0x220, 1},      {0x224, 0x2A0},      {0x22C, 0x340}, {0x230, 0x300},       // the theme library
      {0x2D0, 49},     {0x2D4, kByOrdinal},                                       // the other's names
      {0x300, 0x2000},                                                            // the theme library's: one by name
      {0x308, 47},     {0x30C, kByOrdinal}, {0x310, 49},    {0x314, kByOrdinal},  // and two by ordinal
  };
  std::vector<std::byte> image(kSlot + 0x10);
  for (const auto& [offset, value] : kValues) Put(image, offset, value);
  std::memcpy(image.data() + 0x280, "other.dll", sizeof("other.dll"));
  std::memcpy(image.data() + 0x2A0, "UxTheme.DLL", sizeof("UxTheme.DLL"));
  return image;
}

TEST(DelayImportSlot, IsFoundByLibraryAndOrdinalAndNoDamageLeadsOutside) {
  const auto whole = MakeImage();
  const std::tuple<std::string_view, std::uint16_t, std::size_t> cases[] = {
      {"uxtheme.dll", 49, kSlot}, {"uxtheme.dll", 47, kSlot - 8}, {"other.dll", 49, 0x2C0}, {"uxtheme.dll", 48, 0},
      {"uxtheme", 49, 0},         {"uxtheme.dll", 0x2000, 0}};  // the hint of an import by name
  for (const auto& [library, ordinal, slot] : cases) EXPECT_EQ(FindDelayImportSlot(whole, library, ordinal), slot) << ordinal;

  const auto expectInside = [](const std::vector<std::byte>& image, std::size_t at, std::uint32_t value) {
    const std::size_t slot = FindDelayImportSlot(image, "uxtheme.dll", 49);
    EXPECT_TRUE(slot == 0 || slot + 8 <= image.size()) << image.size() << " bytes, " << value << " at " << at;
  };
  for (auto end = whole.begin(); end != whole.end(); ++end) expectInside({whole.begin(), end}, 0, 0);
  // Offsets to just before the end, over it and far away, and everything that a byte can make of a number.
  for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
    for (const std::uint32_t value : {0U, 0x7FU, 0x80U, 0x349U, 0x35AU, 0x7FFFFFFFU, 0xFFFFFFE0U, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
      auto image = whole;
      Put(image, at, value);
      expectInside(image, at, value);
    }
  }
}

}  // namespace
