// Tests of <math/basic_algo.h>.
#include <gtest/gtest.h>

#include <math/basic_algo.h>
