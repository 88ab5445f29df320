// Tests of <math/tools.h>.
#include <gtest/gtest.h>

#include <math/tools.h>
