#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "Base/FileDescriptor.h"
#include "CoreGraphics/CGImage.h"

namespace ios {

/// The picture on the display in memory that several processes share: the driver makes it, whichever application is
/// in front writes it, and the driver reads it between its requests. BGRA, 8 bits a component, rows without gaps.
class DisplayMemory {
 public:
  /// The part that has changed, in pixels; all 0: nothing.
  struct Change {
    int x = 0, y = 0, width = 0, height = 0;
  };

  /// New memory with room for pictures of up to this many pixels, whose size nobody can change. Null, with `problem`
  /// set, when the system has none left.
  static std::shared_ptr<DisplayMemory> make(std::size_t pixels, std::string& problem);
  /// Memory that another process made.
  static std::shared_ptr<DisplayMemory> adopt(FileDescriptor descriptor, std::string& problem);
  ~DisplayMemory();
  DisplayMemory(const DisplayMemory&) = delete;

  int descriptor() const { return descriptor_.number(); }
  std::span<const std::uint8_t> bytes() const { return {pixels_, size_}; }
  /// Replaces the picture with `image`. One that does not fit changes nothing.
  Change show(const CGImage& image);

 private:
  DisplayMemory(FileDescriptor descriptor, std::uint8_t* pixels, std::size_t size)
      : descriptor_(std::move(descriptor)), pixels_(pixels), size_(size) {}
  static std::shared_ptr<DisplayMemory> map(FileDescriptor descriptor, std::size_t size,
                                            std::string& problem);

  FileDescriptor descriptor_;
  std::uint8_t* pixels_;
  std::size_t size_;
};

}  // namespace ios
