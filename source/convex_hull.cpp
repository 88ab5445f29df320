#include "math/convex_hull.h"
