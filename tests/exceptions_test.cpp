// Tests of <math/exceptions.h> and the base library's exception root.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include <math/exceptions.h>

namespace {

using Row = CbaseTransl::TtabTransl;

// The expected texts are written here in UTF-8 and converted to the Latin-1 bytes of the
// tables, so that the tables' hex escapes are checked against an independent spelling.
std::string latin1(std::string const& utf8) {
    std::string out;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        auto const c = static_cast<unsigned char>(utf8[i]);
        if (c == 0xC3 && i + 1 < utf8.size()) {
            out += static_cast<char>(static_cast<unsigned char>(utf8[++i]) + 0x40);
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

struct Expected {
    int id;
    char const* idName;
    char const* text;
};

void expectTable(Row const* table, std::initializer_list<Expected> rows) {
    std::size_t k = 0;
    for (Expected const& e : rows) {
        SCOPED_TRACE(e.idName);
        EXPECT_EQ(table[k].id, e.id);
        ASSERT_NE(table[k].idName, nullptr);
        EXPECT_STREQ(table[k].idName, e.idName);
        EXPECT_EQ(std::string(table[k].text), latin1(e.text));
        ++k;
    }
    EXPECT_EQ(table[k].id, 0);
    EXPECT_EQ(table[k].idName, nullptr);
    EXPECT_EQ(table[k].text, nullptr);
}

TEST(ErrorTables, MathTableTextsAndOrder) {
    expectTable(
        math::CthrowMath::errStr,
        {{25, "CthrowMath::ERR_MATH_FUNCNOTIMPL", "Funktion ist nicht implementiert."},
         {26, "CthrowMath::ERR_MATH_INVALID_ARGUMENT", "Ungültiges Argument wurde übergeben."},
         {27, "CthrowMath::ERR_MATH_ROUND_PREC",
          "Precision %0 for rounding out of range ([%1,%2])."},
         {28, "CthrowMath::ERR_TRANS_INV_MATRIX",
          "Übergebene Matrix ist keine gültige Transformationsmatrix."},
         {29, "CthrowMath::ERR_MATRIX_DIMS",
          "Dimensionen der übergebene Matrix sind ungültig (m:%0,n:%1). Erwartet wird eine 3x3- "
          "oder 4x4-Matrix."},
         {30, "CthrowMath::ERR_MATRIX_NOTSQUARE", "Es wude keine Quadratische Matrix übergeben."},
         {31, "CthrowMath::ERR_MATRIX_NOTORTHOGONAL", "Matrix ist nicht orthogonal."},
         {32, "CthrowMath::ERR_SOLVE_NOTSOLVABLE", "Gleichungssystem kann nicht berechnet werden."},
         {33, "CthrowMath::ERR_SOLVE_MATRIXSINGULAR", "Übergebene Matrix ist singulär."},
         {34, "CthrowMath::ERR_PRIMEXT_AOI_POLYINDEX",
          "Polygonindex %0 des Aoi ungueltig. (min: %1, max: %2)"},
         {35, "CthrowMath::ERR_PRIMEXT_AOI_POINTINDEX",
          "Punktindex %0 des Polygons ungueltig. (min: %1, max: %2)"},
         {36, "CthrowMath::ERR_PRIMEXT_AOI_INVALID", "AOI ist ungültig."}});
}

TEST(ErrorTables, SplineTableKeepsItsStoredOrder) {
    expectTable(
        math::CthrowSpline::errStr,
        {{25, "CthrowSpline::ERR_FUNCNOTIMPL", "Funktion ist nicht implementiert."},
         {26, "CthrowSpline::ERR_INVALID_ARGUMENT", "Ungueltiges Argument wurde übergeben."},
         {27, "CthrowSpline::ERR_INVALID_CTRLPTS", "Zu wenig Kontrollpunkte."},
         {28, "CthrowSpline::ERR_INVALID_FITCTRLPTS",
          "Anzahl Kontrollpunkte groesser als Anzahl Mess-Punkte."},
         {29, "CthrowSpline::ERR_INVALID_CTRLWGHT", "Anzahl Kontrollpunkte und Gewichte ungleich."},
         {31, "CthrowSpline::ERR_INVALID_RATSUM", "Fehler beim Gewichten der Basisfunktionen."},
         {32, "CthrowSpline::ERR_INVALID_ARRAY", "Uebergebenes Vektorfeld ist inkonsistent."},
         {30, "CthrowSpline::ERR_INVALID_DATA", "Daten sind fehlerhaft."},
         {33, "CthrowSpline::ERR_INVALID_DIVISION", "Division durch 0 aufgetreten."},
         {34, "CthrowSpline::ERR_INVALID_ORDER",
          "Die Mindestordnung der Kurve/Flaeche ist kleiner 2."}});
    // Id 30 is found in the eighth row, after 31 and 32.
    math::CthrowSpline e(math::CthrowSpline::ERR_INVALID_DATA, std::c_empty);
    EXPECT_EQ(&e.id2tab(30), &math::CthrowSpline::errStr[7]);
    EXPECT_STREQ(e.id2tab(30).idName, "CthrowSpline::ERR_INVALID_DATA");
}

TEST(ErrorTables, CorrelationIdNamesCarryTheMathPrefix) {
    expectTable(math::Ccorrelationthrow::errStr,
                {{25, "CthrowMath::ERR_SIZE_MISMATCH",
                  "Korrelation nur zwischen Vektoren gleicher Größe berechenbar (%0 != %1)."},
                 {26, "CthrowMath::ERR_TEMPLATE_EMPTY",
                  "Korrelationsinitialisierung mit leeren Daten."}});
    math::Ccorrelationthrow e(25, std::c_empty);
    EXPECT_STREQ(e.id2tab(25).idName, "CthrowMath::ERR_SIZE_MISMATCH");
}

TEST(ErrorTables, MatrixCalcTableAndSharedTexts) {
    CthrowMatrixCalc e(CthrowMatrixCalc::ERR_TRIDIAG_ITERATION, std::c_empty);
    EXPECT_STREQ(e.id2tab(25).idName, "CthrowMatrixCalc::ERR_TRIDIAG_ITERATION");
    EXPECT_EQ(e.message(), "Zu viele Iterationen beim Algrothmus 'TriDiag'.");
    EXPECT_STREQ(e.id2tab(26).idName, "CthrowMatrixCalc::ERR_SOLVE_NOTSQUAREMATRIX");
    // One shared text each: 30 of CthrowMath with 26 of CthrowMatrixCalc, 25 of CthrowMath with
    // 25 of CthrowSpline.
    math::CthrowMath m(25, std::c_empty);
    math::CthrowSpline s(25, std::c_empty);
    EXPECT_EQ(e.id2tab(26).text, m.id2tab(30).text);
    EXPECT_EQ(m.id2tab(25).text, s.id2tab(25).text);
}

TEST(ErrorTables, UnknownIdsFallBackToTheBaseTable) {
    math::CthrowMath e(24, std::c_empty);
    CthrowBase const& base = e;
    for (int id : {24, 37, 0, -5, 1}) {
        EXPECT_EQ(&e.id2tab(id), &base.CthrowBase::id2tab(id)) << id;
    }
    EXPECT_STREQ(e.id2tab(37).idName, "CthrowBase::ERR_UNDEFINED");
    EXPECT_STREQ(e.id2tab(1).idName, "CthrowBase::ERR_UNKNOWN");
    // The same id resolves per class.
    EXPECT_STREQ(CthrowMatrixCalc(27, std::c_empty).id2tab(27).idName, "CthrowBase::ERR_UNDEFINED");
}

TEST(ErrorMessages, PlaceholdersAreFilledInStreamingOrder) {
    math::CthrowMath err(math::CthrowMath::ERR_PRIMEXT_AOI_POLYINDEX, std::c_empty);
    err << 7 << 0 << 4;
    EXPECT_EQ(err.message(), "Polygonindex 7 des Aoi ungueltig. (min: 0, max: 4)");
    EXPECT_EQ(err.arguments().size(), 3u);

    math::CthrowMath dims(math::CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
    dims << std::size_t(2) << std::uint64_t(5);
    EXPECT_NE(dims.message().find("(m:2,n:5)"), std::string::npos);
}

TEST(ErrorMessages, EmptyTextsAddArgumentsAndMissingOnesLeavePlaceholders) {
    math::CthrowMath err(math::CthrowMath::ERR_MATH_ROUND_PREC, std::c_empty);
    err << std::string() << "" << -3;
    ASSERT_EQ(err.arguments().size(), 3u);
    EXPECT_EQ(err.arguments()[0], "");
    EXPECT_EQ(err.message(), "Precision  for rounding out of range ([,-3]).");

    math::CthrowMath few(math::CthrowMath::ERR_MATH_ROUND_PREC, std::c_empty);
    few << 5;
    EXPECT_EQ(few.message(), "Precision 5 for rounding out of range ([%1,%2]).");
}

TEST(ErrorMessages, WhatComposesNameContextMessageOriginAndCause) {
    math::CthrowMath cause(math::CthrowMath::ERR_SOLVE_NOTSOLVABLE, std::c_empty);
    cause.setExInfo("solver.cpp", 12);
    math::CthrowSpline err(cause, "makeNormalSpline3d: ", math::CthrowSpline::ERR_INVALID_CTRLPTS,
                           std::string("(3 < 4)"));
    err.setExInfo("spline.cpp", 99);
    std::string const what = err.what();
    EXPECT_EQ(what,
              "CthrowSpline::ERR_INVALID_CTRLPTS (27): makeNormalSpline3d: Zu wenig "
              "Kontrollpunkte. (3 < 4)\n  at spline.cpp:99\ncaused by: "
              "CthrowMath::ERR_SOLVE_NOTSOLVABLE (32): Gleichungssystem kann nicht berechnet "
              "werden.\n  at solver.cpp:12");
    EXPECT_EQ(static_cast<std::string>(err), what);
    EXPECT_EQ(err.message(), "Zu wenig Kontrollpunkte.");
    ASSERT_NE(err.cause(), nullptr);
    EXPECT_EQ(err.cause()->id(), math::CthrowMath::ERR_SOLVE_NOTSOLVABLE);
}

TEST(ErrorObjects, CloneAndThrowThisKeepTheDynamicClass) {
    math::CthrowSpline original(math::CthrowSpline::ERR_INVALID_ORDER, std::c_empty);
    original << "order";
    std::unique_ptr<CthrowBase> stored(static_cast<CthrowBase const&>(original).clone());
    try {
        stored->throw_this();
        FAIL() << "throw_this returned";
    } catch (math::CthrowSpline const& e) {
        EXPECT_EQ(e.id(), math::CthrowSpline::ERR_INVALID_ORDER);
        EXPECT_EQ(e.arguments(), original.arguments());
    }
    std::unique_ptr<CthrowBase> corr(math::Ccorrelationthrow(26, std::c_empty).clone());
    EXPECT_THROW(corr->throw_this(), math::Ccorrelationthrow);
    std::unique_ptr<CthrowBase> calc(CthrowMatrixCalc(25, std::c_empty).clone());
    EXPECT_THROW(calc->throw_this(), CthrowMatrixCalc);
    EXPECT_STREQ(calc->id2tab(25).idName, "CthrowMatrixCalc::ERR_TRIDIAG_ITERATION");
}

TEST(ErrorObjects, CopiesOwnTheirCause) {
    auto* cause = new math::CthrowMath(math::CthrowMath::ERR_MATRIX_NOTSQUARE, std::c_empty);
    math::CthrowMath err(*cause, math::CthrowMath::ERR_SOLVE_NOTSOLVABLE, std::c_empty);
    delete cause;  // the error keeps a clone, not the original
    math::CthrowMath copy(err);
    math::CthrowMath assigned(25, std::c_empty);
    assigned = err;
    for (math::CthrowMath const* e : {&err, &copy, &assigned}) {
        ASSERT_NE(e->cause(), nullptr);
        EXPECT_EQ(e->cause()->id(), math::CthrowMath::ERR_MATRIX_NOTSQUARE);
        EXPECT_NE(std::string(e->what()).find("Quadratische"), std::string::npos);
    }
    EXPECT_NE(copy.cause(), err.cause());
}

TEST(ErrorObjects, RaisedAndAnnotatedLikeTheLibraryDoes) {
    try {
        try {
            math::CthrowMath err(math::CthrowMath::ERR_PRIMEXT_AOI_POINTINDEX, std::c_empty);
            err << 9 << 0 << 3;
            throw err;
        } catch (CthrowBase& e) {
            e.setExInfo("aoi.cpp", 7);
            throw;
        }
    } catch (math::CthrowMath const& e) {
        EXPECT_EQ(e.file(), "aoi.cpp");
        EXPECT_EQ(e.line(), 7);
        EXPECT_EQ(e.message(), "Punktindex 9 des Polygons ungueltig. (min: 0, max: 3)");
    }
}

}  // namespace
