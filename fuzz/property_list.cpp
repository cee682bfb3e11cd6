// Any bytes are either no property list, or one that is written and read again as the same; and either no keyed
// archive, or one whose content can be archived again.

#include <cstddef>
#include <cstdint>
#include <span>

#include "CoreFoundation/PropertyList.h"
#include "Foundation/NSKeyedUnarchiver.h"
#include "Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ios;
  std::string problem;
  const auto list = PropertyList::parse(std::span(data, size), &problem);
  require(list.has_value() == problem.empty(), "a refusal without a reason, or a reason without a refusal");
  if (list) {
    const auto binary = PropertyList::parse(std::span<const std::uint8_t>(list->binary()));
    require(binary.has_value(), "what was written cannot be read");
    require(binary->binary() == list->binary(), "what was read is another value");
  }
  problem.clear();
  const auto root = NSKeyedUnarchiver::unarchiveObjectWithData(std::span(data, size), &problem);
  require(root.has_value() == problem.empty(), "an archive refused without a reason, or the reverse");
  return 0;
}
