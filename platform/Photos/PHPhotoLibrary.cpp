#include "Photos/PHPhotoLibrary.h"

#include <new>
#include <utility>

#include "Base/Programming.h"
#include "Device/Device.h"
#include "Device/PermissionPrompt.h"
#include "Foundation/NSBundle.h"
#include "Photos/PHError.h"
#include "Photos/Private/Library.h"

namespace ios {
namespace photos {
namespace {

thread_local Changes* currentChanges = nullptr;

}  // namespace

Changes& Changes::current(const char* who) {
  if (!currentChanges)
    programmingError(std::string(who) + " can only be used inside of a block of performChanges");
  return *currentChanges;
}

Changes::Scope::Scope(Changes& changes) {
  currentChanges = &changes;
}
Changes::Scope::~Scope() {
  currentChanges = nullptr;
}

std::string Changes::newUUID() {
  if (failure) return {};
  auto made = Library::shared().newUUID();
  if (!made) failure = made.error();
  return std::move(made).value_or("");
}

}  // namespace photos

namespace {

constexpr const char* kService = "photos";

std::shared_ptr<NSError> accessRefusal() {
  const auto status = PHPhotoLibrary::authorizationStatus();
  if (status == PHAuthorizationStatus::authorized) return nullptr;
  const bool restricted = status == PHAuthorizationStatus::restricted;
  return std::make_shared<NSError>(PHPhotosErrorDomain,
                                   restricted ? PHPhotosErrorAccessRestricted : PHPhotosErrorAccessUserDenied,
                                   "this application may not use the photo library");
}

/// Makes what `changes` asks for; the error of what failed.
std::shared_ptr<NSError> outcome(const std::function<void()>& changes) {
  try {
    if (auto refusal = accessRefusal()) return refusal;
    photos::Changes asked;
    if (changes) {
      const photos::Changes::Scope scope(asked);
      changes();
    }
    const auto applied = photos::Library::shared().apply(asked);
    return applied ? nullptr : applied.error();
  } catch (const std::bad_alloc&) {
    return std::make_shared<NSError>(PHPhotosErrorDomain, PHPhotosErrorInternalError,
                                     "there is not enough memory to change the photo library");
  }
}

}  // namespace

const std::shared_ptr<PHPhotoLibrary>& PHPhotoLibrary::sharedPhotoLibrary() {
  static auto& library = *new std::shared_ptr<PHPhotoLibrary>(std::make_shared<PHPhotoLibrary>());
  return library;
}

PHAuthorizationStatus PHPhotoLibrary::authorizationStatus() {
  return static_cast<PHAuthorizationStatus>(Device::current().permission(kService));
}

void PHPhotoLibrary::requestAuthorization(std::function<void(PHAuthorizationStatus)> handler) {
  const auto& info = NSBundle::mainBundle()->infoDictionary();
  const std::string* reason = nullptr;
  if (info) {
    const auto found = info->find("NSPhotoLibraryUsageDescription");
    if (found != info->end()) reason = found->second.text();
  }
  requestPermission({kService, reason ? *reason : ""}, [handler = std::move(handler)](bool granted) {
    if (!handler) return;
    if (granted) return handler(PHAuthorizationStatus::authorized);
    // Applications do not know the answer "not asked", which stays when nobody was there to ask.
    const auto status = authorizationStatus();
    handler(status == PHAuthorizationStatus::restricted ? status : PHAuthorizationStatus::denied);
  });
}

void PHPhotoLibrary::performChanges(std::function<void()> changes,
                                    std::function<void(bool, std::shared_ptr<NSError>)> completion) {
  const auto finish = [completion = std::move(completion)](const std::shared_ptr<NSError>& error) {
    if (!completion) return;
    try {
      dispatch_async(photos::Library::shared().completionQueue(),
                     [completion, error] { completion(!error, error); });
    } catch (const std::bad_alloc&) {
      completion(!error, error);  // from here, rather than never
    }
  };
  dispatch_async(photos::Library::shared().queue(),
                 [changes = std::move(changes), finish] { finish(outcome(changes)); });
}

}  // namespace ios
