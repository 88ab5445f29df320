// Umbrella header: every public class of the library and the base-library classes callers touch.
#pragma once

#include <base/image.h>
#include <base/throw_base.h>
#include <core/array.h>
#include <core/matrix_base.h>
#include <core/vector.h>
#include <math/exceptions.h>
#include <math/points.h>
#include <math/matrix.h>
#include <math/solver_le.h>
#include <math/matrix_calc.h>
#include <math/transform3.h>
#include <math/shapes.h>
#include <math/approximate.h>
#include <math/geometric.h>
#include <math/basic_algo.h>
#include <math/tools.h>
#include <math/rect.h>
#include <math/polygon.h>
#include <math/convex_hull.h>
#include <math/aoi.h>
#include <math/transform2.h>
