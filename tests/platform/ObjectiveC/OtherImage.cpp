#include "OtherImage.h"

namespace {

int reducedPrice(Shop::Item& item) {
  return item.price() / 2;
}

const ios::Category kSale{Shop::Item::classObject(), {{"price", &reducedPrice}, {"sale", &reducedPrice}}};

}  // namespace

int priceSeenByTheOtherImage(Shop::Item& item) {
  return ios::send<int>(item, "price");
}
