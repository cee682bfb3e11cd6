#pragma once

#include "CoreVideo/CVPixelBuffer.h"
#include "CoreVideo/CVPixelBufferPool.h"
#include "CoreVideo/CVReturn.h"
