#include "platform/text_file.h"

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/storage/throwaway_folder.h"

namespace {

#define BYTES(literal) std::string(literal, sizeof(literal) - 1)
#define WIDE(literal) std::wstring(literal, sizeof(literal) / sizeof(wchar_t) - 1)

// In one piece and byte by byte, as a large file comes.
TEST(TextFile, DecodesWhateverAFileHolds) {
  const struct {
    const char* name;
    std::string bytes;
    std::wstring text;
  } cases[] = {
      {"mark and line ends",
       BYTES("\xEF\xBB\xBF"
             "a\r\nb\nc\rd\r\r\n\r"),
       L"a\nb\nc\rd\r\n\r"},
      {"second mark is text", BYTES("\xEF\xBB\xBF\xEF\xBB\xBF"), L"\uFEFF"},
      {"Ctrl+Z ends, NUL stays", BYTES("a\0b\x1A\n"), WIDE(L"a\0b")},
      {"overlong", BYTES("\xC0\x80\xE0\x80\x80"), L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"surrogate", BYTES("\xED\xA0\x80"), L"\xFFFD\xFFFD\xFFFD"},
      {"beyond the last", BYTES("\xF4\x90\x80\x80\xF5"), L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"cut sequences", BYTES("\xF0\x9F\x98x\xE2\x82\n\xE2\x82"), L"\xFFFDx\xFFFD\n\xFFFD"},
      {"lead after lead", BYTES("\xE2\xC3\xA4"), L"\xFFFDä"},
      {"UTF-16 damaged",
       BYTES("\xFF\xFE\x3D\xD8"
             "a\0\x00\xDE\r\0\n\0\x3D\xD8\x3D"),
       L"\xFFFD"
       L"a\xFFFD\n\xFFFD"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(DecodeTextFile(each.bytes), each.text) << each.name;
    const TextMark mark = FindTextMark(each.bytes);
    TextDecoder decoder(mark.encoding);
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
      EncodeText(text, encoding, bytes);
      TextDecoder decoder(encoding);
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
  for (const auto& [before, after] : {std::pair{BYTES(""), BYTES("\xEF\xBB\xBF\xC3\xA4\r\n")},
                                      {BYTES("x"), BYTES("x\xC3\xA4\r\n")},
                                      {BYTES("\xFF\xFEx\0"), BYTES("\xFF\xFEx\0\xE4\0\r\0\n\0")},
                                      {BYTES("\xFE\xFF\0x"), BYTES("\xFE\xFF\0x\0\xE4\0\r\0\n")}}) {
    ThrowawayFolder::Write(path, before);
    EXPECT_EQ(AppendTextFile(path, L"ä\n"), WriteResult::kWritten);
    EXPECT_EQ(ThrowawayFolder::Read(path), after);
  }
}

TEST(TextFile, AWholeWriteLeavesNothingOfALongerFileAndAFolderIsNoFile) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("file");
  for (const std::wstring& text : {std::wstring(10'000, L'x'), std::wstring(L"short\n"), std::wstring()}) {
    ASSERT_EQ(WriteTextFile(path, text), WriteResult::kWritten);
    EXPECT_EQ(ThrowawayFolder::Read(path), "\xEF\xBB\xBF" + EncodeTextFile(text));
    EXPECT_EQ(ReadTextFile(path), text);
  }
  RandomReadFile file;
  EXPECT_FALSE(file.Open(folder.Path("")));
  for (const std::wstring& nowhere : {folder.Path(""), folder.Path("missing/file")}) {
    EXPECT_FALSE(ReadTextFile(nowhere).has_value());
    EXPECT_EQ(WriteTextFile(nowhere, L"x"), WriteResult::kCannotOpen);
    EXPECT_EQ(AppendTextFile(nowhere, L"x"), WriteResult::kCannotOpen);
  }
}

}  // namespace
