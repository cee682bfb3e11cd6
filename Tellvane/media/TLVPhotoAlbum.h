#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Foundation/NSURL.h"
#include "ObjectiveC/NSObject.h"
#include "Platform.h"

namespace tellvane {

/// The library's own album in the device's photo library.
class TLVPhotoAlbum : public Subclass<TLVPhotoAlbum, NSObject> {
 public:
  /// Copies the movie at `url` into the album and calls `completionHandler` with the new asset's identifier,
  /// or with none when that failed.
  static void saveToPhotosAlbum(
      const NSURL& url, std::function<void(std::optional<std::string> localIdentifier)> completionHandler);
};

}  // namespace tellvane
