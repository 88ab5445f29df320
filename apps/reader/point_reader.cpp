// Text and PLY point readers. The input is read into memory once (memory-mapped when it is a
// regular file) and numbers are converted with std::from_chars straight from that buffer: no
// stream and no per-number allocation, so ten million points take a few seconds at most.
#include "point_reader.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <system_error>

namespace mgeo_app {

namespace {

// --- Messages --------------------------------------------------------------------------------

[[noreturn]] void failAt(std::string const& name, std::uint64_t line, std::string const& what) {
    throw ReadError(name + ":" + std::to_string(line) + ": " + what);
}

[[noreturn]] void fail(std::string const& name, std::string const& what) {
    throw ReadError(name + ": " + what);
}

// A field quoted for a message, cut at 40 characters.
std::string quoted(std::string_view s) {
    std::string q = "'";
    q.append(s.substr(0, 40));
    if (s.size() > 40) {
        q += "...";
    }
    return q + "'";
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }
bool isDelimiter(char c) { return c == ',' || c == ';'; }

// The field starting at i: up to the next blank or delimiter.
std::string_view fieldAt(std::string_view line, std::size_t i) {
    std::size_t j = i;
    while (j < line.size() && !isBlank(line[j]) && !isDelimiter(line[j])) {
        ++j;
    }
    return line.substr(i, j - i);
}

// --- Numbers ---------------------------------------------------------------------------------

enum class NumStatus { ok, notNumber, outOfRange, notFinite };

// One decimal number at the start of s (an optional '+' allowed), ending at `end`; `next`
// receives the position after it.
NumStatus parseNumber(char const* s, char const* end, double& value, char const*& next) {
    char const* start = s;
    if (start < end && *start == '+' && start + 1 < end && start[1] != '-' && start[1] != '+') {
        ++start;
    }
    auto const res = std::from_chars(start, end, value, std::chars_format::general);
    next = res.ptr;
    if (res.ec == std::errc::result_out_of_range) {
        // from_chars leaves value unchanged here; move past the digits for the caller.
        return NumStatus::outOfRange;
    }
    if (res.ec != std::errc() || res.ptr == start) {
        return NumStatus::notNumber;
    }
    if (!std::isfinite(value)) {
        return NumStatus::notFinite;
    }
    return NumStatus::ok;
}

// --- Text lines ------------------------------------------------------------------------------

// Result of splitting one text line into numbers.
struct Fields {
    double v[3] = {0, 0, 0};
    int count = 0;
    bool firstIsNumber = true;  // false when the first field did not parse as a number
    std::string error;          // non-empty on a malformed line
};

// Splits a line (comment already removed, not blank) into at most three numbers.
void splitNumbers(std::string_view line, Fields& f) {
    std::size_t i = 0;
    std::size_t const n = line.size();
    while (i < n && isBlank(line[i])) {
        ++i;
    }
    while (i < n) {
        if (isDelimiter(line[i])) {
            f.error = "empty field before " + quoted(line.substr(i, 1));
            f.firstIsNumber = f.count > 0;
            return;
        }
        std::string_view const field = fieldAt(line, i);
        double value = 0;
        char const* next = nullptr;
        NumStatus const st = parseNumber(line.data() + i, line.data() + n, value, next);
        std::size_t const after = std::size_t(next - line.data());
        bool const ends = after >= n || isBlank(line[after]) || isDelimiter(line[after]);
        if (st == NumStatus::notNumber || (st == NumStatus::ok && !ends) ||
            (st == NumStatus::notFinite && !ends)) {
            if (f.count == 0) {
                f.firstIsNumber = false;
            }
            f.error = quoted(field) + " is not a number";
            return;
        }
        if (st == NumStatus::outOfRange) {
            f.error = quoted(field) + " is out of range";
            return;
        }
        if (st == NumStatus::notFinite) {
            f.error = quoted(field) + " is not a finite number";
            return;
        }
        if (f.count == 3) {
            f.error = "more than 3 numbers";
            return;
        }
        f.v[f.count++] = value;
        i = after;
        while (i < n && isBlank(line[i])) {
            ++i;
        }
        if (i < n && isDelimiter(line[i])) {
            ++i;
            while (i < n && isBlank(line[i])) {
                ++i;
            }
            if (i < n && isDelimiter(line[i])) {
                f.error = "empty field between two delimiters";
                return;
            }
        }
    }
}

// Walks the lines of a text buffer: onRow(fields, lineNo) for every data line, onBlank() for
// every empty (or blank-only) line; comment-only lines call neither. The first non-blank line
// is skipped when its first field is not a number (a header).
template <typename OnRow, typename OnBlank>
void scanText(std::string_view data, std::string const& name, ProgressFn const& progress,
              OnRow&& onRow, OnBlank&& onBlank) {
    std::size_t pos = 0;
    std::uint64_t lineNo = 0;
    bool seenContent = false;
    std::uint64_t const total = data.size();
    while (pos < data.size()) {
        ++lineNo;
        if (progress && (lineNo & 0xFFFF) == 0) {
            progress(pos, total);
        }
        char const* begin = data.data() + pos;
        std::size_t const rest = data.size() - pos;
        void const* nl = std::memchr(begin, '\n', rest);
        std::size_t const len = nl ? std::size_t(static_cast<char const*>(nl) - begin) : rest;
        pos += len + (nl ? 1 : 0);
        std::string_view line(begin, len);
        bool comment = false;
        std::size_t const hash = line.find('#');
        if (hash != std::string_view::npos) {
            line = line.substr(0, hash);
            comment = true;
        }
        bool blank = true;
        for (char c : line) {
            if (!isBlank(c)) {
                blank = false;
                break;
            }
        }
        if (blank) {
            if (!comment) {
                onBlank();
            }
            continue;
        }
        if (line.find('\0') != std::string_view::npos) {
            failAt(name, lineNo, "binary data in a text file");
        }
        Fields f;
        splitNumbers(line, f);
        bool const first = !seenContent;
        seenContent = true;
        if (!f.error.empty()) {
            if (first && !f.firstIsNumber) {
                continue;  // header line
            }
            failAt(name, lineNo, f.error);
        }
        onRow(f, lineNo);
    }
    if (progress) {
        progress(total, total);
    }
}

template <typename T>
T checkedValue(double v, std::string const& name, std::uint64_t line) {
    T const t = static_cast<T>(v);
    if (!std::isfinite(t)) {
        failAt(name, line, std::to_string(v) + " is out of range for single precision");
    }
    return t;
}

template <typename T>
PointSet<T> parseText(std::string_view data, std::string const& name, ProgressFn const& progress) {
    PointSet<T> set;
    auto onRow = [&](Fields const& f, std::uint64_t line) {
        if (f.count < 2) {
            failAt(name, line, "expected 2 or 3 numbers, found " + std::to_string(f.count));
        }
        if (set.dim == 0) {
            set.dim = f.count;
            // A rough size guess from the first line keeps reallocations few for big files.
            std::size_t const guess = std::min<std::size_t>(data.size() / 8 + 1, 1u << 26);
            if (set.dim == 2) {
                set.p2.reserve(guess / 2);
            } else {
                set.p3.reserve(guess / 3);
            }
        } else if (f.count != set.dim) {
            failAt(name, line,
                   "expected " + std::to_string(set.dim) +
                       " numbers as on the first data line, "
                       "found " +
                       std::to_string(f.count));
        }
        if (set.dim == 2) {
            set.p2.emplace_back(checkedValue<T>(f.v[0], name, line),
                                checkedValue<T>(f.v[1], name, line));
        } else {
            set.p3.emplace_back(checkedValue<T>(f.v[0], name, line),
                                checkedValue<T>(f.v[1], name, line),
                                checkedValue<T>(f.v[2], name, line));
        }
    };
    scanText(data, name, progress, onRow, [] {});
    if (set.size() == 0) {
        fail(name, "no points");
    }
    return set;
}

// --- PLY -------------------------------------------------------------------------------------

enum class PlyType { int8, uint8, int16, uint16, int32, uint32, float32, float64, invalid };

PlyType plyType(std::string_view s) {
    if (s == "char" || s == "int8")
        return PlyType::int8;
    if (s == "uchar" || s == "uint8")
        return PlyType::uint8;
    if (s == "short" || s == "int16")
        return PlyType::int16;
    if (s == "ushort" || s == "uint16")
        return PlyType::uint16;
    if (s == "int" || s == "int32")
        return PlyType::int32;
    if (s == "uint" || s == "uint32")
        return PlyType::uint32;
    if (s == "float" || s == "float32")
        return PlyType::float32;
    if (s == "double" || s == "float64")
        return PlyType::float64;
    return PlyType::invalid;
}

std::size_t plySize(PlyType t) {
    switch (t) {
        case PlyType::int8:
        case PlyType::uint8:
            return 1;
        case PlyType::int16:
        case PlyType::uint16:
            return 2;
        case PlyType::int32:
        case PlyType::uint32:
        case PlyType::float32:
            return 4;
        case PlyType::float64:
            return 8;
        default:
            return 0;
    }
}

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::invalid;
    bool isList = false;
    PlyType countType = PlyType::invalid;
    std::size_t offset = 0;  // byte offset in a binary record without lists
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> props;
    bool hasList = false;
    std::size_t stride = 0;  // bytes per binary record without lists
};

std::vector<std::string_view> splitWords(std::string_view line) {
    std::vector<std::string_view> words;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && isBlank(line[i])) {
            ++i;
        }
        std::size_t j = i;
        while (j < line.size() && !isBlank(line[j])) {
            ++j;
        }
        if (j > i) {
            words.push_back(line.substr(i, j - i));
        }
        i = j;
    }
    return words;
}

bool hostIsLittleEndian() {
    std::uint16_t const one = 1;
    unsigned char b = 0;
    std::memcpy(&b, &one, 1);
    return b == 1;
}

template <typename F>
F loadLittle(char const* p) {
    unsigned char bytes[sizeof(F)];
    std::memcpy(bytes, p, sizeof(F));
    if (!hostIsLittleEndian()) {
        std::reverse(bytes, bytes + sizeof(F));
    }
    F v;
    std::memcpy(&v, bytes, sizeof(F));
    return v;
}

// One line of a buffer from pos; advances pos past the line end; CR removed.
std::string_view nextLine(std::string_view data, std::size_t& pos) {
    std::size_t const rest = data.size() - pos;
    char const* begin = data.data() + pos;
    void const* nl = std::memchr(begin, '\n', rest);
    std::size_t const len = nl ? std::size_t(static_cast<char const*>(nl) - begin) : rest;
    pos += len + (nl ? 1 : 0);
    std::string_view line(begin, len);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

template <typename T>
PointSet<T> parsePly(std::string_view data, std::string const& name, ProgressFn const& progress) {
    std::size_t pos = 0;
    std::uint64_t lineNo = 0;
    enum class Format { none, ascii, binaryLittle } format = Format::none;
    std::vector<PlyElement> elements;
    bool ended = false;
    while (pos < data.size()) {
        ++lineNo;
        std::string_view const line = nextLine(data, pos);
        auto const w = splitWords(line);
        if (lineNo == 1) {
            continue;  // "ply", checked by the caller
        }
        if (w.empty() || w[0] == "comment" || w[0] == "obj_info") {
            continue;
        }
        if (w[0] == "end_header") {
            ended = true;
            break;
        }
        if (w[0] == "format") {
            if (w.size() < 2) {
                failAt(name, lineNo, "format line without a format");
            }
            if (w[1] == "ascii") {
                format = Format::ascii;
            } else if (w[1] == "binary_little_endian") {
                format = Format::binaryLittle;
            } else if (w[1] == "binary_big_endian") {
                failAt(name, lineNo, "binary big-endian PLY is not supported");
            } else {
                failAt(name, lineNo, "unknown PLY format " + quoted(w[1]));
            }
        } else if (w[0] == "element") {
            if (w.size() != 3) {
                failAt(name, lineNo, "element line needs a name and a count");
            }
            PlyElement e;
            e.name = std::string(w[1]);
            auto const r = std::from_chars(w[2].data(), w[2].data() + w[2].size(), e.count);
            if (r.ec != std::errc() || r.ptr != w[2].data() + w[2].size()) {
                failAt(name, lineNo, "element count " + quoted(w[2]) + " is not a count");
            }
            elements.push_back(std::move(e));
        } else if (w[0] == "property") {
            if (elements.empty()) {
                failAt(name, lineNo, "property before any element");
            }
            PlyElement& e = elements.back();
            PlyProperty p;
            if (w.size() == 5 && w[1] == "list") {
                p.isList = true;
                p.countType = plyType(w[2]);
                p.type = plyType(w[3]);
                p.name = std::string(w[4]);
                if (p.countType == PlyType::invalid || p.countType == PlyType::float32 ||
                    p.countType == PlyType::float64 || p.type == PlyType::invalid) {
                    failAt(name, lineNo, "bad list property types");
                }
                e.hasList = true;
            } else if (w.size() == 3) {
                p.type = plyType(w[1]);
                p.name = std::string(w[2]);
                if (p.type == PlyType::invalid) {
                    failAt(name, lineNo, "unknown property type " + quoted(w[1]));
                }
                p.offset = e.stride;
                e.stride += plySize(p.type);
            } else {
                failAt(name, lineNo, "malformed property line");
            }
            e.props.push_back(std::move(p));
        } else {
            failAt(name, lineNo, "unknown header keyword " + quoted(w[0]));
        }
    }
    if (!ended) {
        fail(name, "PLY header without end_header");
    }
    if (format == Format::none) {
        fail(name, "PLY header without a format line");
    }
    std::size_t vertexIndex = elements.size();
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements[i].name == "vertex") {
            vertexIndex = i;
            break;
        }
    }
    if (vertexIndex == elements.size()) {
        fail(name, "PLY file without a vertex element");
    }
    PlyElement const& vertex = elements[vertexIndex];
    int ix = -1;
    int iy = -1;
    int iz = -1;
    for (std::size_t k = 0; k < vertex.props.size(); ++k) {
        PlyProperty const& p = vertex.props[k];
        int* slot = p.name == "x" ? &ix : p.name == "y" ? &iy : p.name == "z" ? &iz : nullptr;
        if (slot == nullptr) {
            continue;
        }
        if (p.isList || (p.type != PlyType::float32 && p.type != PlyType::float64)) {
            fail(name, "vertex property " + p.name + " must be float or double");
        }
        *slot = int(k);
    }
    if (ix < 0 || iy < 0) {
        fail(name, "vertex element without x and y properties");
    }
    PointSet<T> set;
    set.dim = iz >= 0 ? 3 : 2;
    std::uint64_t const total = data.size();

    auto store = [&](double x, double y, double z, std::uint64_t k, std::string const& where) {
        T const tx = static_cast<T>(x);
        T const ty = static_cast<T>(y);
        T const tz = static_cast<T>(z);
        if (!std::isfinite(tx) || !std::isfinite(ty) || (set.dim == 3 && !std::isfinite(tz))) {
            fail(name, where + "vertex " + std::to_string(k) +
                           " has a coordinate that is not "
                           "finite" +
                           (std::is_same_v<T, float> ? " in single precision" : ""));
        }
        if (set.dim == 2) {
            set.p2.emplace_back(tx, ty);
        } else {
            set.p3.emplace_back(tx, ty, tz);
        }
    };

    if (format == Format::ascii) {
        // Elements before the vertices: one line per item.
        for (std::size_t i = 0; i < vertexIndex; ++i) {
            for (std::uint64_t k = 0; k < elements[i].count; ++k) {
                if (pos >= data.size()) {
                    fail(name, "truncated in element " + elements[i].name);
                }
                ++lineNo;
                nextLine(data, pos);
            }
        }
        std::size_t const guess = std::min<std::uint64_t>(vertex.count, data.size() / 4 + 1);
        if (set.dim == 2) {
            set.p2.reserve(guess);
        } else {
            set.p3.reserve(guess);
        }
        for (std::uint64_t k = 0; k < vertex.count; ++k) {
            if (pos >= data.size()) {
                fail(name, "truncated: " + std::to_string(vertex.count) + " vertices declared, " +
                               std::to_string(k) + " found");
            }
            ++lineNo;
            if (progress && (k & 0xFFFF) == 0) {
                progress(pos, total);
            }
            std::string_view const line = nextLine(data, pos);
            std::size_t i = 0;
            double xyz[3] = {0, 0, 0};
            auto nextField = [&]() -> std::string_view {
                while (i < line.size() && isBlank(line[i])) {
                    ++i;
                }
                std::size_t j = i;
                while (j < line.size() && !isBlank(line[j])) {
                    ++j;
                }
                std::string_view const f = line.substr(i, j - i);
                i = j;
                if (f.empty()) {
                    failAt(name, lineNo, "vertex " + std::to_string(k) + " has too few values");
                }
                return f;
            };
            for (std::size_t pi = 0; pi < vertex.props.size(); ++pi) {
                PlyProperty const& p = vertex.props[pi];
                if (p.isList) {
                    std::string_view const c = nextField();
                    std::uint64_t n = 0;
                    auto const r = std::from_chars(c.data(), c.data() + c.size(), n);
                    if (r.ec != std::errc() || r.ptr != c.data() + c.size()) {
                        failAt(name, lineNo, "list count " + quoted(c) + " is not a count");
                    }
                    for (std::uint64_t m = 0; m < n; ++m) {
                        nextField();
                    }
                    continue;
                }
                std::string_view const f = nextField();
                int const slot = int(pi) == ix ? 0 : int(pi) == iy ? 1 : int(pi) == iz ? 2 : -1;
                if (slot < 0) {
                    continue;
                }
                char const* next = nullptr;
                NumStatus const st = parseNumber(f.data(), f.data() + f.size(), xyz[slot], next);
                if (st != NumStatus::ok || next != f.data() + f.size()) {
                    failAt(name, lineNo,
                           quoted(f) + (st == NumStatus::notFinite ? " is not a finite number"
                                                                   : " is not a number"));
                }
            }
            store(xyz[0], xyz[1], xyz[2], k, std::to_string(lineNo) + ": ");
        }
    } else {
        // Binary: fixed-size records; elements with lists cannot be skipped before the vertices.
        for (std::size_t i = 0; i < vertexIndex; ++i) {
            PlyElement const& e = elements[i];
            if (e.hasList) {
                fail(name, "cannot skip element " + e.name +
                               " with list properties before the vertices of a binary PLY");
            }
            std::uint64_t const rest = data.size() - pos;
            if (e.stride != 0 && e.count > rest / e.stride) {
                fail(name, "truncated in element " + e.name);
            }
            pos += std::size_t(e.count * e.stride);
        }
        if (vertex.hasList) {
            fail(name, "list properties in the vertex element of a binary PLY are not supported");
        }
        std::uint64_t const rest = data.size() - pos;
        std::uint64_t const complete = vertex.stride == 0 ? 0 : rest / vertex.stride;
        if (vertex.count > complete) {
            fail(name, "truncated: " + std::to_string(vertex.count) + " vertices declared, " +
                           std::to_string(complete) + " complete (vertex " +
                           std::to_string(complete) + " at byte " +
                           std::to_string(pos + complete * vertex.stride) + " is cut off)");
        }
        if (set.dim == 2) {
            set.p2.reserve(vertex.count);
        } else {
            set.p3.reserve(vertex.count);
        }
        PlyProperty const* px = &vertex.props[std::size_t(ix)];
        PlyProperty const* py = &vertex.props[std::size_t(iy)];
        PlyProperty const* pz = iz >= 0 ? &vertex.props[std::size_t(iz)] : nullptr;
        auto load = [](PlyProperty const* p, char const* rec) -> double {
            return p->type == PlyType::float32 ? double(loadLittle<float>(rec + p->offset))
                                               : loadLittle<double>(rec + p->offset);
        };
        for (std::uint64_t k = 0; k < vertex.count; ++k) {
            std::size_t const at = pos + std::size_t(k * vertex.stride);
            if (progress && (k & 0xFFFF) == 0) {
                progress(at, total);
            }
            char const* rec = data.data() + at;
            store(load(px, rec), load(py, rec), pz ? load(pz, rec) : 0.0, k,
                  "byte " + std::to_string(at) + ": ");
        }
    }
    if (progress) {
        progress(total, total);
    }
    if (set.size() == 0) {
        fail(name, "no points");
    }
    return set;
}

bool looksLikePly(std::string_view data) {
    return data.size() >= 4 && data.substr(0, 3) == "ply" &&
           (data[3] == '\n' || (data[3] == '\r' && data.size() >= 5 && data[4] == '\n'));
}

}  // namespace

// --- FileBuffer ------------------------------------------------------------------------------

FileBuffer::FileBuffer(std::string const& path) {
    int fd = 0;
    std::string const name = path == "-" ? "standard input" : path;
    if (path != "-") {
        fd = ::open(path.c_str(), O_RDONLY);
        if (fd < 0) {
            throw ReadError(name + ": cannot open: " + std::strerror(errno));
        }
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        int const err = errno;
        if (fd != 0) {
            ::close(fd);
        }
        throw ReadError(name + ": cannot read: " + std::strerror(err));
    }
    if (S_ISDIR(st.st_mode)) {
        if (fd != 0) {
            ::close(fd);
        }
        throw ReadError(name + ": is a directory");
    }
    if (S_ISREG(st.st_mode) && st.st_size > 0) {
        void* p = ::mmap(nullptr, std::size_t(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (p != MAP_FAILED) {
            ::madvise(p, std::size_t(st.st_size), MADV_SEQUENTIAL);
            m_data = static_cast<char const*>(p);
            m_size = std::size_t(st.st_size);
            m_mapped = true;
            if (fd != 0) {
                ::close(fd);
            }
            return;
        }
    }
    // Pipes, terminals, empty or unmappable files: read in blocks.
    char block[1 << 16];
    for (;;) {
        ssize_t const got = ::read(fd, block, sizeof block);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            int const err = errno;
            if (fd != 0) {
                ::close(fd);
            }
            throw ReadError(name + ": cannot read: " + std::strerror(err));
        }
        if (got == 0) {
            break;
        }
        m_owned.append(block, std::size_t(got));
    }
    if (fd != 0) {
        ::close(fd);
    }
    m_data = m_owned.data();
    m_size = m_owned.size();
}

FileBuffer::~FileBuffer() {
    if (m_mapped) {
        ::munmap(const_cast<char*>(m_data), m_size);
    }
}

// --- Public readers --------------------------------------------------------------------------

template <typename T>
PointSet<T> parsePoints(std::string_view data, std::string const& name,
                        ProgressFn const& progress) {
    if (looksLikePly(data)) {
        return parsePly<T>(data, name, progress);
    }
    return parseText<T>(data, name, progress);
}

template <typename T>
PointSet<T> readPoints(std::string const& path, bool showProgress) {
    FileBuffer const buf(path);
    std::string const name = path == "-" ? "standard input" : path;
    ProgressFn progress;
    if (showProgress) {
        progress = makeProgressBar(name, buf.view().size());
    }
    return parsePoints<T>(buf.view(), name, progress);
}

template <typename T>
std::vector<std::vector<math::Cpoint2<T>>> parsePolygons(std::string_view data,
                                                         std::string const& name) {
    std::vector<std::vector<math::Cpoint2<T>>> polys(1);
    auto onRow = [&](Fields const& f, std::uint64_t line) {
        if (f.count != 2) {
            failAt(name, line,
                   "expected 2 numbers per polygon vertex, found " + std::to_string(f.count));
        }
        polys.back().emplace_back(checkedValue<T>(f.v[0], name, line),
                                  checkedValue<T>(f.v[1], name, line));
    };
    auto onBlank = [&]() {
        if (!polys.back().empty()) {
            polys.emplace_back();
        }
    };
    scanText(data, name, ProgressFn{}, onRow, onBlank);
    if (polys.back().empty()) {
        polys.pop_back();
    }
    if (polys.empty()) {
        fail(name, "no polygons");
    }
    return polys;
}

template <typename T>
std::vector<std::vector<math::Cpoint2<T>>> readPolygons(std::string const& path) {
    FileBuffer const buf(path);
    return parsePolygons<T>(buf.view(), path == "-" ? "standard input" : path);
}

// --- Progress bar ----------------------------------------------------------------------------

ProgressFn makeProgressBar(std::string const& label, std::uint64_t total, std::uint64_t minBytes) {
    if (total < minBytes || !::isatty(STDERR_FILENO)) {
        return {};
    }
    auto lastPercent = std::make_shared<int>(-1);
    return [label, lastPercent](std::uint64_t done, std::uint64_t all) {
        int const percent = all == 0 ? 100 : int(double(done) * 100.0 / double(all));
        if (percent == *lastPercent) {
            return;
        }
        *lastPercent = percent;
        if (percent >= 100) {
            std::fprintf(stderr, "\r\033[K");
            std::fflush(stderr);
            return;
        }
        constexpr int kWidth = 40;
        char bar[kWidth + 1];
        int const filled = percent * kWidth / 100;
        for (int i = 0; i < kWidth; ++i) {
            bar[i] = i < filled ? '#' : '.';
        }
        bar[kWidth] = '\0';
        std::fprintf(stderr, "\rreading %s [%s] %3d %%", label.c_str(), bar, percent);
        std::fflush(stderr);
    };
}

#define MGEO_APP_READERS(T)                                                                       \
    template PointSet<T> parsePoints<T>(std::string_view, std::string const&, ProgressFn const&); \
    template PointSet<T> readPoints<T>(std::string const&, bool);                                 \
    template std::vector<std::vector<math::Cpoint2<T>>> parsePolygons<T>(std::string_view,        \
                                                                         std::string const&);     \
    template std::vector<std::vector<math::Cpoint2<T>>> readPolygons<T>(std::string const&);
MGEO_APP_READERS(float)
MGEO_APP_READERS(double)
#undef MGEO_APP_READERS

}  // namespace mgeo_app
