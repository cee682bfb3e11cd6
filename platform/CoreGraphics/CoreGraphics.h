#pragma once

#include "CoreGraphics/CGColor.h"
#include "CoreGraphics/CGContext.h"
#include "CoreGraphics/CGGeometry.h"
#include "CoreGraphics/CGImage.h"
#include "CoreGraphics/CGPath.h"
