// A small tour of the library: directions, matrices and its error reporting.
#include <math/all.h>

#include <iostream>

int main() {
    math::Cdirec2<double> d(math::Cpoint2<double>(3, 4));
    std::cout << "direction of (3, 4): " << d << ", turned: " << d.perp() << '\n';

    math::Cmatrix<double> a(2, 3);
    a.setIdentity();
    math::Cmatrix<double> p = a * a.transp();
    std::cout << "A A^T = [" << p(0, 0) << ' ' << p(0, 1) << "; " << p(1, 0) << ' ' << p(1, 1)
              << "]\n";

    try {
        math::CthrowMath err(math::CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
        err << int(a.m()) << int(a.n());
        throw err;
    } catch (CthrowBase const& e) {
        std::cout << "caught error " << e.id() << ": " << e.what() << '\n';
    }
    return 0;
}
