// The library's exception classes. Each adds nothing to CthrowBase but its own table of error
// ids (25 upward); an id missing from a class's table resolves through CthrowBase::id2tab.
// Raising an error:
//     math::CthrowMath err(math::CthrowMath::ERR_PRIMEXT_AOI_POLYINDEX, std::c_empty);
//     err << index << 0 << count - 1;   // fills %0, %1, %2
//     throw err;
#pragma once

#include <base/throw_base.h>

#include <string>

// The members every exception class of the library declares: the seven constructors, the
// table lookup, clone and throw_this.
#define MGEO_EXCEPTION_MEMBERS(Class)                                                          \
public:                                                                                        \
    Class(int id, std::string const& extra);                                                   \
    Class(std::string const& context, int id, std::string const& extra);                       \
    Class(CthrowBase const& cause, int id, std::string const& extra);                          \
    Class(CthrowBase const& cause, std::string const& context, int id,                         \
          std::string const& extra);                                                           \
    Class(Class const& other);                                                                 \
    Class& operator=(Class const& other);                                                      \
    ~Class() override;                                                                         \
    /* The row of this class's table with the given id (linear scan, first match), else */     \
    /* CthrowBase::id2tab(id). */                                                              \
    CbaseTransl::TtabTransl const& id2tab(int id) const override;                              \
    /* A heap copy of the dynamic class; the caller owns it. */                                \
    CthrowBase* clone() const override;                                                        \
    /* Throws a copy of this object as its own class. */                                       \
    void throw_this() const override;                                                          \
                                                                                               \
protected:                                                                                     \
    Class(std::string const& context, int id, std::string const& extra, bool flag);            \
    Class(CthrowBase const& cause, std::string const& context, int id, std::string const& extra, \
          bool flag)

// Matrix, solver and eigenvalue errors of the tridiagonalisation.
class CthrowMatrixCalc : public CthrowBase {
public:
    enum { ERR_TRIDIAG_ITERATION = 25, ERR_SOLVE_NOTSQUAREMATRIX = 26 };
    MGEO_EXCEPTION_MEMBERS(CthrowMatrixCalc);
};

namespace math {

// General geometry, matrix, solver and area-of-interest errors.
class CthrowMath : public CthrowBase {
public:
    enum {
        ERR_MATH_FUNCNOTIMPL = 25,
        ERR_MATH_INVALID_ARGUMENT = 26,
        ERR_MATH_ROUND_PREC = 27,
        ERR_TRANS_INV_MATRIX = 28,
        ERR_MATRIX_DIMS = 29,
        ERR_MATRIX_NOTSQUARE = 30,
        ERR_MATRIX_NOTORTHOGONAL = 31,
        ERR_SOLVE_NOTSOLVABLE = 32,
        ERR_SOLVE_MATRIXSINGULAR = 33,
        ERR_PRIMEXT_AOI_POLYINDEX = 34,
        ERR_PRIMEXT_AOI_POINTINDEX = 35,
        ERR_PRIMEXT_AOI_INVALID = 36
    };
    static CbaseTransl::TtabTransl const errStr[];
    MGEO_EXCEPTION_MEMBERS(CthrowMath);
};

// Spline errors.
class CthrowSpline : public CthrowBase {
public:
    enum {
        ERR_FUNCNOTIMPL = 25,
        ERR_INVALID_ARGUMENT = 26,
        ERR_INVALID_CTRLPTS = 27,
        ERR_INVALID_FITCTRLPTS = 28,
        ERR_INVALID_CTRLWGHT = 29,
        ERR_INVALID_DATA = 30,
        ERR_INVALID_RATSUM = 31,
        ERR_INVALID_ARRAY = 32,
        ERR_INVALID_DIVISION = 33,
        ERR_INVALID_ORDER = 34
    };
    static CbaseTransl::TtabTransl const errStr[];
    MGEO_EXCEPTION_MEMBERS(CthrowSpline);
};

// Correlation errors. Their id names carry the prefix "CthrowMath::".
class Ccorrelationthrow : public CthrowBase {
public:
    enum { ERR_SIZE_MISMATCH = 25, ERR_TEMPLATE_EMPTY = 26 };
    static CbaseTransl::TtabTransl const errStr[];
    MGEO_EXCEPTION_MEMBERS(Ccorrelationthrow);
};

}  // namespace math

#undef MGEO_EXCEPTION_MEMBERS
