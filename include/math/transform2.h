// 2D Helmert and affine transformations estimated from point pairs.
#pragma once

#include <math/detail/instantiate.h>
