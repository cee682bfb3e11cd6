#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Foundation/NSData.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// One item of a pasteboard, in all the representations it was given: type text → bytes.
using UIPasteboardItem = std::map<std::string, std::shared_ptr<NSData>>;

/// The pasteboard that all applications of the device share. It lives in one file, which is replaced whole;
/// other processes see every change. Main thread.
class UIPasteboard : public NSObject {
 public:
  static const std::shared_ptr<UIPasteboard>& generalPasteboard();
  std::vector<UIPasteboardItem> items() const;
  /// Replaces all items. Representations without bytes are left out. If the device cannot be written, the old items
  /// stay, with a line on standard error; if there are none to keep, the file is removed, and the change count
  /// starts over.
  void setItems(const std::vector<UIPasteboardItem>& items);
  /// Grows by one with every change, whichever process makes it.
  long changeCount() const;
};

}  // namespace ios
