// 2D Helmert and affine transformations estimated from point pairs.
//
// Ctrans2_Helmert and Ctrans2_Affine estimate a transformation from a list of source points and
// the list of the same points measured in the target system, by linear least squares (normal
// equations solved by LU decomposition); both return CtransPrm2, which applies it.
#pragma once

#include <math/detail/instantiate.h>
#include <math/matrix.h>
#include <math/points.h>

#include <cstddef>
#include <vector>

namespace math {

// The parameters of a 2D transformation: rotation angles rotX and rotY (radians), translation
// (tx, ty), scale (sx, sy). The point-list transform applies
//     x' = sx cos(rotX) x - sx sin(rotX) y + tx
//     y' = sy sin(rotY) x + sy cos(rotY) y + ty,
// which is a similarity for rotX = rotY and sx = sy. The single-point transform uses x in both
// terms of x' (x' = sx cos(rotX) x - sx sin(rotX) x + tx); the two forms therefore differ
// whenever rotX != 0 and y != x. This difference is part of the interface and kept.
template <typename T>
class CtransPrm2 {
public:
    class TransFunctor;
    class ReTransFunctor;

    // Rotations 0, translation (0, 0), scale (1, 1).
    CtransPrm2();
    // One rotation for both axes.
    CtransPrm2(T rot, Cpoint2<T> const& t, Cpoint2<T> const& s);
    CtransPrm2(T rotX, T rotY, Cpoint2<T> const& t, Cpoint2<T> const& s);

    // Both angles.
    void setRotation(T rot);
    void setRotation(T rotX, T rotY);
    void setTranslation(T tx, T ty) { m_translation = Cpoint2<T>(tx, ty); }
    void setTranslation(Cpoint2<T> const& t) { m_translation = t; }
    void setScale(T sx, T sy) { m_scale = Cpoint2<T>(sx, sy); }
    void setScale(Cpoint2<T> const& s) { m_scale = s; }

    T getRot_X() const { return m_rotX; }
    T getRot_Y() const { return m_rotY; }
    Cpoint2<T> const& getTranslation() const { return m_translation; }
    Cpoint2<T> const& getScale() const { return m_scale; }
    // [[cos rotX, -sin rotX], [sin rotY, cos rotY]].
    Cmatrix<T> getRot_Matrix() const;

    // A copy of the parameters applying the single-point transform / retransform.
    TransFunctor getTransFunctor() const;
    ReTransFunctor getReTransFunctor() const;

    // The single-point form (see the class comment). p and q may be the same object.
    void transform(Cpoint2<T> const& p, Cpoint2<T>& q) const;
    // The point-list form; out is resized to in's size (in and out may be the same vector).
    void transform(std::vector<Cpoint2<T>> const& in, std::vector<Cpoint2<T>>& out) const;
    // With u = x' - tx, v = y' - ty:
    //     x = cos(rotX)/sx u + sin(rotX)/sy v,   y = -sin(rotY)/sx u + cos(rotY)/sy v,
    // the exact inverse of the list form when rotX = rotY and sx = sy. A zero scale divides by
    // zero (no check).
    void retransform(Cpoint2<T> const& q, Cpoint2<T>& p) const;
    void retransform(std::vector<Cpoint2<T>> const& in, std::vector<Cpoint2<T>>& out) const;

private:
    T m_rotX;
    T m_rotY;
    Cpoint2<T> m_translation;
    Cpoint2<T> m_scale;
};

// Applies CtransPrm2::transform (single-point form) with a copy of the parameters.
template <typename T>
class CtransPrm2<T>::TransFunctor {
public:
    explicit TransFunctor(CtransPrm2 const& prm) : m_prm(prm) {}
    Cpoint2<T> operator()(Cpoint2<T> const& p) const;

private:
    CtransPrm2 m_prm;
};

// Applies CtransPrm2::retransform with a copy of the parameters.
template <typename T>
class CtransPrm2<T>::ReTransFunctor {
public:
    explicit ReTransFunctor(CtransPrm2 const& prm) : m_prm(prm) {}
    Cpoint2<T> operator()(Cpoint2<T> const& p) const;

private:
    CtransPrm2 m_prm;
};

// The common base of the estimators: which lists were given and their sizes. setSource and
// setDest may be called again at any time; they rebuild their data and set their flag again.
template <typename T>
class Ctrans2_Basic {
public:
    // transform() before both point lists were given.
    class xNotInitialized {};
    // Source and destination lists of different sizes.
    class xArgumentMismatch {};
    // The normal equations could not be built or solved.
    class xNotSolved {};

    Ctrans2_Basic() = default;
    virtual ~Ctrans2_Basic();

    // Stores the count and sets the source flag (derived classes also build their design).
    virtual void setSource(std::vector<Cpoint2<T>> const& src);
    // Stores the count and sets the destination flag (derived classes also store observations).
    virtual void setDest(std::vector<Cpoint2<T>> const& dst);
    // setSource(src), then setDest(dst).
    virtual void setAll(std::vector<Cpoint2<T>> const& src, std::vector<Cpoint2<T>> const& dst);
    // Estimates the parameters.
    virtual CtransPrm2<T> transform() = 0;

protected:
    // xNotInitialized unless both lists were given, then xArgumentMismatch unless their sizes
    // agree.
    void checkInput() const;

    bool m_sourceSet = false;
    bool m_destSet = false;
    std::size_t m_nSource = 0;
    std::size_t m_nDest = 0;
};

// Similarity (Helmert) transformation with four unknowns (tx, ty, a, b):
//     x' = tx + a x - b y,   y' = ty + b x + a y,
// estimated by least squares; the result has sx = sy = sqrt(a² + b²) and
// rotX = rotY = atan(b / a) (pi/2 for a = 0). The plain arctangent is used, so a rotation beyond
// ±90 degrees comes back shifted by pi with a positive scale (for 180 degrees: rotation 0).
template <typename T>
class Ctrans2_Helmert : public Ctrans2_Basic<T> {
public:
    Ctrans2_Helmert() = default;
    ~Ctrans2_Helmert() override;

    // Design rows 2i = [1, 0, x, -y] and 2i+1 = [0, 1, y, x] per source point.
    void setSource(std::vector<Cpoint2<T>> const& src) override;
    // Observations (x'0, y'0, x'1, y'1, ...).
    void setDest(std::vector<Cpoint2<T>> const& dst) override;
    // Solves (A^T A) p = A^T l with Csolver_luDecomp; any exception becomes xNotSolved.
    CtransPrm2<T> transform() override;

private:
    Cmatrix<T> m_design;       // A, 2n × 4
    Cmatrix<T> m_solution;     // (tx, ty, a, b), 4 × 1
    Cmatrix<T> m_observation;  // l, 2n × 1
};

// Affine transformation with six unknowns in two independent problems:
//     x' = px0 + px1 x - px2 y,   y' = py0 + py1 y + py2 x.
// The result has translation (px0, py0), sx = sqrt(px1² + py2²), sy = sqrt(px2² + py1²),
// rotX = atan(py2 / px1) and rotY = atan(px2 / py1) (pi/2 for a zero denominator). Scales and
// angles are formed column-wise from the fitted matrix while CtransPrm2 applies them row-wise,
// so a round trip reproduces the fitted map exactly only when it is a similarity; this pairing
// is deliberate.
template <typename T>
class Ctrans2_Affine : public Ctrans2_Basic<T> {
public:
    Ctrans2_Affine() = default;
    ~Ctrans2_Affine() override;

    // Design rows Ax_i = [1, x, -y] and Ay_i = [1, y, x] per source point.
    void setSource(std::vector<Cpoint2<T>> const& src) override;
    // Observations x' and y', one column each.
    void setDest(std::vector<Cpoint2<T>> const& dst) override;
    // Solves (Ax^T Ax) px = Ax^T x' and (Ay^T Ay) py = Ay^T y', each with its own
    // Csolver_luDecomp; any exception becomes xNotSolved.
    CtransPrm2<T> transform() override;

private:
    Cmatrix<T> m_designX;  // Ax, n × 3
    Cmatrix<T> m_designY;  // Ay, n × 3
    Cmatrix<T> m_px;       // 3 × 1
    Cmatrix<T> m_py;       // 3 × 1
    Cmatrix<T> m_obsX;     // x', n × 1
    Cmatrix<T> m_obsY;     // y', n × 1
};

#define MGEO_TRANSFORM2_FAMILY(T, EXT)     \
    EXT template class CtransPrm2<T>;      \
    EXT template class Ctrans2_Basic<T>;   \
    EXT template class Ctrans2_Helmert<T>; \
    EXT template class Ctrans2_Affine<T>;
#define MGEO_TRANSFORM2_EXTERN(T) MGEO_TRANSFORM2_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_TRANSFORM2_EXTERN)
#undef MGEO_TRANSFORM2_EXTERN

}  // namespace math
