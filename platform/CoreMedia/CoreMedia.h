#pragma once

#include "CoreMedia/CMSampleBuffer.h"
#include "CoreMedia/CMTime.h"
