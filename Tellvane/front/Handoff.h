#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Foundation/NSData.h"
#include "Tellvane/Platform.h"
#include "UIKit/UIAlertController.h"

namespace tellvane {

// The hand-off to the companion application: one item on the general pasteboard, and a URL. Main thread.

/// The representations of a pasteboard item, by type.
using HandoffItem = std::map<std::string, std::shared_ptr<NSData>>;

/// The item of a still image: its record, and the kept image if there is one.
HandoffItem screenshotItem(const std::string& screenName);
/// The item of a recording with the identifier `assetId` in the photo library.
HandoffItem recordingItem(const std::string& videoName, const std::string& assetId);

/// Puts `item` on the pasteboard, replacing everything there, and asks for the companion to be opened.
void handOver(const HandoffItem& item);
/// Empties the pasteboard.
void withdrawItem();

/// Presents the alert that offers to install the companion; "Install" calls `install`.
void offerInstallation(std::function<void(const std::shared_ptr<UIAlertAction>& action)> install);
/// Asks for the companion's page in the store.
void openStorePage();

}  // namespace tellvane
