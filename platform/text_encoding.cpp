#include "platform/text_encoding.h"

#include <type_traits>

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

constexpr bool IsHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool IsSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
constexpr std::uint32_t Combine(std::uint32_t high, std::uint32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

std::uint32_t CodeOf(wchar_t character) {
  return static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(character));
}

/// Takes the code point at `position` and moves on. False (and the code point is U+FFFD) when there is no valid one.
bool NextCodePoint(std::wstring_view text, std::size_t& position, std::uint32_t& codePoint) {
  codePoint = CodeOf(text[position++]);
  if (kWideIsUtf16 && IsHighSurrogate(codePoint) && position < text.size()) {
    const std::uint32_t low = CodeOf(text[position]);
    if (IsLowSurrogate(low)) {
      ++position;
      codePoint = Combine(codePoint, low);
      return true;
    }
  }
  if (!IsSurrogate(codePoint) && codePoint <= 0x10FFFF) return true;
  codePoint = kReplacement;
  return false;
}

void AppendByte(std::uint32_t value, std::string& bytes) { bytes.push_back(static_cast<char>(static_cast<std::uint8_t>(value))); }

void AppendUtf8(std::uint32_t codePoint, std::string& bytes) {
  if (codePoint < 0x80) {
    AppendByte(codePoint, bytes);
    return;
  }
  if (codePoint < 0x800) {
    AppendByte(0xC0 | (codePoint >> 6), bytes);
  } else {
    if (codePoint < 0x10000) {
      AppendByte(0xE0 | (codePoint >> 12), bytes);
    } else {
      AppendByte(0xF0 | (codePoint >> 18), bytes);
      AppendByte(0x80 | ((codePoint >> 12) & 0x3F), bytes);
    }
    AppendByte(0x80 | ((codePoint >> 6) & 0x3F), bytes);
  }
  AppendByte(0x80 | (codePoint & 0x3F), bytes);
}

void AppendUtf16(std::uint32_t codePoint, TextEncoding encoding, std::string& bytes) {
  if (codePoint >= 0x10000) {
    AppendUtf16(0xD800 + ((codePoint - 0x10000) >> 10), encoding, bytes);
    codePoint = 0xDC00 + ((codePoint - 0x10000) & 0x3FF);
  }
  const bool littleEndian = encoding == TextEncoding::kUtf16LittleEndian;
  AppendByte(littleEndian ? codePoint : codePoint >> 8, bytes);
  AppendByte(littleEndian ? codePoint >> 8 : codePoint, bytes);
}

}  // namespace

TextMark FindTextMark(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return {TextEncoding::kUtf8, 3};
  if (bytes.starts_with("\xFF\xFE")) return {TextEncoding::kUtf16LittleEndian, 2};
  if (bytes.starts_with("\xFE\xFF")) return {TextEncoding::kUtf16BigEndian, 2};
  return {};
}

void EncodeText(std::wstring_view text, TextEncoding encoding, LineEnds lineEnds, std::string& bytes) {
  const auto append = [&](std::uint32_t codePoint) {
    if (encoding == TextEncoding::kUtf8) {
      AppendUtf8(codePoint, bytes);
    } else {
      AppendUtf16(codePoint, encoding, bytes);
    }
  };
  for (std::size_t position = 0; position < text.size();) {
    std::uint32_t codePoint = 0;
    (void)NextCodePoint(text, position, codePoint);
    if (codePoint == U'\n' && lineEnds == LineEnds::kCrLf) append(U'\r');
    append(codePoint);
  }
}

std::string EncodeUtf8(std::wstring_view text) {
  std::string bytes;
  EncodeText(text, TextEncoding::kUtf8, LineEnds::kAsTheyAre, bytes);
  return bytes;
}

std::wstring DecodeUtf8Text(std::string_view bytes) {
  std::wstring text;
  TextDecoder decoder(TextEncoding::kUtf8, LineEnds::kAsTheyAre);
  decoder.Decode(bytes, text);
  decoder.Finish(text);
  return text;
}

bool IsValidText(std::wstring_view text) {
  for (std::size_t position = 0; position < text.size();) {
    std::uint32_t codePoint = 0;
    if (!NextCodePoint(text, position, codePoint)) return false;
  }
  return true;
}

void TextDecoder::Decode(std::string_view bytes, std::wstring& text) {
  if (encoding_ == TextEncoding::kUtf8) {
    DecodeUtf8(bytes, text);
  } else {
    DecodeUtf16(bytes, text);
  }
}

void TextDecoder::Finish(std::wstring& text) {
  if (bytesToCome_ > 0 || haveFirstByte_ || highSurrogate_ != 0) Put(kReplacement, text);
  if (carriageReturn_) text.push_back(L'\r');
  *this = TextDecoder(encoding_, lineEnds_);
}

void TextDecoder::DecodeUtf8(std::string_view bytes, std::wstring& text) {
  for (const char character : bytes) {
    const auto byte = static_cast<std::uint8_t>(character);
    if (bytesToCome_ == 0) {
      BeginSequence(byte, text);
      continue;
    }
    if (byte < lowestNext_ || byte > highestNext_) {
      bytesToCome_ = 0;
      Put(kReplacement, text);
      BeginSequence(byte, text);
      continue;
    }
    lowestNext_ = 0x80;
    highestNext_ = 0xBF;
    codePoint_ = (codePoint_ << 6) | (byte & 0x3FU);
    if (--bytesToCome_ == 0) Put(codePoint_, text);
  }
}

void TextDecoder::BeginSequence(std::uint8_t lead, std::wstring& text) {
  // The bounds of the second byte keep out overlong forms, surrogates and what lies beyond U+10FFFF.
  lowestNext_ = 0x80;
  highestNext_ = 0xBF;
  if (lead < 0x80) {
    Put(lead, text);
  } else if (lead >= 0xC2 && lead <= 0xDF) {
    bytesToCome_ = 1;
    codePoint_ = lead & 0x1FU;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    bytesToCome_ = 2;
    codePoint_ = lead & 0x0FU;
    if (lead == 0xE0) lowestNext_ = 0xA0;
    if (lead == 0xED) highestNext_ = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    bytesToCome_ = 3;
    codePoint_ = lead & 0x07U;
    if (lead == 0xF0) lowestNext_ = 0x90;
    if (lead == 0xF4) highestNext_ = 0x8F;
  } else {
    Put(kReplacement, text);
  }
}

void TextDecoder::DecodeUtf16(std::string_view bytes, std::wstring& text) {
  const bool littleEndian = encoding_ == TextEncoding::kUtf16LittleEndian;
  for (const char character : bytes) {
    const auto byte = static_cast<std::uint8_t>(character);
    if (!haveFirstByte_) {
      firstByte_ = byte;
      haveFirstByte_ = true;
      continue;
    }
    haveFirstByte_ = false;
    const std::uint32_t high = littleEndian ? byte : firstByte_;
    const std::uint32_t low = littleEndian ? firstByte_ : byte;
    PutUnit((high << 8) | low, text);
  }
}

void TextDecoder::PutUnit(std::uint32_t unit, std::wstring& text) {
  if (highSurrogate_ != 0) {
    const std::uint32_t high = highSurrogate_;
    highSurrogate_ = 0;
    if (IsLowSurrogate(unit)) {
      Put(Combine(high, unit), text);
      return;
    }
    Put(kReplacement, text);
  }
  if (IsHighSurrogate(unit)) {
    highSurrogate_ = unit;
  } else {
    Put(IsLowSurrogate(unit) ? kReplacement : unit, text);
  }
}

void TextDecoder::Put(std::uint32_t codePoint, std::wstring& text) {
  if (carriageReturn_) {
    carriageReturn_ = false;
    if (codePoint != U'\n') text.push_back(L'\r');
  }
  if (codePoint == U'\r' && lineEnds_ == LineEnds::kCrLf) {
    carriageReturn_ = true;
  } else if (kWideIsUtf16 && codePoint >= 0x10000) {
    text.push_back(static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
    text.push_back(static_cast<wchar_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF)));
  } else {
    text.push_back(static_cast<wchar_t>(codePoint));
  }
}
