#pragma once

#include <functional>
#include <memory>

#include "Foundation/NSError.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

enum class PHAuthorizationStatus : long { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// The device's photo library:
///
///     Media/Photos.sqlite                 albums, assets and which are in which
///     Media/DCIM/100TLVNE/IMG_0001.MOV    the movies
///
/// Processes share it. An asset is there whole or not at all, however a process ends; what a killed one left
/// is removed when the library is next opened. A library that is damaged is set aside as
/// Photos.sqlite.damaged, its movies stay where they are, and a new one is begun; one line on standard error
/// says so. Any thread.
class PHPhotoLibrary : public NSObject {
 public:
  static const std::shared_ptr<PHPhotoLibrary>& sharedPhotoLibrary();

  /// Whether this application may use the library.
  static PHAuthorizationStatus authorizationStatus();
  /// Asks the user unless they have answered before (Device/PermissionPrompt.h), and calls back once, on a
  /// queue of the platform's own.
  static void requestAuthorization(std::function<void(PHAuthorizationStatus)> handler);

  /// Runs `changes` on the library's own serial queue and then what it asked for as one transaction: all of
  /// it happens, or nothing. `completion` comes once, on another queue of the platform's own, with an error
  /// if nothing was changed. Without permission `changes` does not run.
  void performChanges(std::function<void()> changes,
                      std::function<void(bool success, std::shared_ptr<NSError> error)> completion);
};

}  // namespace ios
