#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "Photos/PHFetchOptions.h"

namespace ios::photos {

/// Whether this application may read the library at all.
bool mayFetch();
/// Stops the process if the options' predicate asks for a key that is not among `known`.
void checkKey(const std::shared_ptr<PHFetchOptions>& options, std::initializer_list<const char*> known);
/// Whether an object with these values is wanted.
bool isWanted(const std::shared_ptr<PHFetchOptions>& options, const NSDictionary& values);

}  // namespace ios::photos
