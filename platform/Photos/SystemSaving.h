#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "Foundation/NSError.h"

namespace ios {

/// Adds a copy of the movie to the photo library as the system does: without the application's permission. The
/// movie must stay until `completion` has come, on the main thread, with the reason if it failed. Any thread.
void saveMovieAsTheSystem(const std::filesystem::path& movie,
                          std::function<void(const std::shared_ptr<NSError>& error)> completion);

}  // namespace ios
