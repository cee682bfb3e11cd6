#pragma once

#include "CoreFoundation/PropertyList.h"
