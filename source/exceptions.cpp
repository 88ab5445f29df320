// Error tables of the library's exception classes and their members. The texts are Latin-1
// bytes, written as hex escapes (each escape closes its literal, so that the following letters
// are not read as hex digits).
#include "math/exceptions.h"

namespace {

using Row = CbaseTransl::TtabTransl;

// Texts that two tables share: one array each, so both rows point to the same text.
char const kTextFuncNotImpl[] = "Funktion ist nicht implementiert.";
char const kTextNotSquare[] = "Es wude keine Quadratische Matrix \xFC" "bergeben.";

// Linear scan of a table ended by a row with a null idName; the first row with the id wins.
Row const* findRow(Row const* table, int id) {
    for (Row const* row = table; row->idName != nullptr; ++row) {
        if (row->id == id) {
            return row;
        }
    }
    return nullptr;
}

Row const kMatrixCalcTable[] = {
    {25, "CthrowMatrixCalc::ERR_TRIDIAG_ITERATION",
     "Zu viele Iterationen beim Algrothmus 'TriDiag'."},
    {26, "CthrowMatrixCalc::ERR_SOLVE_NOTSQUAREMATRIX", kTextNotSquare},
    {0, nullptr, nullptr},
};

}  // namespace

namespace math {

Row const CthrowMath::errStr[] = {
    {25, "CthrowMath::ERR_MATH_FUNCNOTIMPL", kTextFuncNotImpl},
    {26, "CthrowMath::ERR_MATH_INVALID_ARGUMENT",
     "Ung\xFC" "ltiges Argument wurde \xFC" "bergeben."},
    {27, "CthrowMath::ERR_MATH_ROUND_PREC", "Precision %0 for rounding out of range ([%1,%2])."},
    {28, "CthrowMath::ERR_TRANS_INV_MATRIX",
     "\xDC" "bergebene Matrix ist keine g\xFC" "ltige Transformationsmatrix."},
    {29, "CthrowMath::ERR_MATRIX_DIMS",
     "Dimensionen der \xFC" "bergebene Matrix sind ung\xFC" "ltig (m:%0,n:%1). "
     "Erwartet wird eine 3x3- oder 4x4-Matrix."},
    {30, "CthrowMath::ERR_MATRIX_NOTSQUARE", kTextNotSquare},
    {31, "CthrowMath::ERR_MATRIX_NOTORTHOGONAL", "Matrix ist nicht orthogonal."},
    {32, "CthrowMath::ERR_SOLVE_NOTSOLVABLE", "Gleichungssystem kann nicht berechnet werden."},
    {33, "CthrowMath::ERR_SOLVE_MATRIXSINGULAR", "\xDC" "bergebene Matrix ist singul\xE4" "r."},
    {34, "CthrowMath::ERR_PRIMEXT_AOI_POLYINDEX",
     "Polygonindex %0 des Aoi ungueltig. (min: %1, max: %2)"},
    {35, "CthrowMath::ERR_PRIMEXT_AOI_POINTINDEX",
     "Punktindex %0 des Polygons ungueltig. (min: %1, max: %2)"},
    {36, "CthrowMath::ERR_PRIMEXT_AOI_INVALID", "AOI ist ung\xFC" "ltig."},
    {0, nullptr, nullptr},
};

// The ids are not ascending (30 follows 32); lookup is a linear scan, so the order is kept.
Row const CthrowSpline::errStr[] = {
    {25, "CthrowSpline::ERR_FUNCNOTIMPL", kTextFuncNotImpl},
    {26, "CthrowSpline::ERR_INVALID_ARGUMENT", "Ungueltiges Argument wurde \xFC" "bergeben."},
    {27, "CthrowSpline::ERR_INVALID_CTRLPTS", "Zu wenig Kontrollpunkte."},
    {28, "CthrowSpline::ERR_INVALID_FITCTRLPTS",
     "Anzahl Kontrollpunkte groesser als Anzahl Mess-Punkte."},
    {29, "CthrowSpline::ERR_INVALID_CTRLWGHT", "Anzahl Kontrollpunkte und Gewichte ungleich."},
    {31, "CthrowSpline::ERR_INVALID_RATSUM", "Fehler beim Gewichten der Basisfunktionen."},
    {32, "CthrowSpline::ERR_INVALID_ARRAY", "Uebergebenes Vektorfeld ist inkonsistent."},
    {30, "CthrowSpline::ERR_INVALID_DATA", "Daten sind fehlerhaft."},
    {33, "CthrowSpline::ERR_INVALID_DIVISION", "Division durch 0 aufgetreten."},
    {34, "CthrowSpline::ERR_INVALID_ORDER", "Die Mindestordnung der Kurve/Flaeche ist kleiner 2."},
    {0, nullptr, nullptr},
};

Row const Ccorrelationthrow::errStr[] = {
    {25, "CthrowMath::ERR_SIZE_MISMATCH",
     "Korrelation nur zwischen Vektoren gleicher Gr\xF6\xDF" "e berechenbar (%0 != %1)."},
    {26, "CthrowMath::ERR_TEMPLATE_EMPTY", "Korrelationsinitialisierung mit leeren Daten."},
    {0, nullptr, nullptr},
};

}  // namespace math

// The members are identical in every class but for the table and the class itself.
#define MGEO_EXCEPTION_DEFINE(Class, table)                                                     \
    Class::Class(int id, std::string const& extra) : CthrowBase(id, extra) {}                   \
    Class::Class(std::string const& context, int id, std::string const& extra)                  \
        : CthrowBase(context, id, extra) {}                                                     \
    Class::Class(CthrowBase const& cause, int id, std::string const& extra)                     \
        : CthrowBase(cause, id, extra) {}                                                       \
    Class::Class(CthrowBase const& cause, std::string const& context, int id,                   \
                 std::string const& extra)                                                      \
        : CthrowBase(cause, context, id, extra) {}                                              \
    Class::Class(std::string const& context, int id, std::string const& extra, bool flag)       \
        : CthrowBase(context, id, extra, flag) {}                                               \
    Class::Class(CthrowBase const& cause, std::string const& context, int id,                   \
                 std::string const& extra, bool flag)                                           \
        : CthrowBase(cause, context, id, extra, flag) {}                                        \
    Class::Class(Class const& other) = default;                                                 \
    Class& Class::operator=(Class const& other) {                                               \
        CthrowBase::operator=(other);                                                           \
        return *this;                                                                           \
    }                                                                                           \
    Class::~Class() = default;                                                                  \
    CbaseTransl::TtabTransl const& Class::id2tab(int id) const {                                \
        Row const* row = findRow(table, id);                                                    \
        return row != nullptr ? *row : CthrowBase::id2tab(id);                                  \
    }                                                                                           \
    CthrowBase* Class::clone() const { return new Class(*this); }                               \
    void Class::throw_this() const { throw Class(*this); }

MGEO_EXCEPTION_DEFINE(CthrowMatrixCalc, kMatrixCalcTable)

namespace math {
MGEO_EXCEPTION_DEFINE(CthrowMath, errStr)
MGEO_EXCEPTION_DEFINE(CthrowSpline, errStr)
MGEO_EXCEPTION_DEFINE(Ccorrelationthrow, errStr)
}  // namespace math
