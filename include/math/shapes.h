// Shape records: lines, circles, ellipses, planes, spheres, cylinders, 3D boxes.
#pragma once

#include <math/detail/instantiate.h>
