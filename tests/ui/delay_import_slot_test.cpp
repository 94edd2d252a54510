#include "ui/delay_import_slot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

constexpr std::uint64_t kByOrdinal = std::uint64_t{1} << 63;

/// A minimal 64-bit module image with two late-imported libraries. Exactly as large as what it holds, so that a sanitizer sees
/// any step beyond it.
struct TestImage {
  static constexpr std::size_t kHeader = 0x80;
  static constexpr std::size_t kOptional = kHeader + 24;
  static constexpr std::size_t kDirectory = kOptional + 112 + 13 * 8;
  static constexpr std::size_t kDescriptors = 0x200;
  static constexpr std::size_t kNames = 0x280;
  static constexpr std::size_t kThemeNames = 0x300;
  static constexpr std::size_t kThemeAddresses = 0x340;
  static constexpr std::size_t kSlot = kThemeAddresses + 2 * 8;

  std::vector<std::byte> bytes = std::vector<std::byte>(0x360);

  template <class Value>
  void Put(std::size_t offset, Value value) {
    std::memcpy(bytes.data() + offset, &value, sizeof(value));
  }
  void PutText(std::size_t offset, const char* text) { std::memcpy(bytes.data() + offset, text, std::strlen(text) + 1); }
  void PutDescriptor(std::size_t index, std::size_t name, std::size_t addresses, std::size_t names) {
    const std::size_t at = kDescriptors + index * 32;
    Put(at, std::uint32_t{1});
    Put(at + 4, static_cast<std::uint32_t>(name));
    Put(at + 12, static_cast<std::uint32_t>(addresses));
    Put(at + 16, static_cast<std::uint32_t>(names));
  }

  TestImage() {
    Put<std::uint16_t>(0, 0x5A4D);
    Put<std::uint32_t>(0x3C, kHeader);
    Put<std::uint32_t>(kHeader, 0x4550);
    Put<std::uint16_t>(kOptional, 0x20B);
    Put<std::uint32_t>(kOptional + 108, 16);
    Put<std::uint32_t>(kDirectory, kDescriptors);
    Put<std::uint32_t>(kDirectory + 4, 3 * 32);
    PutText(kNames, "other.dll");
    PutText(kNames + 0x20, "UxTheme.DLL");
    PutDescriptor(0, kNames, 0x2C0, 0x2D0);
    Put<std::uint64_t>(0x2D0, kByOrdinal | 49);
    PutDescriptor(1, kNames + 0x20, kThemeAddresses, kThemeNames);
    Put<std::uint64_t>(kThemeNames, 0x2000);  // by name
    Put<std::uint64_t>(kThemeNames + 8, kByOrdinal | 47);
    Put<std::uint64_t>(kThemeNames + 16, kByOrdinal | 49);
  }
  [[nodiscard]] std::size_t Find() const { return FindDelayImportSlot(bytes, "uxtheme.dll", 49); }
};

TEST(DelayImportSlot, FindsTheOrdinalOfTheNamedLibrary) {
  const TestImage image;
  EXPECT_EQ(image.Find(), TestImage::kSlot);
  EXPECT_EQ(FindDelayImportSlot(image.bytes, "uxtheme.dll", 47), TestImage::kThemeAddresses + 8);
  EXPECT_EQ(FindDelayImportSlot(image.bytes, "other.dll", 49), 0x2C0u);
  EXPECT_EQ(FindDelayImportSlot(image.bytes, "uxtheme.dll", 48), 0u);
  EXPECT_EQ(FindDelayImportSlot(image.bytes, "uxtheme", 49), 0u);
  EXPECT_EQ(FindDelayImportSlot(image.bytes, "uxtheme.dll", 0x2000), 0u);  // the hint of an import by name
}

TEST(DelayImportSlot, NoDamageLeadsOutside) {
  const TestImage whole;
  for (std::size_t size = 0; size < whole.bytes.size(); ++size) {
    const std::vector<std::byte> cut(whole.bytes.begin(), whole.bytes.begin() + static_cast<std::ptrdiff_t>(size));
    const std::size_t slot = FindDelayImportSlot(cut, "uxtheme.dll", 49);
    EXPECT_TRUE(slot == 0 || slot + 8 <= size) << size;
  }
  // Offsets to just before the end, over it and far away, and everything that a byte can make of a number.
  for (std::size_t at = 0; at + 4 <= whole.bytes.size(); ++at) {
    for (const std::uint32_t value : {0U, 0x7FU, 0x80U, 0x349U, 0x35AU, 0x7FFFFFFFU, 0xFFFFFFE0U, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
      TestImage image;
      image.Put(at, value);
      const std::size_t slot = image.Find();
      ASSERT_TRUE(slot == 0 || slot + 8 <= image.bytes.size()) << at << " " << value;
    }
  }
}

}  // namespace
