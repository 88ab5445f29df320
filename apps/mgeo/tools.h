// The `hull`, `mask` and `transform2` commands. Each returns the process exit status: 0 done,
// 1 bad input, 2 the computation gave no result.
#pragma once

#include <string>

namespace mgeo_app {

struct CommonOptions {
    bool single = false;  // --float
    bool json = false;    // --json
};

int runHull(std::string const& file, CommonOptions const& opt);
int runMask(std::string const& file, long long width, long long height, std::string const& out,
            CommonOptions const& opt);
int runTransform2(std::string const& src, std::string const& dst, bool affine,
                  CommonOptions const& opt);

}  // namespace mgeo_app
