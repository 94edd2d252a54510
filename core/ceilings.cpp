#include "core/ceilings.h"

#include "platform/text_format.h"

namespace {

using Count = Limit<std::uint32_t>;
using Bytes = Limit<std::uint64_t>;
using Percent = Limit<double>;

constexpr Ceiling kCeilings[kCeilingCount] = {
    {L"Handles", "handles", kHandlesKnown, Count{&ThresholdRule::maxHandles, &ProcessMetrics::handles}},
    {L"Working Set", "working_set", kWorkingSetKnown, Bytes{&ThresholdRule::maxWorkingSet, &ProcessMetrics::workingSet}},
    {L"Private Bytes", "private_bytes", kPrivateBytesKnown,
     Bytes{&ThresholdRule::maxPrivateBytes, &ProcessMetrics::privateBytes}},
    {L"CPU", "cpu", kTimesKnown, Percent{&ThresholdRule::maxCpuPercent, &ProcessMetrics::cpuPercent}},
    {L"Threads", "threads", kThreadsKnown, Count{&ThresholdRule::maxThreads, &ProcessMetrics::threads}},
    {L"GDI Objects", "gdi_objects", kGuiObjectsKnown, Count{&ThresholdRule::maxGdiObjects, &ProcessMetrics::gdiObjects}},
    {L"USER Objects", "user_objects", kGuiObjectsKnown, Count{&ThresholdRule::maxUserObjects, &ProcessMetrics::userObjects}},
};

std::wstring FormatViolation(const wchar_t* label, std::uint32_t measured, std::uint32_t allowed) {
  return FormatText(L"%ls: %u > %u", label, measured, allowed);
}
std::wstring FormatViolation(const wchar_t* label, std::uint64_t measured, std::uint64_t allowed) {
  const unsigned long long measuredMb = measured / kBytesPerMb;
  const unsigned long long allowedMb = allowed / kBytesPerMb;
  return FormatText(L"%ls: %llu MB > %llu MB", label, measuredMb, allowedMb);
}
std::wstring FormatViolation(const wchar_t* label, double measured, double allowed) {
  return FormatText(L"%ls: %.1f%% > %.1f%%", label, measured, allowed);
}

}  // namespace

bool Ceiling::IsExceeded(const ThresholdRule& rule, const ProcessMetrics& metrics) const {
  return std::visit([&](const auto& each) { return rule.*each.allowed > 0 && metrics.*each.measured > rule.*each.allowed; },
                    limit);
}

const char* Ceiling::Unit() const {
  constexpr const char* kUnits[] = {"count", "bytes", "percent"};
  return kUnits[limit.index()];
}

std::wstring Ceiling::Violation(const ThresholdRule& rule, const ProcessMetrics& metrics) const {
  return std::visit([&](const auto& each) { return FormatViolation(label, metrics.*each.measured, rule.*each.allowed); }, limit);
}

double Ceiling::Share(const ThresholdRule& rule, const ProcessMetrics& metrics) const {
  return std::visit(
      [&](const auto& each) {
        if (!(rule.*each.allowed > 0)) return 0.0;
        return static_cast<double>(metrics.*each.measured) / static_cast<double>(rule.*each.allowed);
      },
      limit);
}

std::span<const Ceiling, kCeilingCount> Ceilings() { return kCeilings; }
