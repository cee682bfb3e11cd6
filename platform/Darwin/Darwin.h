#pragma once

#include "Darwin/utsname.h"
