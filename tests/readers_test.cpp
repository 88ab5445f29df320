// Point readers of the mgeo tool: text delimiters, comments and headers, PLY in ASCII and
// binary, and the rejection of malformed, truncated and non-finite input with file and line.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "point_reader.h"
#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using mgeo_app::parsePoints;
using mgeo_app::parsePolygons;
using mgeo_app::ReadError;

template <typename T>
class Readers : public ::testing::Test {};
TYPED_TEST_SUITE(Readers, mgeo_test::RealTypes);

// The ReadError message of fn, or "no error".
std::string errorOf(std::function<void()> const& fn) {
    try {
        fn();
    } catch (ReadError const& e) {
        return e.what();
    }
    return "no error";
}

template <typename T>
std::string textError(std::string const& text) {
    return errorOf([&] { parsePoints<T>(text, "in.txt"); });
}

// A binary little-endian PLY with the given header body and packed records.
std::string plyBinary(std::string const& properties, std::uint64_t count,
                      std::string const& records, std::string const& before = "") {
    return "ply\nformat binary_little_endian 1.0\ncomment test\n" + before + "element vertex " +
           std::to_string(count) + "\n" + properties + "end_header\n" + records;
}

template <typename V>
void append(std::string& s, V v) {
    char b[sizeof(V)];
    std::memcpy(b, &v, sizeof(V));
    s.append(b, sizeof(V));
}

TYPED_TEST(Readers, TextDelimitersCommentsAndHeader) {
    using T = TypeParam;
    std::string const text =
        "# measured edge points\n"
        "x_px, y_px\n"
        "1.5 2.5\n"
        "\t3,4   # trailing comment\n"
        "5 ;6\n"
        "  7 , 8 ,\n"
        "\n"
        "+9e0\t-1.25E+1\r\n"
        "# the end\n";
    auto const s = parsePoints<T>(text, "in.txt");
    ASSERT_EQ(s.dim, 2);
    std::vector<math::Cpoint2<T>> const expect = {
        {T(1.5), T(2.5)}, {T(3), T(4)}, {T(5), T(6)}, {T(7), T(8)}, {T(9), T(-12.5)}};
    EXPECT_EQ(s.p2, expect);
}

TYPED_TEST(Readers, ByteOrderMarkIsSkipped) {
    using T = TypeParam;
    auto const s = parsePoints<T>(
        "\xEF\xBB\xBF"
        "1 2\n3 4\n",
        "in.txt");
    ASSERT_EQ(s.p2.size(), 2u);
    EXPECT_EQ(s.p2[0], math::Cpoint2<T>(T(1), T(2)));
}

TYPED_TEST(Readers, ThreeColumnsAndLastLineWithoutNewline) {
    using T = TypeParam;
    auto const s = parsePoints<T>("1 2 3\n4;5;6", "in.txt");
    ASSERT_EQ(s.dim, 3);
    ASSERT_EQ(s.p3.size(), 2u);
    EXPECT_EQ(s.p3[1], math::Cpoint3<T>(T(4), T(5), T(6)));
}

TYPED_TEST(Readers, ValuesAgreeWithStrtodOnRandomNumbers) {
    using T = TypeParam;
    mgeo_test::Noise rnd(7);
    std::string text;
    std::vector<double> values;
    char buf[64];
    for (int i = 0; i < 3000; ++i) {
        double const v = rnd(1.0) * std::pow(10.0, double(int(rnd(12.0))));
        std::snprintf(buf, sizeof buf, i % 2 ? "%.17g" : "%.6e", v);
        values.push_back(std::strtod(buf, nullptr));
        text += buf;
        text += i % 3 == 2 ? "\n" : " ";
    }
    auto const s = parsePoints<T>(text, "in.txt");
    ASSERT_EQ(s.p3.size(), 1000u);
    for (std::size_t i = 0; i < 3000; ++i) {
        EXPECT_EQ(s.p3[i / 3][i % 3], T(values[i])) << i;
    }
}

// Malformed, non-finite, out-of-range and empty input: the message names file and line.
TYPED_TEST(Readers, TextErrorsNameFileAndLine) {
    using T = TypeParam;
    std::pair<std::string, std::string> const cases[] = {
        {"1 2\n3 x\n", "in.txt:2: 'x' is not a number"},
        {"1 2\n3 4 5\n", "in.txt:2: expected 2 numbers as on the first data line, found 3"},
        {"1\n", "in.txt:1: expected 2 or 3 numbers, found 1"},
        {"1 2 3 4\n", "in.txt:1: more than 3 numbers"},
        {"1 2\n1.5abc 2\n", "in.txt:2: '1.5abc' is not a number"},
        {"1,,2\n", "in.txt:1: empty field between two delimiters"},
        {"1 2\n,3 4\n", "in.txt:2: empty field before ','"},
        {"1 2\n3 4\x00\n", "no error"},  // the NUL ends the string here
        {std::string("1 2\n3 4\0\n", 9), "in.txt:2: binary data in a text file"},
        // Only the first content line may be a header; one starting with a number is data.
        {"x y\n1 2\nx y\n", "in.txt:3: 'x' is not a number"},
        {"1 y\n", "in.txt:1: 'y' is not a number"},
        {"1 2\n3 nan\n", "in.txt:2: 'nan' is not a finite number"},
        {"1 2\n-inf 4\n", "in.txt:2: '-inf' is not a finite number"},
        {"1 2\n3 infinity\n", "in.txt:2: 'infinity' is not a finite number"},
        {"1 1e999\n", "in.txt:1: '1e999' is out of range"},
        {"", "in.txt: no points"},
        {"# nothing\n\n   \n", "in.txt: no points"},
        {"x y z\n", "in.txt: no points"}};
    for (auto const& [text, message] : cases) {
        EXPECT_EQ(textError<T>(text), message) << text;
    }
    std::string const big = textError<T>("1 1e39\n");
    if (std::is_same_v<T, float>) {
        EXPECT_NE(big.find("in.txt:1: "), std::string::npos) << big;
        EXPECT_NE(big.find("out of range for single precision"), std::string::npos) << big;
    } else {
        EXPECT_EQ(big, "no error");
    }
}

TYPED_TEST(Readers, AsciiPlySkipsOtherPropertiesAndElements) {
    using T = TypeParam;
    std::string const ply =
        "ply\r\nformat ascii 1.0\r\ncomment made by hand\r\n"
        "element camera 1\r\nproperty float fov\r\n"
        "element vertex 3\r\nproperty uchar red\r\nproperty double x\r\nproperty list uchar int "
        "idx\r\nproperty float y\r\nproperty float z\r\n"
        "element face 1\r\nproperty list uchar int vertex_indices\r\nend_header\r\n"
        "60.5\r\n"
        "255 1.5 2 7 8 2.5 3.5\r\n"
        "0 -1 0 4 5\r\n"
        "9 1e3 1 0 -2 -3\r\n"
        "3 0 1 2\r\n";
    auto const s = parsePoints<T>(ply, "a.ply");
    ASSERT_EQ(s.dim, 3);
    ASSERT_EQ(s.p3.size(), 3u);
    EXPECT_EQ(s.p3[0], math::Cpoint3<T>(T(1.5), T(2.5), T(3.5)));
    EXPECT_EQ(s.p3[1], math::Cpoint3<T>(T(-1), T(4), T(5)));
    EXPECT_EQ(s.p3[2], math::Cpoint3<T>(T(1000), T(-2), T(-3)));
}

TYPED_TEST(Readers, AsciiPlyErrorsNameTheLine) {
    using T = TypeParam;
    std::string const head =
        "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
        "property float z\nend_header\n";
    auto const err = [](std::string const& data) {
        return errorOf([&] { parsePoints<T>(data, "a.ply"); });
    };
    EXPECT_EQ(err(head + "1 2 3\n4 5\n"), "a.ply:9: vertex 1 has too few values");
    EXPECT_EQ(err(head + "1 2 3\n4 nan 6\n"), "a.ply:9: 'nan' is not a finite number");
    EXPECT_EQ(err(head + "1 2 3\n"), "a.ply: truncated: 2 vertices declared, 1 found");
    // A huge declared count is no reason to allocate: the data runs out first.
    EXPECT_EQ(err("ply\nformat ascii 1.0\nelement vertex 99999999999999\nproperty float x\n"
                  "property float y\nend_header\n1 2\n"),
              "a.ply: truncated: 99999999999999 vertices declared, 1 found");
}

TYPED_TEST(Readers, BinaryPlyFloatAndDoubleWithIgnoredProperties) {
    using T = TypeParam;
    std::string rec;
    mgeo_test::Noise rnd(3);
    std::vector<double> xs, ys, zs;
    for (int i = 0; i < 100; ++i) {
        xs.push_back(rnd(100.0));
        ys.push_back(rnd(100.0));
        zs.push_back(rnd(100.0));
        append(rec, std::uint8_t(i));
        append(rec, float(xs.back()));
        append(rec, std::int16_t(-i));
        append(rec, double(ys.back()));
        append(rec, float(zs.back()));
        append(rec, std::uint32_t(7));
    }
    std::string const before = "element header_info 2\nproperty int a\nproperty double b\n";
    std::string skipped;
    for (int k = 0; k < 2; ++k) {
        append(skipped, std::int32_t(k));
        append(skipped, double(k));
    }
    std::string const ply = plyBinary(
        "property uchar i\nproperty float x\nproperty short s\nproperty double y\n"
        "property float32 z\nproperty uint w\n",
        100, skipped + rec, before);
    auto const s = parsePoints<T>(ply, "b.ply");
    ASSERT_EQ(s.dim, 3);
    ASSERT_EQ(s.p3.size(), 100u);
    for (std::size_t i = 0; i < 100; ++i) {
        EXPECT_EQ(s.p3[i].x, T(float(xs[i])));
        EXPECT_EQ(s.p3[i].y, T(ys[i]));
        EXPECT_EQ(s.p3[i].z, T(float(zs[i])));
    }
}

TYPED_TEST(Readers, BinaryPlyWithoutZGivesPlanePoints) {
    using T = TypeParam;
    std::string rec;
    append(rec, 1.0);
    append(rec, 2.0);
    auto const s =
        parsePoints<T>(plyBinary("property double x\nproperty double y\n", 1, rec), "b.ply");
    ASSERT_EQ(s.dim, 2);
    EXPECT_EQ(s.p2[0], math::Cpoint2<T>(T(1), T(2)));
}

TYPED_TEST(Readers, BinaryPlyDefectsAreRejected) {
    using T = TypeParam;
    std::string const xyz = "property float x\nproperty float y\nproperty float z\n";
    std::string rec;
    for (int i = 0; i < 15; ++i) {
        append(rec, float(i / 3));
    }
    auto err = [](std::string const& data) {
        return errorOf([&] { parsePoints<T>(data, "b.ply"); });
    };
    std::size_t const header = plyBinary(xyz, 5, "").size();
    EXPECT_EQ(err(plyBinary(xyz, 5, rec.substr(0, rec.size() - 1))),
              "b.ply: truncated: 5 vertices declared, 4 complete (vertex 4 at byte " +
                  std::to_string(header + 4 * 12) + " is cut off)");
    EXPECT_EQ(err(plyBinary(xyz, 0xFFFFFFFFFFFFFFFFull, rec)).substr(0, 16), "b.ply: truncated");
    std::string nanRec = rec;
    float const nan = std::nanf("");
    std::memcpy(&nanRec[12 * 3 + 4], &nan, 4);
    EXPECT_EQ(err(plyBinary(xyz, 5, nanRec)),
              "b.ply: byte " + std::to_string(header + 3 * 12) +
                  ": vertex 3 has a coordinate that is not finite" +
                  (std::is_same_v<T, float> ? " in single precision" : ""));
    EXPECT_EQ(
        err("ply\nformat binary_big_endian 1.0\nelement vertex 1\n" + xyz + "end_header\n" + rec),
        "b.ply:2: binary big-endian PLY is not supported");
    EXPECT_EQ(err("ply\nformat binary_little_endian 1.0\nelement vertex 5\n" + xyz),
              "b.ply: PLY header without end_header");
    EXPECT_EQ(err(plyBinary("property int x\nproperty float y\n", 1, rec)),
              "b.ply: vertex property x must be float or double");
    EXPECT_EQ(err(plyBinary("property float x\nproperty float z\n", 1, rec)),
              "b.ply: vertex element without x and y properties");
    EXPECT_EQ(err(plyBinary("property list uchar int i\n" + xyz, 1, rec)),
              "b.ply: list properties in the vertex element of a binary PLY are not supported");
    EXPECT_EQ(err(plyBinary(xyz, 2, rec, "element face 1\nproperty list uchar int i\n")),
              "b.ply: cannot skip element face with list properties before the vertices of a "
              "binary PLY");
    EXPECT_EQ(err("ply\nformat binary_little_endian 1.0\nelement face 1\nproperty float q\n"
                  "end_header\n"),
              "b.ply: PLY file without a vertex element");
    EXPECT_EQ(err(plyBinary("property float x\nproperty blob y\n", 1, rec)),
              "b.ply:6: unknown property type 'blob'");
    EXPECT_EQ(err(plyBinary(xyz, 0, "")), "b.ply: no points");
}

TYPED_TEST(Readers, PolygonsAreSeparatedByBlankLines) {
    using T = TypeParam;
    std::string const text =
        "# two polygons\n\n0 0\n4 0\n# a comment does not separate\n4 4\n\n\n  \n1 1\n2 1\n2 2\n";
    auto const polys = parsePolygons<T>(text, "p.txt");
    ASSERT_EQ(polys.size(), 2u);
    EXPECT_EQ(polys[0].size(), 3u);
    EXPECT_EQ(polys[1].size(), 3u);
    EXPECT_EQ(polys[1][2], math::Cpoint2<T>(T(2), T(2)));
    EXPECT_EQ(errorOf([&] { parsePolygons<T>("0 0 0\n", "p.txt"); }),
              "p.txt:1: expected 2 numbers per polygon vertex, found 3");
    EXPECT_EQ(errorOf([&] { parsePolygons<T>("\n\n", "p.txt"); }), "p.txt: no polygons");
}

TYPED_TEST(Readers, FilesAreReadAndMissingFilesReported) {
    using T = TypeParam;
    std::string const path = ::testing::TempDir() + "mgeo_readers_test.txt";
    {
        std::ofstream f(path);
        f << "x y z\n1 2 3\n4 5 6\n";
    }
    auto const s = mgeo_app::readPoints<T>(path);
    EXPECT_EQ(s.p3.size(), 2u);
    std::remove(path.c_str());
    std::string const err = errorOf([&] { mgeo_app::readPoints<T>(path); });
    EXPECT_EQ(err.rfind(path + ": cannot open: ", 0), 0u) << err;
    std::string const dir = errorOf([&] { mgeo_app::readPoints<T>(::testing::TempDir()); });
    EXPECT_NE(dir.find("is a directory"), std::string::npos) << dir;
}

// Random byte changes, insertions and cuts of valid inputs: every result is either a point set
// of the declared dimension with finite coordinates or a ReadError, never a crash or a hang
// (the sanitizer build runs this too).
TYPED_TEST(Readers, MutatedInputsParseOrThrowReadError) {
    using T = TypeParam;
    std::string rec;
    for (int i = 0; i < 20; ++i) {
        append(rec, float(i));
        append(rec, double(-i));
        append(rec, float(2 * i));
    }
    std::vector<std::string> const seeds = {
        "x,y\n1 2\n3;4\n# c\n5\t6\n\n7 8\n",
        "1 2 3\n4 5 6\n7 8 9\n",
        "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
        "property list uchar int l\nproperty float z\nend_header\n1 2 2 5 6 3\n4 5 0 6\n",
        plyBinary("property float x\nproperty double y\nproperty float z\n", 20, rec),
    };
    mgeo_test::Noise rnd(11);
    char const alphabet[] = "0123456789 .,;#\n\t-+eE\rnaxyzply\xff";
    for (std::string const& seed : seeds) {
        for (int trial = 0; trial < 400; ++trial) {
            std::string s = seed;
            int const edits = 1 + int(rnd.unit() * 4);
            for (int e = 0; e < edits && !s.empty(); ++e) {
                std::size_t const at = std::size_t(rnd.unit() * double(s.size()));
                char const c = alphabet[std::size_t(rnd.unit() * (sizeof alphabet - 1))];
                switch (int(rnd.unit() * 3)) {
                    case 0:
                        s[at] = c;
                        break;
                    case 1:
                        s.insert(at, 1, c);
                        break;
                    default:
                        s.resize(at);
                        break;
                }
            }
            try {
                auto const set = parsePoints<T>(s, "m");
                ASSERT_TRUE(set.dim == 2 || set.dim == 3);
                ASSERT_GT(set.size(), 0u);
                for (auto const& p : set.p2) ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
                for (auto const& p : set.p3) {
                    ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z));
                }
            } catch (ReadError const& e) {
                ASSERT_EQ(std::string(e.what()).rfind("m:", 0), 0u) << e.what();
            }
        }
    }
}

}  // namespace
