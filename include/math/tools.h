// Point-cloud cutting.
#pragma once

#include <math/detail/instantiate.h>
