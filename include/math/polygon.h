// Polygons: classification, simplicity and point-in tests.
#pragma once

#include <math/detail/instantiate.h>
