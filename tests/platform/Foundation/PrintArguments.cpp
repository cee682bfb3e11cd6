#include <iostream>

#include "Foundation/NSUserDefaults.h"

/// Prints what the argument domain says of a few keys.
int main() {
  const auto defaults = ios::NSUserDefaults::standardUserDefaults();
  for (const char* key : {"debug", "level", "name", "last", "off"}) {
    std::cout << key << "=" << defaults->stringForKey(key).value_or("(none)")
              << (defaults->boolForKey(key) ? " yes\n" : " no\n");
  }
}
