#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Foundation/NSData.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// One thing on a pasteboard, in as many representations as its maker gave: type text → bytes.
using UIPasteboardItem = std::map<std::string, std::shared_ptr<NSData>>;

/// The pasteboard that all applications of the device share. It lives in one file, which is replaced whole;
/// other processes see every change. Main thread.
class UIPasteboard : public NSObject {
 public:
  static const std::shared_ptr<UIPasteboard>& generalPasteboard();
  std::vector<UIPasteboardItem> items() const;
  /// Replaces all items. Representations without bytes are left out. A device that cannot be written keeps
  /// the old items, with a line on standard error.
  void setItems(const std::vector<UIPasteboardItem>& items);
  /// Grows by one with every change, by whichever process.
  long changeCount() const;
};

}  // namespace ios
