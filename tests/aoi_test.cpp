// Tests of <math/aoi.h>.
#include <gtest/gtest.h>

#include <math/aoi.h>
