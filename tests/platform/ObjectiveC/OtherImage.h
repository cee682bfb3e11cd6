#pragma once

#include "ObjectiveC/NSObject.h"

namespace Shop {

/// A class whose method table each image would have a copy of, were it a mere static of the template.
class Item : public ios::Subclass<Item, ios::NSObject> {
 public:
  static ios::MethodList methods() { return {{"price", &Item::price}}; }
  int price() { return 10; }
};

}  // namespace Shop

/// In the other image: what "price" gives for `item` when sent from there.
__attribute__((visibility("default"))) int priceSeenByTheOtherImage(Shop::Item& item);
