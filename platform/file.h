#pragma once

// Whole-file byte access: the only place where the stores touch the file system. Paths are wide text; the host converts them to
// UTF-8.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/native_file.h"

/// Reads a file whole. Empty optional when it cannot be opened or read, is a folder, or memory for it cannot be had.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::wstring& path);

enum class WriteResult { kWritten, kCannotOpen, kWriteFailed };

/// Makes the bytes the file's whole content, in place: one write over what is there, flushed before the file is closed. A program
/// killed meanwhile leaves the old file or the new one, the latter perhaps followed by empty lines in place of a longer old one's
/// rest; a system that breaks off the write itself (Linux does, between pages) leaves some of each. Room for
/// a longer file is taken first: on a full disk the old file stays whole (kWriteFailed).
[[nodiscard]] WriteResult WriteWholeFile(const std::wstring& path, std::string_view bytes);

/// Appends the bytes with one write, creating the file when it is missing; `whenEmpty` goes first when the file had no bytes.
[[nodiscard]] WriteResult AppendToFile(const std::wstring& path, std::string_view bytes, std::string_view whenEmpty);
