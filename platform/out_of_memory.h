#pragma once

// The one way to survive a lack of memory. It is asked for where input has no bound (files, the clipboard, a download), where the
// user's list must stay whole, and at the door of every thread and window procedure, past which nothing may be thrown.

#include <new>
#include <stdexcept>

#include "platform/diagnostics.h"

/// The result of `work`; `otherwise` and a diagnostic line that begins with `where` when memory runs out in it.
template <class Result, class Work>
Result UnlessOutOfMemory(const wchar_t* where, Result otherwise, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  DebugLog(L"%ls - Out of memory", where);
  return otherwise;
}

/// The same for work without a result: false when memory ran out.
template <class Work>
bool DoUnlessOutOfMemory(const wchar_t* where, const Work& work) {
  return UnlessOutOfMemory(where, false, [&] {
    work();
    return true;
  });
}
