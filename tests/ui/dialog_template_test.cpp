#include "ui/dialog_template.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::uint8_t> Bytes(const CXDialogTemplate& box) {
  std::vector<std::uint8_t> bytes;
  for (const std::byte value : box.Pack()) bytes.push_back(static_cast<std::uint8_t>(value));
  return bytes;
}

TEST(DialogTemplate, PacksHeaderAndAlignedItems) {
  CXDialogTemplate box(0x90C80880, {1, 2, 0x0304, -1}, L"Ab");
  box.Add({kStaticClassAtom, 0x50000080, 0x11, {5, 6, 7, 8}, 1001, L"xy"});
  box.Add({kButtonClassAtom, 0x50010001, 0, {9, 10, 11, 12}, 6, L""});
  const std::vector<std::uint8_t> expected = {
      0x80, 0x08, 0xC8, 0x90, 0,    0, 0,    0,                             // style, extended style
      2,    0,    1,    0,    2,    0, 0x04, 0x03, 0xFF, 0xFF,              // item count, rectangle
      0,    0,    0,    0,    'A',  0, 'b',  0,    0,    0,                 // no menu, no class, title
      0x80, 0,    0,    0x50, 0x11, 0, 0,    0,                             // the header ended on a boundary
      5,    0,    6,    0,    7,    0, 8,    0,                             //
      0xE9, 0x03, 0xFF, 0xFF, 0x82, 0, 'x',  0,    'y',  0,    0, 0, 0, 0,  // id, class, text, no creation data
      0,    0,                                                              // up to the boundary
      0x01, 0,    0x01, 0x50, 0,    0, 0,    0,                             //
      9,    0,    10,   0,    11,   0, 12,   0,                             //
      6,    0,    0xFF, 0xFF, 0x80, 0, 0,    0,    0,    0,
  };
  EXPECT_EQ(Bytes(box), expected);
}

TEST(DialogTemplate, WritesTextsAsUtf16) {
  struct Case {
    std::wstring title;
    std::vector<std::uint8_t> stored;
  };
  const Case kCases[] = {
      {L"\u00fc\u20ac", {0xFC, 0, 0xAC, 0x20, 0, 0}},
      {L"\U0001F600", {0x3D, 0xD8, 0x00, 0xDE, 0, 0}},
      {std::wstring(L"a\0b", 3), {'a', 0, 0, 0}},
      // At the front it would announce a resource number and shift everything behind it.
      {L"\xFFFF\x0001", {0xFD, 0xFF, 0x01, 0, 0, 0}},
  };
  for (const Case& test : kCases) {
    const std::vector<std::uint8_t> bytes = Bytes(CXDialogTemplate(0, {}, test.title));
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin() + 22, bytes.end()), test.stored);
  }
}

}  // namespace
