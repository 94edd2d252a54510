#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "platform/text_encoding.h"
#include "platform/text_scanner.h"
#include "storage/rule_numbers.h"

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

void ExpectRead(const std::string& text) {
  EXPECT_EQ(ParseDecimal(std::wstring(text.begin(), text.end())).value, std::strtod(text.c_str(), nullptr)) << text;
}

// Any double, what looks like a tie, whole numbers with some fraction, and ties that more digits than any buffer holds decide.
TEST(RuleNumbers, AreReadAndWrittenAsTheRuntimeDoes) {
  const std::string tie = "9007199254740993";  // half way between two doubles
  const std::string zeros(1200, '0');
  ExpectRead(tie + "." + zeros);
  ExpectRead(tie + "." + zeros + "1");
  ExpectRead("0." + zeros + tie + "e1210");
  ExpectRead(tie + zeros + "e-1200");
  ExpectRead("0." + std::string(400, '0') + tie + "e-10");
  ExpectRead(std::string(5000, '9') + "e-4990");
  std::mt19937_64 random(2);
  for (int round = 0; round < 50'000; ++round) {
    const std::uint64_t bits = random();
    double value = static_cast<double>(bits >> (bits % 50)) / 1024.0;
    if (round % 3 == 0) std::memcpy(&value, &bits, sizeof value);
    if (round % 3 == 1) value = static_cast<double>(bits % 4001) / 20.0 - 100.0;
    if (!std::isfinite(value)) continue;
    char text[400];
    std::snprintf(text, sizeof text, "%.1f", value);
    EXPECT_EQ(FormatTenths(value), std::wstring(text, text + std::strlen(text)));
    std::snprintf(text, sizeof text, "%.*g", static_cast<int>(bits % 20) + 1, value);
    ExpectRead(text);
  }
}

}  // namespace
