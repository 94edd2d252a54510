#pragma once

// A yes-or-no question to something that may be slow, asked on a thread of its own, so that who asks waits no longer than it
// wants. At most one thread runs however often the question is asked and however long the answer takes.

#include <cstdint>
#include <functional>
#include <memory>

/// Ask, Wait and LastAnswer on one thread. The object may go while a question is still out.
class BackgroundQuery {
 public:
  using Question = std::function<bool()>;  ///< must not throw

  explicit BackgroundQuery(Question question);

  /// Asks anew: only an answer that was begun after this call counts.
  void Ask();
  /// True once the last Ask has its answer; waits at most `timeoutMs`, and not at all when no thread could be started.
  [[nodiscard]] bool Wait(std::uint32_t timeoutMs);
  /// The newest answer of all; false before the first.
  [[nodiscard]] bool LastAnswer() const;

 private:
  struct State;
  static void Run(const std::shared_ptr<State>& state);

  std::shared_ptr<State> state_;
};
