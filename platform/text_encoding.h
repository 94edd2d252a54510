#pragma once

// Wide text from the bytes of a text file and back, without the system's or the runtime's help, so that a damaged file reads the
// same on every machine. Wide characters are UTF-16 units where they are 16 bits wide and code points elsewhere.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class TextEncoding { kUtf8, kUtf16LittleEndian, kUtf16BigEndian };

struct TextMark {
  TextEncoding encoding = TextEncoding::kUtf8;
  std::size_t sizeBytes = 0;  ///< 0: no mark
};

/// The byte-order mark that the bytes begin with; without one they are taken for UTF-8.
[[nodiscard]] TextMark FindTextMark(std::string_view bytes);

/// Of the bytes, where memory has LF: a file's are CR LF.
enum class LineEnds { kCrLf, kAsTheyAre };

/// Appends the text's bytes; a lone surrogate becomes U+FFFD. No byte-order mark.
void EncodeText(std::wstring_view text, TextEncoding encoding, LineEnds lineEnds, std::string& bytes);

/// The text in UTF-8 and back, line ends as they are: for what is no file's text.
[[nodiscard]] std::string EncodeUtf8(std::wstring_view text);
[[nodiscard]] std::wstring DecodeUtf8Text(std::string_view bytes);

/// Whether the text comes back unchanged after EncodeText: false for a lone surrogate or what is no character at all.
[[nodiscard]] bool IsValidText(std::wstring_view text);

/// Decodes bytes as they come, in pieces of any size. Each malformed sequence becomes one U+FFFD (a
/// sequence ends before the first byte that cannot continue it); NULs pass through.
class TextDecoder {
 public:
  TextDecoder(TextEncoding encoding, LineEnds lineEnds) : encoding_(encoding), lineEnds_(lineEnds) {}

  /// Appends to `text`. A character, or a CR, whose continuation may still come is kept back.
  void Decode(std::string_view bytes, std::wstring& text);
  /// Appends what was kept back, a cut-off character as U+FFFD. The decoder can then start over.
  void Finish(std::wstring& text);

 private:
  void DecodeUtf8(std::string_view bytes, std::wstring& text);
  void DecodeUtf16(std::string_view bytes, std::wstring& text);
  void BeginSequence(std::uint8_t lead, std::wstring& text);
  void PutUnit(std::uint32_t unit, std::wstring& text);
  void Put(std::uint32_t codePoint, std::wstring& text);

  TextEncoding encoding_;
  LineEnds lineEnds_;
  bool carriageReturn_ = false;
  std::uint32_t codePoint_ = 0;  ///< of the unfinished UTF-8 sequence
  int bytesToCome_ = 0;
  std::uint8_t lowestNext_ = 0x80;
  std::uint8_t highestNext_ = 0xBF;
  bool haveFirstByte_ = false;  ///< of a UTF-16 unit
  std::uint8_t firstByte_ = 0;
  std::uint32_t highSurrogate_ = 0;
};
