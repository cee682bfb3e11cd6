#include "media/CaptureScreenshot.h"

#include "Foundation/Print.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIGraphics.h"
#include "ground/Memory.h"
#include "info/TLVConstants.h"

namespace tellvane {

// Selectors belong to instances here, so this stands for the class operation.
static std::shared_ptr<CaptureScreenshot> sharedInstance(CaptureScreenshot&) {
  return CaptureScreenshot::shared();
}

static std::shared_ptr<UIImage> imageOfTheKeyWindow() {
  const auto window = UIApplication::sharedApplication()->keyWindow();
  if (!window) return nullptr;
  const CGRect bounds = window->bounds();
  UIGraphicsBeginImageContextWithOptions(bounds.size, false, 0.0);
  struct End {
    ~End() { UIGraphicsEndImageContext(); }
  } end;
  if (window->respondsToSelector("drawViewHierarchyInRect:afterScreenUpdates:")) {
    window->drawViewHierarchyInRectAfterScreenUpdates(bounds, true);
  } else if (const auto context = UIGraphicsGetCurrentContext()) {
    window->layer()->renderInContext(context);
  }
  return UIGraphicsGetImageFromCurrentImageContext();
}

MethodList CaptureScreenshot::methods() {
  return {{"saveCurrentScreenshot", &CaptureScreenshot::saveCurrentScreenshot},
          {"getSavedScreenshot", &CaptureScreenshot::getSavedScreenshot},
          {"shared", &sharedInstance}};
}

const std::shared_ptr<CaptureScreenshot>& CaptureScreenshot::shared() {
  static auto& instance = *new std::shared_ptr<CaptureScreenshot>(std::make_shared<CaptureScreenshot>());
  return instance;
}

void CaptureScreenshot::saveCurrentScreenshot() {
  unlessMemoryRunsOut([this] { resizeImage(imageOfTheKeyWindow()); });
}

void CaptureScreenshot::resizeImage(const std::shared_ptr<UIImage>& image) {
  if (!image) return;
  auto data = encodeWithin<CGFloat>(
      TLV_SCREENSHOT_MAXSIZE, [&](CGFloat quality) { return UIImageJPEGRepresentation(image, quality); });
  if (!data) return;
  // Not through the log function: this line stands in production mode too.
  print("newImage: " + std::to_string(data->length() / 1024) + "\n");
  screenshot_ = std::move(data);
}

}  // namespace tellvane
