#pragma once

#include "ReplayKit/RPError.h"
#include "ReplayKit/RPPreviewViewController.h"
#include "ReplayKit/RPScreenRecorder.h"
