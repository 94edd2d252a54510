#include "platform/text_file.h"

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/storage/generated_rules.h"
#include "tests/storage/throwaway_folder.h"

namespace {

#define BYTES(literal) std::string(literal, sizeof(literal) - 1)
#define WIDE(literal) std::wstring(literal, sizeof(literal) / sizeof(wchar_t) - 1)

TEST(TextFile, DecodesWhateverAFileHolds) {
  struct Case {
    const char* name;
    std::string bytes;
    std::wstring text;
  };
  const Case cases[] = {
      {"mark and line ends",
       BYTES("\xEF\xBB\xBF"
             "a\r\nb\nc\rd\r\r\n\r"),
       L"a\nb\nc\rd\r\n\r"},
      {"second mark is text", BYTES("\xEF\xBB\xBF\xEF\xBB\xBF"), L"\uFEFF"},
      {"Ctrl+Z ends",
       BYTES("a\x1A"
             "b\n"),
       L"a"},
      {"NUL stays", BYTES("a\0b"), WIDE(L"a\0b")},
      {"two to four bytes", BYTES("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), L"ä€\U0001F600"},
      {"overlong", BYTES("\xC0\x80\xE0\x80\x80"), L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"surrogate", BYTES("\xED\xA0\x80"), L"\xFFFD\xFFFD\xFFFD"},
      {"beyond the last", BYTES("\xF4\x90\x80\x80\xF5"), L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"cut sequences", BYTES("\xF0\x9F\x98x\xE2\x82\n\xE2\x82"), L"\xFFFDx\xFFFD\n\xFFFD"},
      {"lead after lead", BYTES("\xE2\xC3\xA4"), L"\xFFFDä"},
      {"UTF-16 LE",
       BYTES("\xFF\xFE"
             "a\0\r\0\n\0\x3D\xD8\x00\xDE"),
       L"a\n\U0001F600"},
      {"UTF-16 BE",
       BYTES("\xFE\xFF"
             "\0a\0\r\0\n\xD8\x3D\xDE\x00"),
       L"a\n\U0001F600"},
      {"UTF-16 damaged",
       BYTES("\xFF\xFE\x3D\xD8"
             "a\0\x00\xDE\x3D\xD8\x3D"),
       L"\xFFFD"
       L"a\xFFFD\xFFFD"},
  };
  for (const Case& each : cases) EXPECT_EQ(DecodeTextFile(each.bytes), each.text) << each.name;
}

TEST(TextFile, DecodesAlikeInPiecesOfAnySize) {
  Generator generator(1);
  for (int round = 0; round < 300; ++round) {
    const std::string bytes = generator.Damage(EncodeTextFile(generator.Pattern(40) + L"\r\n\xE4\u20AC"));
    for (const TextEncoding encoding : {TextEncoding::kUtf8, TextEncoding::kUtf16LittleEndian, TextEncoding::kUtf16BigEndian}) {
      TextDecoder whole(encoding);
      std::wstring expected;
      whole.Decode(bytes, expected);
      whole.Finish(expected);
      TextDecoder pieces(encoding);
      std::wstring text;
      for (const char& byte : bytes) pieces.Decode(std::string_view(&byte, 1), text);
      pieces.Finish(text);
      ASSERT_EQ(text, expected) << round;
    }
  }
}

TEST(TextFile, EveryCharacterComesBackInEveryEncoding) {
  std::string utf32;
  for (const TextEncoding encoding : {TextEncoding::kUtf8, TextEncoding::kUtf16LittleEndian, TextEncoding::kUtf16BigEndian}) {
    for (std::uint32_t codePoint = 0; codePoint <= 0x10FFFF; codePoint += codePoint < 0x20000 ? 1 : 257) {
      std::wstring text;
      if (sizeof(wchar_t) == 2 && codePoint > 0xFFFF) {
        text = {static_cast<wchar_t>(0xD7C0 + (codePoint >> 10)), static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF))};
      } else {
        text = static_cast<wchar_t>(codePoint);
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
  const struct {
    std::string before;
    std::string after;
  } cases[] = {
      {"", BYTES("\xEF\xBB\xBF\xC3\xA4\r\n")},
      {"x", BYTES("x\xC3\xA4\r\n")},
      {BYTES("\xFF\xFEx\0"), BYTES("\xFF\xFEx\0\xE4\0\r\0\n\0")},
      {BYTES("\xFE\xFF\0x"), BYTES("\xFE\xFF\0x\0\xE4\0\r\0\n")},
  };
  for (const auto& each : cases) {
    ThrowawayFolder::Write(path, each.before);
    EXPECT_EQ(AppendTextFile(path, L"ä\n"), WriteResult::kWritten);
    EXPECT_EQ(ThrowawayFolder::Read(path), each.after);
  }
  EXPECT_TRUE(RemoveFile(path));
  EXPECT_EQ(AppendTextFile(path, L"new\n"), WriteResult::kWritten);
  EXPECT_EQ(ThrowawayFolder::Read(path), "\xEF\xBB\xBFnew\r\n");
}

TEST(TextFile, AWholeWriteLeavesNothingOfALongerFile) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("file");
  for (const std::wstring& text : {std::wstring(10'000, L'x'), std::wstring(L"short\n"), std::wstring()}) {
    ASSERT_EQ(WriteTextFile(path, text), WriteResult::kWritten);
    EXPECT_EQ(ThrowawayFolder::Read(path), "\xEF\xBB\xBF" + EncodeTextFile(text));
    EXPECT_EQ(ReadTextFile(path), text);
  }
}

TEST(TextFile, AFolderIsNoFile) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("");
  RandomReadFile file;
  EXPECT_FALSE(ReadWholeFile(path).has_value());
  EXPECT_FALSE(file.Open(path));
  EXPECT_EQ(WriteWholeFile(path, "x"), WriteResult::kCannotOpen);
  EXPECT_EQ(AppendToFile(path, "x", ""), WriteResult::kCannotOpen);
  EXPECT_EQ(WriteWholeFile(folder.Path("missing/file"), "x"), WriteResult::kCannotOpen);
}

TEST(LineReader, GivesReadsOfBoundedLength) {
  const std::size_t longest = LineReader::kMaxReadChars;
  struct Case {
    std::wstring text;
    std::vector<std::size_t> lengths;
  };
  const Case cases[] = {
      {L"", {}},
      {L"\n\na", {1, 1, 1}},
      {std::wstring(longest - 1, L'x') + L"\nz", {longest, 1}},
      {std::wstring(longest, L'x') + L"\nz", {longest, 1, 1}},
      {std::wstring(2 * longest + 3, L'x'), {longest, longest, 3}},
  };
  for (const Case& each : cases) {
    LineReader lines(each.text);
    std::vector<std::size_t> lengths;
    for (std::wstring_view line; lines.Next(line);) lengths.push_back(line.size());
    EXPECT_EQ(lengths, each.lengths);
  }
}

}  // namespace
