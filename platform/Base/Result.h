#pragma once

#include <tl/expected.hpp>
#include <type_traits>
#include <utility>

namespace ios {

/// The outcome of an operation that can fail: a value, or why there is none. `Result<void, Error>`
/// has no value but its success. For the platform's own sources: applications get the platform's
/// shapes, such as NSError.
template <class Value, class Error>
using Result = tl::expected<Value, Error>;

/// What a function whose result is a `Result` returns when it fails.
template <class Error>
[[nodiscard]] tl::unexpected<std::decay_t<Error>> failure(Error&& error) {
  return tl::unexpected<std::decay_t<Error>>(std::forward<Error>(error));
}

namespace detail {
template <class Value, class Error>
Value valueOf(tl::expected<Value, Error>&& result) {
  if constexpr (!std::is_void_v<Value>) return *std::move(result);
}
}  // namespace detail

}  // namespace ios

/// The value of a `Result`. A failed one makes the function return that failure at once.
#define IOS_TRY(expression)                                      \
  __extension__({                                                \
    auto tried = (expression);                                   \
    if (!tried) return ::ios::failure(std::move(tried).error()); \
    ::ios::detail::valueOf(std::move(tried));                    \
  })
