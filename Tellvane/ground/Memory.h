#pragma once

#include <new>
#include <utility>

#include "Tellvane/Platform.h"

namespace tellvane {

/// Runs `work`, as everything does that the host or the platform calls. False if memory ran out on the way: then
/// the rest of `work` is not done, which costs a capture, where an exception would cost the host.
template <class Work>
bool unlessMemoryRunsOut(Work&& work) {
  try {
    std::forward<Work>(work)();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace tellvane
