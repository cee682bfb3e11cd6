#pragma once

#include "ObjectiveC/Class.h"
#include "ObjectiveC/NSObject.h"
#include "ObjectiveC/Selector.h"
