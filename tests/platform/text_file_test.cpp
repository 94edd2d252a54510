#include "platform/text_file.h"

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/support/throwaway_folder.h"

namespace {

TEST(TextFile, EveryCharacterComesBackInEveryEncoding) {
  for (const TextEncoding encoding : {TextEncoding::kUtf8, TextEncoding::kUtf16LittleEndian, TextEncoding::kUtf16BigEndian}) {
    for (std::uint32_t codePoint = 0; codePoint <= 0x10FFFF; codePoint += codePoint < 0x20000 ? 1 : 257) {
      std::wstring text(1, static_cast<wchar_t>(codePoint));
      if (sizeof(wchar_t) == 2 && codePoint > 0xFFFF) {
        text = {static_cast<wchar_t>(0xD7C0 + (codePoint >> 10)), static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF))};
      }
      const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
      EXPECT_EQ(IsValidText(text), !surrogate);
      std::string bytes;
      EncodeText(text, encoding, LineEnds::kCrLf, bytes);
      TextDecoder decoder(encoding, LineEnds::kCrLf);
      std::wstring back;
      decoder.Decode(bytes, back);
      decoder.Finish(back);
      ASSERT_EQ(back, surrogate ? L"\xFFFD" : text) << codePoint;
    }
  }
}

TEST(TextFile, AFolderIsNoFile) {
  const ThrowawayFolder folder;
  for (const std::wstring& nowhere : {folder.Path(""), folder.Path("missing/file")}) {
    EXPECT_FALSE(ReadTextFile(nowhere).has_value());
    EXPECT_EQ(WriteTextFile(nowhere, L"x"), WriteResult::kCannotOpen);
    EXPECT_EQ(AppendTextFile(nowhere, L"x"), WriteResult::kCannotOpen);
  }
}

}  // namespace
