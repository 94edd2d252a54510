#pragma once

// Which rules apply to a process of a name. Machines run the same few hundred programs over and over, so the answer is worked out
// once for each name and remembered until the rules or the exclusions change.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/records.h"

struct RuleMatch {
  const std::vector<std::uint32_t>* rules = nullptr;  ///< places in the list, ascending; null: no enabled rule, or excluded
  std::uint32_t wanted = 0;                           ///< WantedCounters that these rules' ceilings ask for
};

/// One thread at a time.
class RuleMatcher {
 public:
  /// From now on answers for these, never null. Answers given before are invalid. Forgets everything when either is another list
  /// than before, or when the names kept have grown past the bound.
  void Use(RuleSnapshot rules, ExclusionSnapshot exclusions);
  [[nodiscard]] const RuleMatch& Find(const std::wstring& name);

  [[nodiscard]] const RuleList& Rules() const { return *rules_; }
  /// What is remembered, roughly.
  [[nodiscard]] std::size_t KeptBytes() const { return keptBytes_; }

  static constexpr std::size_t kMaxKeptBytes = std::size_t{4} * 1024 * 1024;

 private:
  using Places = std::vector<std::uint32_t>;
  struct PlacesHash {
    std::size_t operator()(const Places& places) const;
  };

  [[nodiscard]] RuleMatch Match(const std::wstring& name);

  RuleSnapshot rules_ = std::make_shared<const RuleList>();
  ExclusionSnapshot exclusions_ = std::make_shared<const ExclusionList>();
  std::unordered_map<std::wstring, RuleMatch> matches_;
  std::unordered_set<Places, PlacesHash> lists_;  ///< each distinct list once: most names that match share theirs
  Places places_;                                 ///< working memory
  std::size_t keptBytes_ = 0;
};
