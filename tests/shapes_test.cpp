// Tests of <math/shapes.h>.
#include <gtest/gtest.h>

#include <math/shapes.h>
