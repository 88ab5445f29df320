// Tests of <math/rect.h>.
#include <gtest/gtest.h>

#include <math/rect.h>
