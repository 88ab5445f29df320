// Tests of <math/solver_le.h>.
#include <gtest/gtest.h>

#include <math/solver_le.h>
