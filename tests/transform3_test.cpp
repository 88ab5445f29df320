// Tests of <math/transform3.h>.
#include <gtest/gtest.h>

#include <math/transform3.h>
