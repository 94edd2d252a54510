#pragma once

// The file that metrics exporters collect: what was alerted and what is over its limit now, by rule and ceiling. Never by
// process: the number of series depends on the rules alone.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/ceilings.h"
#include "core/records.h"

class Metrics {
 public:
  explicit Metrics(const RuleList& rules) : rules_(rules), alerts_(rules.size()) {}

  /// `place`: of the rule in the list.
  void CountAlert(std::size_t place, const ProcessMetrics& metrics);
  /// The file's text after a cycle over the sample.
  [[nodiscard]] std::string Text(const ProcessSample& sample, double cycleSeconds, std::uint64_t unixTime) const;

 private:
  using Counts = std::vector<std::array<std::uint64_t, kCeilingCount>>;  ///< by place and ceiling
  void Add(std::string& text, const char* name, const Counts& counts) const;

  const RuleList& rules_;
  Counts alerts_;
};

/// Writes the text beside the file and puts it in its place. False when that is not possible.
bool WriteMetrics(const std::wstring& path, const std::string& text);
