// Tests of the cylinder and ellipse fits of <math/approximate.h>.
#include <gtest/gtest.h>

#include <math/approximate.h>
