#include "UIKit/UIImage.h"

#include <optional>

namespace ios {

std::shared_ptr<UIImage> UIImage::imageWithContentsOfFile(const std::filesystem::path& path) {
  CGImageRef image = CGImage::decode(path);
  return image ? std::make_shared<UIImage>(std::move(image), 1) : nullptr;
}

CGSize UIImage::size() const {
  if (!image_ || !(scale_ > 0)) return {};
  return {static_cast<CGFloat>(image_->width()) / scale_, static_cast<CGFloat>(image_->height()) / scale_};
}

std::shared_ptr<NSData> UIImageJPEGRepresentation(const std::shared_ptr<UIImage>& image,
                                                  CGFloat compressionQuality) {
  if (!image || !image->CGImageValue()) return nullptr;
  std::optional<Bytes> bytes = image->CGImageValue()->jpeg(compressionQuality);
  return bytes ? std::make_shared<NSData>(std::move(*bytes)) : nullptr;
}

std::shared_ptr<NSData> UIImagePNGRepresentation(const std::shared_ptr<UIImage>& image) {
  if (!image || !image->CGImageValue()) return nullptr;
  Bytes bytes = image->CGImageValue()->png();
  return bytes.empty() ? nullptr : std::make_shared<NSData>(std::move(bytes));
}

}  // namespace ios
