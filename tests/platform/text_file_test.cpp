#include "platform/text_file.h"

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/support/throwaway_folder.h"

namespace {

using namespace std::string_literals;

// In one piece and byte by byte, as a large file comes.
TEST(TextFile, DecodesWhateverAFileHolds) {
  const struct {
    const char* name;
    std::string bytes;
    std::wstring text;
  } cases[] = {
      {"mark and line ends",
       "\xEF\xBB\xBF"
       "a\r\nb\nc\rd\r\r\n\r"s,
       L"a\nb\nc\rd\r\n\r"},
      {"second mark is text", "\xEF\xBB\xBF\xEF\xBB\xBF"s, L"\uFEFF"},
      {"Ctrl+Z ends, NUL stays", "a\0b\x1A\n"s, L"a\0b"s},
      {"overlong", "\xC0\x80\xE0\x80\x80"s, L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"surrogate", "\xED\xA0\x80"s, L"\xFFFD\xFFFD\xFFFD"},
      {"beyond the last", "\xF4\x90\x80\x80\xF5"s, L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"cut sequences", "\xF0\x9F\x98x\xE2\x82\n\xE2\x82"s, L"\xFFFDx\xFFFD\n\xFFFD"},
      {"lead after lead", "\xE2\xC3\xA4"s, L"\xFFFDä"},
      {"UTF-16 damaged",
       "\xFF\xFE\x3D\xD8"
       "a\0\x00\xDE\r\0\n\0\x3D\xD8\x3D"s,
       L"\xFFFD"
       L"a\xFFFD\n\xFFFD"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(DecodeTextFile(each.bytes), each.text) << each.name;
    const TextMark mark = FindTextMark(each.bytes);
    TextDecoder decoder(mark.encoding, LineEnds::kCrLf);
    std::wstring text;
    for (const char& byte : std::string_view(each.bytes).substr(mark.sizeBytes)) decoder.Decode({&byte, 1}, text);
    decoder.Finish(text);
    EXPECT_EQ(text.substr(0, text.find(L'\x1A')), each.text) << each.name;
  }
}

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

TEST(TextFile, AppendsInTheEncodingOfTheFile) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("log");
  EXPECT_EQ(AppendTextFile(path, L"new\n"), WriteResult::kWritten);
  EXPECT_EQ(ThrowawayFolder::Read(path), "\xEF\xBB\xBFnew\r\n");
  for (const auto& [before, after] : {std::pair{""s, "\xEF\xBB\xBF\xC3\xA4\r\n"s},
                                      {"\xEF\xBB\xBF"s, "\xEF\xBB\xBF\xC3\xA4\r\n"s},
                                      {"x\n"s, "x\n\xC3\xA4\r\n"s},
                                      {"x"s, "x\r\n\xC3\xA4\r\n"s},
                                      {"\xFF\xFEx\0"s, "\xFF\xFEx\0\r\0\n\0\xE4\0\r\0\n\0"s},
                                      {"\xFE\xFF\0x\0\n"s, "\xFE\xFF\0x\0\n\0\xE4\0\r\0\n"s},
                                      {"\xFE\xFF\0x"s, "\xFE\xFF\0x\0\r\0\n\0\xE4\0\r\0\n"s}}) {
    ThrowawayFolder::Write(path, before);
    EXPECT_EQ(AppendTextFile(path, L"ä\n"), WriteResult::kWritten);
    EXPECT_EQ(ThrowawayFolder::Read(path), after);
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
