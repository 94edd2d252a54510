#include "platform/diagnostics.h"

#include <atomic>
#include <cstdarg>
#include <new>
#include <string>

#include "platform/diagnostic_channel.h"
#include "platform/text_format.h"

namespace {
constexpr std::size_t kMaxLineChars = 1022;

std::atomic<DiagnosticHook> diagnosticHook{nullptr};
}  // namespace

void DebugLog(const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  try {
    std::wstring line = FormatTextList(format, arguments);
    if (line.size() > kMaxLineChars) line.resize(kMaxLineChars);
    if (const DiagnosticHook hook = diagnosticHook.load()) {
      hook(line);
    } else {
      WriteDiagnosticLine(line);
    }
  } catch (const std::bad_alloc&) {
    // A line less is the smallest of the troubles then.
  }
  va_end(arguments);
}

void SetDiagnosticHook(DiagnosticHook hook) { diagnosticHook.store(hook); }
