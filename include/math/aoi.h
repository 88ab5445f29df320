// Area of interest: a union of polygons with a pixel mask.
#pragma once

#include <math/detail/instantiate.h>
