// The `mgeo fit` command: one best-fit element from a point set, with its deviations.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "point_reader.h"

namespace mgeo_app {

// What the user asked for.
struct FitOptions {
    std::string element;  // line2, line3, circle, circle3, ellipse, plane, sphere, cylinder
    std::string method;   // geom, lsq, lm, fast
    std::optional<double> radius;
    std::optional<std::vector<double>> normal;  // circle3
    unsigned long long maxIter = 100;
    std::optional<double> tol;
};

// One reported figure: a scalar or a vector, with what kind of quantity it is.
struct Param {
    enum class Kind { length, angle, direction, ratio };
    std::string key;    // JSON key
    std::string label;  // report label
    std::vector<double> values;
    Kind kind = Kind::length;
};

// The fitted element as plain numbers, for drawing 2D elements.
struct Shape2D {
    enum class Type { none, line, circle, ellipse } type = Type::none;
    double px = 0, py = 0, dx = 0, dy = 0;  // line: point and unit direction
    double cx = 0, cy = 0, r = 0;           // circle
    double a = 0, b = 0, angle = 0;         // ellipse (with cx, cy)
};

struct FitResult {
    std::string element;
    std::string method;
    std::string methodText;  // e.g. "geometric (orthogonal distance) fit"
    bool single = false;
    std::size_t n = 0;
    bool ok = false;
    std::string failure;  // words, when !ok
    std::vector<Param> params;
    double stdDev = 0;
    std::string stdDevText;  // what stdDev is
    std::vector<double> residuals;
    std::string residualText;  // what a residual is and its sign
    double minDev = 0;
    double maxDev = 0;
    std::size_t minIndex = 0;
    std::size_t maxIndex = 0;
    unsigned long long maxIter = 0;
    double tol = 0;       // tolerance of lengths
    double tolAngle = 0;  // tolerance of angles (radians)
    bool iterative = false;
    Shape2D shape;
};

// The point count and dimension an element needs (dim 2 or 3).
int elementDim(std::string const& element);
// Empty when the combination of options is valid, else the reason in words.
std::string checkFitOptions(FitOptions const& opt);

template <typename T>
FitResult runFit(PointSet<T> const& pts, FitOptions const& opt);

}  // namespace mgeo_app
