// 3D transformation parameters, quaternions and frame changes.
#pragma once

#include <math/detail/instantiate.h>
