// Intersections, distances and projections between geometric elements.
#include "math/geometric.h"

namespace math {

namespace {

// The single-precision machine epsilon, the parallelism bound for both types.
constexpr double kEpsF = 1.1920928955078125e-07;

}  // namespace

template <typename T>
bool geometric<T>::intersect(Cline2<T> const& a, Cline2<T> const& b, Cpoint2<T>& point) {
    T const paX = a.point().x;
    T const paY = a.point().y;
    T const daX = a.direction().x();
    T const daY = a.direction().y();
    T const pbX = b.point().x;
    T const pbY = b.point().y;
    T const dbX = b.direction().x();
    T const dbY = b.direction().y();

    T const det = dbY * daX - dbX * daY;
    // Parallel when det equals 0 within the bound, both bounds inclusive: 0 >= det - eps and
    // det + eps >= 0.
    T const eps = static_cast<T>(kEpsF);
    if (T(0) >= det - eps && det + eps >= T(0)) {
        return false;
    }
    point.x = ((dbY * pbX + dbX * paY) * daX - (daY * paX + daX * pbY) * dbX) / det;
    point.y = ((paY * daX + daY * pbX) * dbY - (pbY * dbX + dbY * paX) * daY) / det;
    return true;
}

#define MGEO_GEOMETRIC_DEFINE(T) MGEO_GEOMETRIC_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_GEOMETRIC_DEFINE)

}  // namespace math
