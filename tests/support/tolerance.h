// Tolerance helpers shared by the unit tests.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <sstream>
#include <string>

#include <math/exceptions.h>

namespace mgeo_test {

using RealTypes = ::testing::Types<float, double>;

// n machine epsilons of T.
template <typename T>
T ulpTol(double n) {
    return static_cast<T>(n * static_cast<double>(std::numeric_limits<T>::epsilon()));
}

// |a - b| <= tol, reported with both values.
template <typename T>
::testing::AssertionResult nearAbs(T a, T b, double tol) {
    double const diff = std::fabs(static_cast<double>(a) - static_cast<double>(b));
    if (diff <= tol) {
        return ::testing::AssertionSuccess();
    }
    std::ostringstream os;
    os.precision(17);
    os << a << " and " << b << " differ by " << diff << " > " << tol;
    return ::testing::AssertionFailure() << os.str();
}

// |a - b| <= tol * max(|a|, |b|, 1).
template <typename T>
::testing::AssertionResult nearRel(T a, T b, double tol) {
    double const scale = std::fmax(1.0, std::fmax(std::fabs(double(a)), std::fabs(double(b))));
    return nearAbs(a, b, tol * scale);
}

// The shape reports itself invalid.
template <typename Shape>
::testing::AssertionResult expectInvalid(Shape const& shape) {
    if (!shape.isValid()) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "shape is valid";
}

// fn throws an E whose id is `id`.
template <typename E>
::testing::AssertionResult expectThrowId(std::function<void()> const& fn, int id) {
    try {
        fn();
    } catch (E const& e) {
        if (e.id() == id) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "threw id " << e.id() << ", expected " << id;
    } catch (...) {
        return ::testing::AssertionFailure() << "threw another exception type";
    }
    return ::testing::AssertionFailure() << "did not throw";
}

}  // namespace mgeo_test
