// Tests of <math/polygon.h>.
#include <gtest/gtest.h>

#include <math/polygon.h>
