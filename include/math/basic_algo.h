// Robust statistics and polynomials.
#pragma once

#include <math/detail/instantiate.h>
