// Tests of <math/approximate.h>.
#include <gtest/gtest.h>

#include <math/approximate.h>
