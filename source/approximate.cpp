// approximate<T>: the fits are defined in the private headers below, grouped by shape, and
// instantiated here once for every element type.
#include "math/approximate.h"

#include "detail/fit_lines.h"
#include "detail/fit_circles.h"
#include "detail/fit_cylinders.h"
#include "detail/fit_ellipses.h"

namespace math {

#define MGEO_APPROXIMATE_DEFINE(T) MGEO_APPROXIMATE_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_APPROXIMATE_DEFINE)

}  // namespace math
