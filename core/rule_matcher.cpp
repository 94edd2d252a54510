#include "core/rule_matcher.h"

#include <utility>

#include "core/process_sampler.h"
#include "core/wildcard.h"

namespace {

/// A node of a hash table beside its value.
constexpr std::size_t kNodeBytes = 4 * sizeof(void*);

std::uint32_t WantedBy(const ThresholdRule& rule) {
  return (rule.maxHandles != 0 ? kWantHandles : 0U) | (rule.maxPrivateBytes != 0 ? kWantPrivateBytes : 0U);
}

}  // namespace

std::size_t RuleMatcher::PlacesHash::operator()(const Places& places) const {
  std::size_t hash = places.size();
  for (const std::uint32_t place : places) hash = hash * 1'000'003 + place;
  return hash;
}

void RuleMatcher::Use(RuleSnapshot rules, ExclusionSnapshot exclusions) {
  const bool same = rules == rules_ && exclusions == exclusions_;
  if (same && keptBytes_ <= kMaxKeptBytes) return;
  matches_.clear();
  lists_.clear();
  keptBytes_ = 0;
  rules_ = std::move(rules);
  exclusions_ = std::move(exclusions);
}

const RuleMatch& RuleMatcher::Find(const std::wstring& name) {
  const auto known = matches_.find(name);
  if (known != matches_.end()) return known->second;
  const RuleMatch match = Match(name);
  keptBytes_ += kNodeBytes + sizeof(std::pair<std::wstring, RuleMatch>) + (name.size() + 1) * sizeof(wchar_t);
  return matches_.emplace(name, match).first->second;
}

RuleMatch RuleMatcher::Match(const std::wstring& name) {
  RuleMatch match;
  if (IsExcluded(name.c_str(), *exclusions_)) return match;
  places_.clear();
  for (std::size_t place = 0; place < rules_->size(); ++place) {
    const ThresholdRule& rule = (*rules_)[place];
    if (!rule.enabled || !WildcardMatch(name.c_str(), rule.processPattern.c_str())) continue;
    places_.push_back(static_cast<std::uint32_t>(place));
    match.wanted |= WantedBy(rule);
  }
  if (places_.empty()) return match;
  const auto [list, isNew] = lists_.insert(places_);
  if (isNew) keptBytes_ += kNodeBytes + sizeof(Places) + places_.size() * sizeof(std::uint32_t);
  match.rules = &*list;
  return match;
}
