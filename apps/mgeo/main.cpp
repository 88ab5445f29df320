// mgeo: best-fit elements, convex hulls, area-of-interest masks and 2D transformations from
// measured points in text or PLY files.
//
// Exit status: 0 done; 1 bad command line or bad input file (the message names the file and
// line); 2 the computation gave no result (a fit that did not converge, too few points).
#include <math/exceptions.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "fit.h"
#include "output.h"
#include "point_reader.h"
#include "tools.h"

namespace {

using namespace mgeo_app;

std::string sourceName(std::string const& path) { return path == "-" ? "standard input" : path; }

template <typename T>
int fitCommand(FitOptions const& opt, std::string const& file, bool json,
               std::string const& residualsOut, std::string const& svgOut) {
    PointSet<T> const pts = readPoints<T>(file, true);
    int const dim = elementDim(opt.element);
    if (pts.dim != dim) {
        std::cerr << "mgeo fit: " << sourceName(file) << ": " << opt.element << " needs " << dim
                  << " numbers per point, the file has " << pts.dim << '\n';
        return 1;
    }
    FitResult const r = runFit(pts, opt);
    std::string const source = sourceName(file);
    if (!r.ok) {
        if (json)
            std::cout << fitJson(r, source).dump(2) << '\n';
        std::cerr << "mgeo fit " << opt.element << ": " << source << ": " << r.failure << '\n';
        return 2;
    }
    if (!residualsOut.empty())
        writeResiduals(residualsOut, r.residuals, r.single);
    double factor = 0;
    if (!svgOut.empty())
        factor = writeFitSvg(svgOut, pts, r, source);
    if (json) {
        nlohmann::json j = fitJson(r, source);
        if (!residualsOut.empty())
            j["residuals_file"] = residualsOut;
        if (!svgOut.empty()) {
            j["svg_file"] = svgOut;
            j["svg_whisker_factor"] = factor;
        }
        std::cout << j.dump(2) << '\n';
    } else {
        printFitText(std::cout, r, source);
        if (!residualsOut.empty() && residualsOut != "-") {
            std::cout << "  residuals written to " << residualsOut << '\n';
        }
        if (!svgOut.empty() && svgOut != "-") {
            std::cout << "  drawing written to " << svgOut << " (residuals magnified x" << factor
                      << ")\n";
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "mgeo: best-fit elements and plane geometry from measured points.\n"
        "Input: text files with 2 or 3 numbers per line (blanks, commas, semicolons or "
        "tabs; # comments; a header line is skipped) or PLY point clouds; - reads "
        "standard input.\nExit status: 0 done, 1 bad input, 2 no result.",
        "mgeo"};
    app.require_subcommand(1);

    // fit
    FitOptions fitOpt;
    fitOpt.method = "geom";
    std::string fitFile = "-";
    bool fitFloat = false;
    bool fitJsonOut = false;
    std::string residualsOut;
    std::string svgOut;
    double radius = 0;
    std::vector<double> normal;
    double tol = 0;
    CLI::App* fit = app.add_subcommand("fit", "fit an element to points");
    fit->add_option("element", fitOpt.element,
                    "line2, line3, circle, circle3, ellipse, plane, sphere or cylinder")
        ->required();
    fit->add_option("file", fitFile, "point file (text or PLY); - or nothing for standard input");
    fit->add_option("--method", fitOpt.method,
                    "geom (default), lsq (line2, circle, sphere), lm (ellipse), fast (plane)");
    CLI::Option* radiusOpt =
        fit->add_option("--radius", radius, "fixed radius (circle, circle3, sphere, cylinder)");
    CLI::Option* normalOpt = fit->add_option("--normal", normal,
                                             "circle3: the circle's normal nx,ny,nz (default: "
                                             "normal of a plane fit)")
                                 ->delimiter(',')
                                 ->expected(3);
    fit->add_option("--max-iter", fitOpt.maxIter, "iteration limit (default 100)");
    CLI::Option* tolOpt = fit->add_option(
        "--tol", tol,
        "convergence tolerance of every parameter correction (default: 1e-9 of the points' "
        "extent, 1e-5 with --float)");
    fit->add_flag("--float", fitFloat, "compute in single precision");
    fit->add_flag("--json", fitJsonOut, "JSON report on standard output");
    fit->add_option("--residuals", residualsOut,
                    "write one signed distance per point, in input order");
    fit->add_option("--svg", svgOut, "draw points, element and residuals (2D elements)");

    // hull
    std::string hullFile;
    CommonOptions hullOpt;
    CLI::App* hull = app.add_subcommand("hull", "convex hull of 2D points");
    hull->add_option("file", hullFile, "point file (x y per line); - for standard input")
        ->required();
    hull->add_flag("--float", hullOpt.single, "compute in single precision");
    hull->add_flag("--json", hullOpt.json, "JSON output");

    // mask
    std::string maskFile;
    std::string maskOut;
    long long maskW = 0;
    long long maskH = 0;
    CommonOptions maskOpt;
    CLI::App* mask = app.add_subcommand("mask", "pixel mask of an area of interest as PGM");
    mask->add_option("polygons", maskFile,
                     "polygon vertices x y, one per line, polygons separated by blank lines")
        ->required();
    mask->add_option("--width", maskW, "image width in pixels")->required();
    mask->add_option("--height", maskH, "image height in pixels")->required();
    mask->add_option("--out", maskOut, "output PGM file")->required();
    mask->add_flag("--float", maskOpt.single, "compute in single precision");
    mask->add_flag("--json", maskOpt.json, "JSON summary");

    // transform2
    std::string srcFile;
    std::string dstFile;
    bool affine = false;
    CommonOptions trOpt;
    CLI::App* tr =
        app.add_subcommand("transform2", "Helmert or affine transformation from point pairs");
    tr->add_option("src", srcFile, "source points x y")->required();
    tr->add_option("dst", dstFile, "the same points in the target system")->required();
    tr->add_flag("--affine", affine, "affine instead of Helmert (similarity)");
    tr->add_flag("--float", trOpt.single, "compute in single precision");
    tr->add_flag("--json", trOpt.json, "JSON output");

    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const& e) {
        return app.exit(e);
    } catch (CLI::CallForAllHelp const& e) {
        return app.exit(e);
    } catch (CLI::ParseError const& e) {
        app.exit(e);
        return 1;
    }

    try {
        if (*fit) {
            if (*radiusOpt)
                fitOpt.radius = radius;
            if (*normalOpt)
                fitOpt.normal = normal;
            if (*tolOpt)
                fitOpt.tol = tol;
            std::string const bad = checkFitOptions(fitOpt);
            if (!bad.empty()) {
                std::cerr << "mgeo fit: " << bad << '\n';
                return 1;
            }
            if (!svgOut.empty() && elementDim(fitOpt.element) != 2) {
                std::cerr << "mgeo fit: --svg draws 2D elements only (line2, circle, ellipse)\n";
                return 1;
            }
            return fitFloat ? fitCommand<float>(fitOpt, fitFile, fitJsonOut, residualsOut, svgOut)
                            : fitCommand<double>(fitOpt, fitFile, fitJsonOut, residualsOut, svgOut);
        }
        if (*hull)
            return runHull(hullFile, hullOpt);
        if (*mask)
            return runMask(maskFile, maskW, maskH, maskOut, maskOpt);
        if (*tr)
            return runTransform2(srcFile, dstFile, affine, trOpt);
    } catch (ReadError const& e) {
        std::cerr << "mgeo: " << e.what() << '\n';
        return 1;
    } catch (WriteError const& e) {
        std::cerr << "mgeo: " << e.what() << '\n';
        return 1;
    } catch (std::bad_alloc const&) {
        std::cerr << "mgeo: out of memory\n";
        return 1;
    } catch (CthrowBase const& e) {
        std::cerr << "mgeo: library error: " << e.what() << '\n';
        return 2;
    } catch (std::exception const& e) {
        std::cerr << "mgeo: " << e.what() << '\n';
        return 1;
    }
    return 1;
}
