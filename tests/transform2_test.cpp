// Tests of <math/transform2.h>.
#include <gtest/gtest.h>

#include <math/transform2.h>
