// Linear-equation solvers: Gauss-Jordan, LU decomposition, singular value decomposition.
#pragma once

#include <math/detail/instantiate.h>
