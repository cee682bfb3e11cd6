#pragma once

#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"
