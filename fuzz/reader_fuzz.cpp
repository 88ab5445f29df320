// The mgeo tool's point readers: text and PLY (ASCII and binary) point files and polygon
// files, parsed from the raw input bytes as double and as float. Every problem must surface
// as ReadError; any other exception, crash or sanitizer report is a finding.
#include <point_reader.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const bytes(reinterpret_cast<char const*>(data), size);
    try {
        (void)mgeo_app::parsePoints<double>(bytes, "fuzz");
    } catch (mgeo_app::ReadError const&) {
    }
    try {
        (void)mgeo_app::parsePoints<float>(bytes, "fuzz");
    } catch (mgeo_app::ReadError const&) {
    }
    try {
        (void)mgeo_app::parsePolygons<double>(bytes, "fuzz");
    } catch (mgeo_app::ReadError const&) {
    }
    return 0;
}
