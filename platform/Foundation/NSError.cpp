#include "Foundation/NSError.h"

namespace ios {

std::string NSError::description() const {
  return "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" + localizedDescription_ + "\"";
}

}  // namespace ios
