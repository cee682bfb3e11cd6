#include "OtherImage.h"

#include <gtest/gtest.h>

namespace ios {
namespace {

// Fault: a category of an image that hides its symbols reaches that image's copy of the class, and no object.
TEST(OtherImage, ItsCategoryReachesTheObjectsOfThisOne) {
  Shop::Item item;
  EXPECT_EQ(priceSeenByTheOtherImage(item), 5);
  EXPECT_EQ(send<int>(item, "price"), 5);
  EXPECT_TRUE(item.respondsToSelector("sale"));
  EXPECT_EQ(item.price(), 10);
}

}  // namespace
}  // namespace ios
