#include "core/rule_evaluation.h"

#include "platform/text_format.h"

namespace {

constexpr unsigned kMbShift = 20;

void Join(std::wstring& text, const std::wstring& violation) {
  if (!text.empty()) text += L"; ";
  text += violation;
}

void CheckCount(std::wstring& text, const wchar_t* counter, std::uint32_t measured, std::uint32_t ceiling) {
  if (ceiling != 0 && measured > ceiling) Join(text, FormatText(L"%ls: %u > %u", counter, measured, ceiling));
}

void CheckMemory(std::wstring& text, const wchar_t* counter, std::uint64_t measured, std::uint64_t ceiling) {
  if (ceiling == 0 || measured <= ceiling) return;
  const unsigned long long measuredMb = measured >> kMbShift;
  const unsigned long long ceilingMb = ceiling >> kMbShift;
  Join(text, FormatText(L"%ls: %llu MB > %llu MB", counter, measuredMb, ceilingMb));
}

void CheckCpu(std::wstring& text, double measured, double ceiling) {
  if (ceiling > 0.0 && measured > ceiling) Join(text, FormatText(L"CPU: %.1f%% > %.1f%%", measured, ceiling));
}

}  // namespace

std::wstring ViolationText(const ThresholdRule& rule, const ProcessMetrics& metrics) {
  std::wstring text;
  CheckCount(text, L"Handles", metrics.handles, rule.maxHandles);
  CheckMemory(text, L"Working Set", metrics.workingSet, rule.maxWorkingSet);
  CheckMemory(text, L"Private Bytes", metrics.privateBytes, rule.maxPrivateBytes);
  CheckCpu(text, metrics.cpuPercent, rule.maxCpuPercent);
  CheckCount(text, L"Threads", metrics.threads, rule.maxThreads);
  CheckCount(text, L"GDI Objects", metrics.gdiObjects, rule.maxGdiObjects);
  CheckCount(text, L"USER Objects", metrics.userObjects, rule.maxUserObjects);
  return text;
}
