// Rectangles and 2D bounding boxes.
#pragma once

#include <math/detail/instantiate.h>
