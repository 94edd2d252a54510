#include "core/rule_evaluation.h"

#include "core/ceilings.h"

std::wstring ViolationText(const ThresholdRule& rule, const ProcessMetrics& metrics) {
  std::wstring text;
  for (const Ceiling& ceiling : Ceilings()) {
    if (!ceiling.IsExceeded(rule, metrics)) continue;
    if (!text.empty()) text += L"; ";
    text += ceiling.Violation(rule, metrics);
  }
  return text;
}
