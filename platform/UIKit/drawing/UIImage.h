#pragma once

#include <filesystem>
#include <memory>

#include "CoreGraphics/CGGeometry.h"
#include "CoreGraphics/CGImage.h"
#include "Foundation/NSData.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// An image with a scale: its size in points is its size in pixels divided by that.
class UIImage : public NSObject {
 public:
  UIImage(CGImageRef image, CGFloat scale) : image_(std::move(image)), scale_(scale) {}
  /// A PNG or JPEG file, at scale 1; empty if it cannot be read.
  static std::shared_ptr<UIImage> imageWithContentsOfFile(const std::filesystem::path& path);
  const CGImageRef& CGImageValue() const { return image_; }
  CGFloat scale() const { return scale_; }
  CGSize size() const;

 private:
  CGImageRef image_;
  CGFloat scale_;
};

/// The image's pixels as JPEG, at a quality of 0 to 1. Empty when the encoder gives no data. The pixels are
/// read where they are. Any thread.
std::shared_ptr<NSData> UIImageJPEGRepresentation(const std::shared_ptr<UIImage>& image,
                                                  CGFloat compressionQuality);
std::shared_ptr<NSData> UIImagePNGRepresentation(const std::shared_ptr<UIImage>& image);

}  // namespace ios
