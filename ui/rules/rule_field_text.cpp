#include "ui/rules/rule_field_text.h"

#include "platform/text_format.h"
#include "ui/rules/number_text.h"

namespace {

using ReadInteger = std::uint32_t (*)(std::wstring_view text);

std::wstring LimitText(std::uint32_t count) { return FormatText(L"%u", count); }
std::wstring LimitText(std::uint64_t bytes) { return FormatText(L"%llu", static_cast<unsigned long long>(bytes / kBytesPerMb)); }
std::wstring LimitText(double percent) { return FormatText(L"%.0f", percent); }

void StoreLimit(std::uint32_t& count, std::wstring_view text, ReadInteger read) { count = read(text); }
void StoreLimit(std::uint64_t& bytes, std::wstring_view text, ReadInteger read) { bytes = read(text) * kBytesPerMb; }
void StoreLimit(double& percent, std::wstring_view text, ReadInteger) { percent = ReadDecimal(text); }

}  // namespace

std::wstring CeilingText(const Ceiling& ceiling, const ThresholdRule& rule) {
  const auto text = [&](const auto& limit) { return rule.*limit.allowed > 0 ? LimitText(rule.*limit.allowed) : std::wstring(); };
  return std::visit(text, ceiling.limit);
}

void StoreCeiling(const Ceiling& ceiling, ThresholdRule& rule, std::wstring_view text, ReadInteger readInteger) {
  std::visit([&](const auto& limit) { StoreLimit(rule.*limit.allowed, text, readInteger); }, ceiling.limit);
}
