#pragma once

#include <mutex>
#include <utility>

namespace ios {

/// A flag for `dispatch_once`; static, and never moved.
using dispatch_once_t = std::once_flag;

/// Runs `block` exactly once in the life of `flag`; concurrent callers wait until it has run.
template <class Block>
void dispatch_once(dispatch_once_t& flag, Block&& block) {
  std::call_once(flag, std::forward<Block>(block));
}

}  // namespace ios
