// Best-fit geometric elements from point sets, and the records that steer the iterative fits
// and receive their standard deviations.
//
// Conventions of every fit:
// - points come as std::vector<Cpoint2<T>> or std::vector<Cpoint3<T>>, the fitted shape is
//   written into an output reference;
// - a fit that cannot be made (too few points, no convergence, a failed solve inside the
//   iterative circle, sphere and cylinder fits) leaves the shape invalid (NaN coordinates) and
//   returns normally; the fits never throw on their own account;
// - iterative fits run Gauss-Newton steps until every parameter correction is within its
//   tolerance (a NaN correction counts as within) or the iteration count reaches maxItr; the
//   body runs at least once, and a count equal to maxItr after the loop is a failure even if
//   the last step converged (so maxItr = 1 always fails, maxItr = 0 behaves like "no limit
//   reached after one step");
// - the overloads taking a ...StdAbw record copy its control fields into the plain record,
//   fit, and store the matching StdAbw... deviation in `stdAbw`; the control fields are
//   input only.
#pragma once

#include <math/detail/instantiate.h>
#include <math/points.h>
#include <math/shapes.h>

#include <cstdint>
#include <vector>

namespace math {

// ---------------------------------------------------------------------------------------------
// Fit-quality records: flat aggregates, fields in this order. Control records hold maxItr and
// one tolerance per fitted parameter (the largest absolute correction still counted as
// converged); ...StdAbw records add the output `stdAbw`.

// Standard deviations across the line (smaller eigenvalue) and along it.
template <typename T>
struct CqLineGeom2DStdAbw {
    T across;
    T along;
};

// Standard deviations along the three principal axes, in the eigen routine's order (decreasing
// |eigenvalue|: along the line first).
template <typename T>
struct CqLineGeom3DStdAbw {
    T axis1;
    T axis2;
    T axis3;
};

// The mean squared orthogonal distance of fitLineLsq (a variance, despite the name).
template <typename T>
struct CqLineLsqNStdAbw {
    T stdAbw;
};

template <typename T>
struct CqCircleLsqStdAbw {
    T stdAbw;
};

template <typename T>
struct CqSphereLsqStdAbw {
    T stdAbw;
};

// Parameter order (r, cx, cy).
template <typename T>
struct CqCircleGeom2D {
    unsigned long long maxItr;
    T tolR;
    T tolX;
    T tolY;
};

template <typename T>
struct CqCircleGeom2DStdAbw {
    unsigned long long maxItr;
    T tolR;
    T tolX;
    T tolY;
    T stdAbw;
};

// Parameter order (r, cx, cy) in the circle's own plane.
template <typename T>
struct CqCircleGeom3D {
    unsigned long long maxItr;
    T tolR;
    T tolX;
    T tolY;
};

template <typename T>
struct CqCircleGeom3DStdAbw {
    unsigned long long maxItr;
    T tolR;
    T tolX;
    T tolY;
    T stdAbw;
};

// Parameter order (cx, cy) in the circle's own plane; the third tolerance is not read.
template <typename T>
struct CqCircleGeomRfix3D {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolUnused;
};

template <typename T>
struct CqCircleGeomRfix3DStdAbw {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolUnused;
    T stdAbw;
};

// Parameter order (r, cx, cy, cz).
template <typename T>
struct CqSphereGeom {
    unsigned long long maxItr;
    T tolR;
    T tolX;
    T tolY;
    T tolZ;
};

template <typename T>
struct CqSphereGeomStdAbw {
    unsigned long long maxItr;
    T tolR;
    T tolX;
    T tolY;
    T tolZ;
    T stdAbw;
};

// Parameter order (cx, cy, cz).
template <typename T>
struct CqSphereGeomRfix {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolZ;
};

template <typename T>
struct CqSphereGeomRfixStdAbw {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolZ;
    T stdAbw;
};

// Parameter order (cx, cy, a, b, angle).
template <typename T>
struct CqEllipseGeom {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolA;
    T tolB;
    T tolAngle;
};

template <typename T>
struct CqEllipseGeomStdAbw {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolA;
    T tolB;
    T tolAngle;
    T stdAbw;
};

// Levenberg-Marquardt control; the fit writes `lastStdAbw`, the StdAbwEllipse value of the last
// trial ellipse (NaN with too few points).
template <typename T>
struct CqEllipseGeomLM {
    unsigned long long maxItr;
    T tolX;
    T tolY;
    T tolA;
    T tolB;
    T tolAngle;
    T lastStdAbw;
};

// Free cylinder: seven parameters, see fitCylinderGeom for their order.
template <typename T>
struct CqCylinderGeom {
    unsigned long long maxItr;
    T tol1;
    T tol2;
    T tol3;
    T tol4;
    T tol5;
    T tol6;
    T tol7;
};

template <typename T>
struct CqCylinderGeomStdAbw {
    unsigned long long maxItr;
    T tol1;
    T tol2;
    T tol3;
    T tol4;
    T tol5;
    T tol6;
    T tol7;
    T stdAbw;
};

// Fixed-radius cylinder: six parameters, see fitCylinderGeomRfix for their order.
template <typename T>
struct CqCylinderGeomRfix {
    unsigned long long maxItr;
    T tol1;
    T tol2;
    T tol3;
    T tol4;
    T tol5;
    T tol6;
};

template <typename T>
struct CqCylinderGeomRfixStdAbw {
    unsigned long long maxItr;
    T tol1;
    T tol2;
    T tol3;
    T tol4;
    T tol5;
    T tol6;
    T stdAbw;
};

// Power iteration of fitPlaneGeomFast: pass limit and the tolerance on the change of the norm
// after ten multiplications between two passes.
template <typename T>
struct CqPlaneGeomFast {
    unsigned long long maxItr;
    T tolNorm;
};

// Standard deviations along the normal, the middle and the main principal axis.
template <typename T>
struct CqPlaneGeomStdAbw {
    T normal;
    T middle;
    T main;
};

// ---------------------------------------------------------------------------------------------

template <typename T>
class approximate {
public:
    using Points2 = std::vector<Cpoint2<T>>;
    using Points3 = std::vector<Cpoint3<T>>;

    // --- Lines -------------------------------------------------------------------------------

    // Orthogonal-regression line, closed form computed in double (also for float): n < 2
    // invalid; n = 2 the line through both points; else through the mean along (u, Sxy) with
    // u = ((Sxx - Syy) + sqrt((Sxx - Syy)^2 + 4 Sxy^2)) / 2, (1, 0) when Syy = 0, (0, 1) when
    // Sxx = 0 or u^2 + Sxy^2 < 1e-8.
    static void fitLineGeom(Points2 const& points, Cline2<T>& line);
    // The same line by eigen decomposition of the 2 × 2 scatter matrix; the record receives
    // sqrt(lambda_min / (n - 1)) and sqrt(lambda_max / (n - 1)) (NaN for n <= 2).
    static void fitLineGeom(Points2 const& points, Cline2<T>& line, CqLineGeom2DStdAbw<T>& quality);
    // Orthogonal-regression line in space: through the mean along the first eigenvector of the
    // 3 × 3 scatter matrix.
    static void fitLineGeom(Points3 const& points, Cline3<T>& line);
    // The same, with sqrt(|d_i| / (n - 1)) of the eigenvalues d_i in decreasing |d_i|.
    static void fitLineGeom(Points3 const& points, Cline3<T>& line, CqLineGeom3DStdAbw<T>& quality);
    // Algebraic fit of a x + b y = 1 by its normal equations; returns the mean squared
    // orthogonal distance (a variance, no root), NaN for n <= 2. No guard against A = 0 when
    // B = 0 (the line's point then has an infinite or NaN coordinate).
    static double fitLineLsq(Points2 const& points, Cline2<T>& line);
    // fitLineLsq with its value stored in the record's stdAbw.
    static void fitLineLsqN(Points2 const& points, Cline2<T>& line, CqLineLsqNStdAbw<T>& quality);
    static void fitLineLsqN(Points2 const& points, Cline2<T>& line);

    // --- Deviations --------------------------------------------------------------------------
    // None checks n: n = 1 divides by 0 (infinite or NaN), n = 0 gives NaN.

    // Sample standard deviation of the signed distances about their own mean (a parallel shift
    // of the line does not change it).
    static T StdAbwLine2(Points2 const& points, Cline2<T> const& line);
    // Sample standard deviation of the distances from the centre about their mean (the radius
    // is not read).
    static T StdAbwCircle2(Points2 const& points, Ccircle2<T> const& circle);
    // sqrt(sx^2 + sy^2) with sx, sy the root mean squares (divisor n - 1) of the coordinate
    // differences between the points and their foot points (four Newton steps per point).
    static T StdAbwEllipse(Points2 const& points, Cellipse2<T> const& ellipse);
    // sqrt(sum (R - |p - c|)^2 / (n - 1)).
    static T StdAbwSphere(Points3 const& points, Csphere3<T> const& sphere);
    // sqrt(sum (R - |a × (p - P0)|)^2 / (n - 1)).
    static T StdAbwCylinder(Points3 const& points, Ccylinder3<T> const& cylinder);

    // --- Planes ------------------------------------------------------------------------------

    // Normal by power iteration on the inertia tensor of the centred points: passes of ten
    // multiplications, stopping when the norm changes by less than quality.tolNorm or after
    // maxItr + 2 passes (not a failure). n < 3 invalid; n = 3 the plane through the points.
    static void fitPlaneGeomFast(Points3 const& points, Cplane3<T>& plane,
                                 CqPlaneGeomFast<T> const& quality);
    // Normal = last eigenvector (smallest |eigenvalue|) of the 3 × 3 scatter matrix.
    static void fitPlaneGeom(Points3 const& points, Cplane3<T>& plane);
    // The same; the record receives sqrt(d3/(n-1)), sqrt(d2/(n-1)), sqrt(d1/(n-1)) (NaN for
    // n <= 3).
    static void fitPlaneGeom(Points3 const& points, Cplane3<T>& plane,
                             CqPlaneGeomStdAbw<T>& quality);

    // --- Circles -----------------------------------------------------------------------------

    static void fitCircleLsq(Points2 const& points, Ccircle2<T>& circle);
    static void fitCircleLsq(Points2 const& points, Ccircle2<T>& circle,
                             CqCircleLsqStdAbw<T>& quality);
    static void fitCircleLsqBeta(Points2 const& points, Ccircle2<T>& circle);
    static void fitCircleGeom(Points2 const& points, Ccircle2<T>& circle,
                              CqCircleGeom2D<T> const& quality);
    static void fitCircleGeom(Points2 const& points, Ccircle2<T>& circle,
                              CqCircleGeom2DStdAbw<T>& quality);
    static void fitCircleGeom(Points3 const& points, Ccircle3<T>& circle,
                              CqCircleGeom3D<T> const& quality);
    static void fitCircleGeom(Points3 const& points, Ccircle3<T>& circle,
                              CqCircleGeom3DStdAbw<T>& quality);
    static void fitCircleGeomRfix(Points3 const& points, Ccircle3<T>& circle,
                                  CqCircleGeomRfix3D<T> const& quality);
    static void fitCircleGeomRfix(Points3 const& points, Ccircle3<T>& circle,
                                  CqCircleGeomRfix3DStdAbw<T>& quality);

    // --- Spheres -----------------------------------------------------------------------------

    static void fitSphereLsq(Points3 const& points, Csphere3<T>& sphere);
    static void fitSphereLsq(Points3 const& points, Csphere3<T>& sphere,
                             CqSphereLsqStdAbw<T>& quality);
    static void fitSphereGeom(Points3 const& points, Csphere3<T>& sphere,
                              CqSphereGeom<T> const& quality);
    static void fitSphereGeom(Points3 const& points, Csphere3<T>& sphere,
                              CqSphereGeomStdAbw<T>& quality);
    static void fitSphereGeomRfix(Points3 const& points, Csphere3<T>& sphere,
                                  CqSphereGeomRfix<T> const& quality);
    static void fitSphereGeomRfix(Points3 const& points, Csphere3<T>& sphere,
                                  CqSphereGeomRfixStdAbw<T>& quality);

    // --- Cylinders ---------------------------------------------------------------------------

    // Start values: axis point = mean of the points; of 15 trial directions ((1,0,0), (0,1,0),
    // (0,0,1), then the normalised (±0.8, ±0.3, 0.3)-type combinations in a fixed order) the
    // first whose point distances from the line through the mean have the smallest variance
    // (divisor n); radius = their mean. Invalid without points.
    static void initValCylinder(Points3 const& points, Ccylinder3<T>& cylinder);
    // sum (d - R)^2 / n over the distances d from the axis: a mean square, no root.
    static double sqDevCylinder(Points3 const& points, Ccylinder3<T> const& cylinder);
    // Orthogonal-distance cylinder (Gauss-Newton, SVD solves), refining the cylinder passed in
    // (for instance from initValCylinder). Fewer than 8 points: invalid. The worker is chosen
    // once from the input axis (the component of largest magnitude; ties z, then y, then x);
    // above 10000 points a coarse pass on every (n / 5000)-th point runs first, then a pass
    // over all points. The axis point of the result is the foot of the points' centroid on
    // the axis; the axis keeps the sense of the input axis.
    // The seven tolerances tol1 ... tol7 apply, in this order, to the change in one step of:
    // the axis point x, y, z; the unit axis direction x, y, z; the radius.
    // Any failure (no convergence within maxItr steps, a solver exception) gives an invalid
    // cylinder; neither fit throws.
    static void fitCylinderGeom(Points3 const& points, Ccylinder3<T>& cylinder,
                                CqCylinderGeom<T> const& quality);
    static void fitCylinderGeom(Points3 const& points, Ccylinder3<T>& cylinder,
                                CqCylinderGeomStdAbw<T>& quality);
    // The same with the radius held at the input cylinder's radius; the six tolerances apply
    // to the axis point x, y, z and the unit axis direction x, y, z.
    static void fitCylinderGeomRfix(Points3 const& points, Ccylinder3<T>& cylinder,
                                    CqCylinderGeomRfix<T> const& quality);
    static void fitCylinderGeomRfix(Points3 const& points, Ccylinder3<T>& cylinder,
                                    CqCylinderGeomRfixStdAbw<T>& quality);

    // --- Ellipses ----------------------------------------------------------------------------
    // Both fits start from the circle of fitCircleLsq (a = b = its radius, angle 0), need at
    // least four points (fewer: invalid), minimise the orthogonal distances with foot-point
    // coordinates as residuals (the foot points of StdAbwEllipse), keep a >= b after every
    // update (|a|, |b|, swapped with the angle turned by pi/2), and let exceptions of the
    // circle start and the solvers reach the caller. Parameter order (cx, cy, a, b, angle).
    // While a and b agree within the single-precision epsilon the fifth unknown is the
    // stretch along the diagonal instead of the angle, which lets the fit leave a circle.

    // Gauss-Newton through the normal equations J^T J delta = J^T r (Cmatrix products, SVD).
    // Both centre corrections are compared with tolX (tolY is not read), then tolA, tolB,
    // tolAngle; maxItr as for every iterative fit.
    static void fitEllipseGeom(Points2 const& points, Cellipse2<T>& ellipse,
                               CqEllipseGeom<T> const& quality);
    static void fitEllipseGeom(Points2 const& points, Cellipse2<T>& ellipse,
                               CqEllipseGeomStdAbw<T>& quality);
    // Levenberg-Marquardt: (J^T J + lambda D) delta = J^T r with D = diag(J^T J), each entry
    // at least eps_f times the largest eigenvalue; lambda starts at 0.01 in every outer step,
    // a trial with smaller StdAbwEllipse is taken (lambda * 0.1, the step ends), otherwise
    // lambda * 10 until lambda >= 10000. All five tolerances are read, against the corrections
    // of the last trial; lastStdAbw receives the deviation of the last trial (NaN for fewer
    // than four points).
    static void fitEllipseGeomLM(Points2 const& points, Cellipse2<T>& ellipse,
                                 CqEllipseGeomLM<T>& quality);

protected:
    // Cylinder workers of fitCylinderGeom and fitCylinderGeomRfix, one per coordinate axis the
    // axis direction is referred to (one implementation on cyclically relabelled
    // coordinates). Each refines the cylinder passed in on the points 0, k, 2k, ... (stride k;
    // 0 counts as 1; fewer than five such points: invalid) and catches every exception,
    // leaving the cylinder invalid, as it does when maxItr is reached.
    static void fitCylinderGeomX(Points3 const& points, std::uint64_t stride,
                                 CqCylinderGeom<T> const& quality, Ccylinder3<T>& cylinder);
    static void fitCylinderGeomY(Points3 const& points, std::uint64_t stride,
                                 CqCylinderGeom<T> const& quality, Ccylinder3<T>& cylinder);
    static void fitCylinderGeomZ(Points3 const& points, std::uint64_t stride,
                                 CqCylinderGeom<T> const& quality, Ccylinder3<T>& cylinder);
    static void fitCylinderGeomRfixX(Points3 const& points, std::uint64_t stride,
                                     CqCylinderGeomRfix<T> const& quality,
                                     Ccylinder3<T>& cylinder);
    static void fitCylinderGeomRfixY(Points3 const& points, std::uint64_t stride,
                                     CqCylinderGeomRfix<T> const& quality,
                                     Ccylinder3<T>& cylinder);
    static void fitCylinderGeomRfixZ(Points3 const& points, std::uint64_t stride,
                                     CqCylinderGeomRfix<T> const& quality,
                                     Ccylinder3<T>& cylinder);
};

#define MGEO_APPROXIMATE_FAMILY(T, EXT) EXT template class approximate<T>;
#define MGEO_APPROXIMATE_EXTERN(T) MGEO_APPROXIMATE_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_APPROXIMATE_EXTERN)
#undef MGEO_APPROXIMATE_EXTERN

}  // namespace math
