// Tests of <math/matrix_calc.h>.
#include <gtest/gtest.h>

#include <math/matrix_calc.h>
