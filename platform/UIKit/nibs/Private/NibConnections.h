#pragma once

#include "UIKit/Private/NibViews.h"

namespace ios {

/// Makes the outlets and actions of a reading, in the document's order; outlets first, so that what an outlet
/// sets finds nothing half connected. What cannot be connected is reported and left out.
void connectNib(NibReading& reading);

}  // namespace ios
