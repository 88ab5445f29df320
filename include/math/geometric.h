// Intersections, distances and projections between geometric elements.
#pragma once

#include <math/detail/instantiate.h>
