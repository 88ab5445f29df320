// Symmetric eigen decomposition and rotation angles.
#pragma once

#include <math/detail/instantiate.h>
