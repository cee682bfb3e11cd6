#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "UIKit/UILabel.h"
#include "media/CaptureScreenshot.h"
#include "support/TestPhone.h"

namespace {

// Counts down to the allocation that fails; negative: none does.
std::atomic<long> allocationsLeft = -1;

void* allocate(std::size_t size) noexcept {
  if (allocationsLeft >= 0 && allocationsLeft-- == 0) return nullptr;
  return std::malloc(size ? size : 1);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace tellvane {
namespace {

using namespace testing_support;

TEST(Screenshot, WithoutMemoryAtAnyPointLeavesTheHostAndTheEarlierImageAlone) {
  TestPhone phone({.profile = "iPhone SE"});
  const auto window = phone.show();
  const auto label = std::make_shared<UILabel>(CGRectMake(20, 40, 280, 30));
  label->setText("A note");
  window->rootViewController()->view()->addSubview(label);
  const auto grabber = CaptureScreenshot::shared();
  grabber->saveCurrentScreenshot();
  const auto first = grabber->getSavedScreenshot();
  ASSERT_TRUE(first);

  long failed = 0;
  for (bool reached = true; reached; ++failed) {
    const auto before = grabber->getSavedScreenshot();
    label->setNeedsDisplay();
    allocationsLeft = failed;
    grabber->saveCurrentScreenshot();
    reached = allocationsLeft.exchange(-1) < 0;
    const auto after = grabber->getSavedScreenshot();
    ASSERT_TRUE(after);
    ASSERT_EQ(first->bytes(), after->bytes())
        << "allocation " << failed << (after == before ? ", earlier" : "");
  }
  EXPECT_GT(failed, 20) << "allocations were not met";
  grabber->saveCurrentScreenshot();
  EXPECT_EQ(first->bytes(), grabber->getSavedScreenshot()->bytes());
}

}  // namespace
}  // namespace tellvane
