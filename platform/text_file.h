#pragma once

// The text files' common form: UTF-8 with a byte-order mark, CR LF line ends on disk, LF in memory. Reading accepts the mark or
// its absence and CR LF or LF, replaces what is not valid UTF-8 by U+FFFD, reads a UTF-16 file by its mark, and ends at a Ctrl+Z
// as the runtime's text mode does, except where a Ctrl+Z may stand in what we write ourselves.

#include <optional>
#include <string>
#include <string_view>

#include "platform/file.h"

inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// UTF-8 bytes of wide text with every LF turned into CR LF; a lone surrogate becomes U+FFFD. No byte-order mark.
[[nodiscard]] std::string EncodeTextFile(std::wstring_view text);
enum class CtrlZ { kEndsText, kIsText };
/// The reverse: mark skipped, CR LF turned into LF. Never fails; damaged input gives replacement characters, NULs stay.
[[nodiscard]] std::wstring DecodeTextFile(std::string_view bytes, CtrlZ ctrlZ = CtrlZ::kEndsText);

/// Empty when the file cannot be read or memory for its text cannot be had.
[[nodiscard]] std::optional<std::wstring> ReadTextFile(const std::wstring& path, CtrlZ ctrlZ = CtrlZ::kEndsText);
/// Writes mark and text; kWriteFailed also when memory for the bytes cannot be had, the file then as it was.
[[nodiscard]] WriteResult WriteTextFile(const std::wstring& path, std::wstring_view text);
/// Appends in the encoding that the file's mark names; an empty or new file gets the UTF-8 mark first, and one whose last line
/// was torn off a line end, so that the text stands on lines of its own.
[[nodiscard]] WriteResult AppendTextFile(const std::wstring& path, std::wstring_view text);

/// Hands out lines as the runtime's line reader does: at most 2047 characters a read, the line end included when it fits; the
/// rest of a longer line comes as the next read. Borrows the text.
class LineReader {
 public:
  static constexpr std::size_t kMaxReadChars = 2047;
  explicit LineReader(std::wstring_view text) : rest_(text) {}
  /// False at the end of the text.
  [[nodiscard]] bool Next(std::wstring_view& line);
  /// As Next, but leaves a last read alone that more text could still make longer.
  [[nodiscard]] bool NextComplete(std::wstring_view& line);
  [[nodiscard]] std::wstring_view Rest() const { return rest_; }

 private:
  std::wstring_view rest_;
};
