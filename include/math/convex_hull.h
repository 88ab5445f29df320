// Convex hull of a 2D point set.
#pragma once

#include <math/detail/instantiate.h>
