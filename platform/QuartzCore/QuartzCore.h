#pragma once

#include "QuartzCore/CADisplayLink.h"
#include "QuartzCore/CALayer.h"
