// Reports of `mgeo fit`: readable text, JSON, the residual file and the SVG drawing.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "fit.h"
#include "point_reader.h"

namespace mgeo_app {

// An output file that could not be written.
class WriteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A number for the readable report: 10 significant digits (7 in single precision).
std::string num(double v, bool single);

void printFitText(std::ostream& os, FitResult const& r, std::string const& source);
nlohmann::json fitJson(FitResult const& r, std::string const& source);

// One residual per line, in input order ("-" writes to standard output).
void writeResiduals(std::string const& path, std::vector<double> const& residuals, bool single);

// A drawing of a 2D fit: points, the fitted element, residual whiskers magnified by the factor
// returned, a scale bar and a legend with the figures.
template <typename T>
double writeFitSvg(std::string const& path, PointSet<T> const& pts, FitResult const& r,
                   std::string const& source);

// Opens path for writing ("-" is standard output) and hands the stream to fn.
void writeFile(std::string const& path, bool binary, void (*fn)(std::ostream&, void const*),
               void const* ctx);

}  // namespace mgeo_app
