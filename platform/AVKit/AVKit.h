#pragma once

#include "AVKit/AVPlayerViewController.h"
