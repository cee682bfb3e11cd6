#include "simulator/flow/Place.h"

#include "simulator/flow/Words.h"

namespace simulator {

ios::CGPoint Place::on(ios::CGSize area) const {
  return {x.percent ? area.width * x.value / 100 : x.value,
          y.percent ? area.height * y.value / 100 : y.value};
}

std::string Place::description() const {
  return plainNumber(x.value) + (x.percent ? "%," : ",") + plainNumber(y.value) + (y.percent ? "%" : "");
}

}  // namespace simulator
