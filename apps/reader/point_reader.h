// Readers of measured points for the mgeo tool: text files of 2 or 3 numbers per line and PLY
// point clouds (ASCII and binary little-endian).
//
// Text: numbers separated by blanks, tabs, commas or semicolons (one comma or semicolon between
// two numbers, blanks around it allowed, a trailing one ignored); `#` starts a comment up to
// the end of the line; blank lines are skipped; the first non-blank line is skipped as a header
// when its first field is not a number. Every data line must hold the same count of numbers, 2
// or 3, and every number must be finite (also after rounding to float). CR LF line ends work.
//
// PLY: the vertex element's x, y and (optional) z properties, each float or double; every other
// property and element is skipped. Elements before the vertex element are skipped too (in a
// binary file only when they have no list properties).
//
// Every problem throws ReadError with a message naming the file and the line (text, ASCII PLY)
// or the vertex and byte offset (binary PLY).
#pragma once

#include <math/points.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mgeo_app {

class ReadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Progress of a long read: called with the bytes consumed so far and the total.
using ProgressFn = std::function<void(std::uint64_t done, std::uint64_t total)>;

// Points of one file: dim is 2 or 3; exactly one of p2, p3 is filled.
template <typename T>
struct PointSet {
    int dim = 0;
    std::vector<math::Cpoint2<T>> p2;
    std::vector<math::Cpoint3<T>> p3;

    std::size_t size() const { return dim == 2 ? p2.size() : p3.size(); }
};

// The bytes of a file ("-" reads standard input): memory-mapped for regular files, read in
// blocks otherwise. Throws ReadError when the file cannot be opened or read.
class FileBuffer {
public:
    explicit FileBuffer(std::string const& path);
    ~FileBuffer();
    FileBuffer(FileBuffer const&) = delete;
    FileBuffer& operator=(FileBuffer const&) = delete;

    std::string_view view() const { return {m_data, m_size}; }

private:
    char const* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_mapped = false;
    std::string m_owned;
};

// Points from a buffer; `name` is used in messages. PLY when the buffer starts with "ply" and a
// line end, text otherwise. An input without points throws ReadError.
template <typename T>
PointSet<T> parsePoints(std::string_view data, std::string const& name,
                        ProgressFn const& progress = {});

// Points from a file ("-" for standard input). With showProgress, a bar is drawn on standard
// error when it is a terminal and the input is large.
template <typename T>
PointSet<T> readPoints(std::string const& path, bool showProgress = false);

// Polygons of 2D points separated by one or more blank lines (comment-only lines do not
// separate). Same text rules as above, 2 numbers per line.
template <typename T>
std::vector<std::vector<math::Cpoint2<T>>> parsePolygons(std::string_view data,
                                                         std::string const& name);
template <typename T>
std::vector<std::vector<math::Cpoint2<T>>> readPolygons(std::string const& path);

// A progress bar on standard error for reading `label`: an empty function unless standard error
// is a terminal and the total is at least minBytes. The bar's line is cleared at 100 %.
ProgressFn makeProgressBar(std::string const& label, std::uint64_t total,
                           std::uint64_t minBytes = std::uint64_t(32) << 20);

}  // namespace mgeo_app
