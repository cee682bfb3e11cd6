#include "Photos/SystemSaving.h"

#include <utility>

#include "Photos/Private/Library.h"

namespace ios {

void saveMovieAsTheSystem(const std::filesystem::path& movie,
                          std::function<void(const std::shared_ptr<NSError>&)> completion) {
  photos::Library& library = photos::Library::shared();
  dispatch_async(library.queue(), [&library, movie, completion = std::move(completion)] {
    photos::Changes changes;
    const std::string uuid = changes.newUUID();
    changes.newAssets.push_back({uuid, movie});
    const auto saved = library.apply(changes);
    dispatch_async(dispatch_get_main_queue(),
                   [completion, error = saved ? nullptr : saved.error()] { completion(error); });
  });
}

}  // namespace ios
