// Pieces shared by the fits: the point count as T, invalid shapes, the iteration rule of the
// Gauss-Newton fits and the wrappers that fill a record's stdAbw.
#pragma once

#include <math/points.h>
#include <math/shapes.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace math::detail {

template <typename T>
constexpr T nan() {
    return std::numeric_limits<T>::quiet_NaN();
}

// The number of points as T, converted through an unsigned 64-bit count.
template <typename T, typename Container>
T countOf(Container const& points) {
    return static_cast<T>(static_cast<std::uint64_t>(points.size()));
}

// Shapes whose every coordinate is NaN.
template <typename T>
Cline2<T> invalidLine2() {
    return Cline2<T>(Cpoint2<T>(nan<T>(), nan<T>()), Cdirec2<T>::unit(nan<T>(), nan<T>()));
}
template <typename T>
Cline3<T> invalidLine3() {
    return Cline3<T>(Cpoint3<T>(nan<T>(), nan<T>(), nan<T>()),
                     Cdirec3<T>::unit(nan<T>(), nan<T>(), nan<T>()));
}
template <typename T>
Cplane3<T> invalidPlane() {
    return Cplane3<T>(Cdirec3<T>::unit(nan<T>(), nan<T>(), nan<T>()), nan<T>());
}
template <typename T>
Ccircle2<T> invalidCircle2() {
    return Ccircle2<T>(Cpoint2<T>(nan<T>(), nan<T>()), nan<T>());
}
template <typename T>
Ccircle3<T> invalidCircle3() {
    return Ccircle3<T>(invalidPlane<T>(), Cpoint3<T>(nan<T>(), nan<T>(), nan<T>()), nan<T>());
}
template <typename T>
Csphere3<T> invalidSphere() {
    return Csphere3<T>(Cpoint3<T>(nan<T>(), nan<T>(), nan<T>()), nan<T>());
}
template <typename T>
Ccylinder3<T> invalidCylinder() {
    return Ccylinder3<T>(Cpoint3<T>(nan<T>(), nan<T>(), nan<T>()),
                         Cdirec3<T>::unit(nan<T>(), nan<T>(), nan<T>()), nan<T>());
}
template <typename T>
Cellipse2<T> invalidEllipse() {
    return Cellipse2<T>(Cpoint2<T>(nan<T>(), nan<T>()), nan<T>(), nan<T>(), nan<T>());
}

// |correction| <= tolerance, written as "not greater" so that a NaN correction counts as
// within tolerance.
template <typename T>
bool withinTolerance(T correction, T tolerance) {
    return !(std::fabs(correction) > tolerance);
}

// The iteration rule of every Gauss-Newton fit. `step` builds and solves one linearised
// system, applies the corrections and returns true when every correction is within its
// tolerance. The body runs at least once; the loop ends on convergence or when the count
// reaches maxItr. Returns false (the fit failed) when the count equals maxItr afterwards, also
// if the last permitted step converged: convergence must come in fewer than maxItr steps.
template <typename Step>
bool iterateFit(unsigned long long maxItr, Step&& step) {
    unsigned long long count = 0;
    bool converged = false;
    do {
        converged = step();
        ++count;
    } while (!converged && count < maxItr);
    return count != maxItr;
}

// A ...StdAbw record's wrapper: fit with the control part, then store the deviation.
template <typename T, typename Points, typename Shape, typename Control, typename Fit,
          typename Deviation>
void fitAndDeviation(Points const& points, Shape& shape, Control const& control, T& stdAbw,
                     Fit fit, Deviation deviation) {
    fit(points, shape, control);
    stdAbw = deviation(points, shape);
}

}  // namespace math::detail
