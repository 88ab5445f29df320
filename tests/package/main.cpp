// Includes the umbrella header, throws and catches a library exception, multiplies matrices.
#include <math/all.h>

#include <cstdio>
#include <string>

int main() {
    try {
        math::CthrowMath err(math::CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
        err << 2 << 5;
        throw err;
    } catch (math::CthrowMath const& e) {
        if (e.id() != math::CthrowMath::ERR_MATRIX_DIMS || e.message().find("(m:2,n:5)") == std::string::npos) {
            std::puts("package consumer: wrong exception");
            return 1;
        }
    }
    math::Cmatrix<double> a(2, 2, 1.0);
    math::Cmatrix<double> p = a * a;
    if (p(1, 1) != 2.0) {
        std::puts("package consumer: wrong product");
        return 1;
    }
    std::puts("package consumer: ok");
    return 0;
}
