// Tests of <math/geometric.h>.
#include <gtest/gtest.h>

#include <math/geometric.h>
