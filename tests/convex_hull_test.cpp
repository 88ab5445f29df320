// Tests of <math/convex_hull.h>.
#include <gtest/gtest.h>

#include <math/convex_hull.h>
