#include "Foundation/Print.h"

#include <string>

#include "Base/Output.h"

namespace ios {

void print(std::string_view text) {
  writeOutput(text);
}

void NSLog(std::string_view line) {
  writeErrors(std::string(line) + "\n");
}

}  // namespace ios
