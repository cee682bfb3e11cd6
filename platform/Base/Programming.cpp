#include "Base/Programming.h"

#include <cstdio>
#include <cstdlib>

namespace ios {

void programmingError(std::string_view message) {
  std::fprintf(stderr, "*** Terminating: %.*s\n", static_cast<int>(message.size()), message.data());
  std::fflush(stderr);
  std::abort();
}

}  // namespace ios
