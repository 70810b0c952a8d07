#include "pelk/shading_math/transforms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace Tarnkit {
namespace {

class TransformsTest : public testing::Test {
protected:
    Vector vector() { return {even(random), even(random), even(random)}; }

    std::mt19937 random{11};
    std::uniform_real_distribution<float> even{-1.0f, 1.0f};
};

void expectNear(const Vector& a, const Vector& b, float tolerance) {
    EXPECT_LE(length(a - b), tolerance)
        << a.x << " " << a.y << " " << a.z << " and " << b.x << " " << b.y << " " << b.z;
}

void expectNear(const Matrix& a, const Matrix& b, float tolerance) {
    for (int i = 0; i < 3; ++i)
        expectNear(a.columns[i], b.columns[i], tolerance);
}

TEST_F(TransformsTest, PlaneCoordinatesAreOfTheNearestPoint) {
    for (int i = 0; i < 1000; ++i) {
        const Vector a = vector(), b = vector(), c = vector();
        if (length(cross(a, b)) < 0.1f)
            continue;
        const auto [s, t] = solvePlaneCoordinates(a, b, c);
        const Vector rest = c - (s * a + t * b);
        EXPECT_NEAR(dot(rest, a), 0.0f, 1e-4f);
        EXPECT_NEAR(dot(rest, b), 0.0f, 1e-4f);
    }
    const auto parallel = solvePlaneCoordinates({1, 2, 3}, {-2, -4, -6}, {1, 0, 0});
    EXPECT_EQ(parallel.s, 0.0f);
    EXPECT_EQ(parallel.t, 0.0f);
}

TEST_F(TransformsTest, EdgesAndTheirNormalsAreMapped) {
    for (float scale : {1e-6f, 1.0f, 1e6f}) {
        for (int i = 0; i < 300; ++i) {
            const Vector a = vector() * scale, b = vector() * scale, c = vector(), d = vector();
            if (length(cross(a, b)) < 0.1f * scale * scale || length(cross(c, d)) < 0.1f)
                continue;
            Matrix m;
            ASSERT_TRUE(mapEdges(a, b, c, d, m));
            expectNear(m * a, c, 1e-4f);
            expectNear(m * b, d, 1e-4f);
            const float from = std::sqrt((dot(a, a) + dot(b, b)) / 2);
            const float to = std::sqrt((dot(c, c) + dot(d, d)) / 2);
            expectNear(m * (cross(a, b) * (1 / from)), cross(c, d) * (1 / to), 1e-4f);
            Matrix byCorners;
            const Vector p{1, 2, 3}, q{0.5f, 0, -1};
            if (scale == 1.0f && mapTriangle(p, p + a, p + b, q, q + c, q + d, byCorners))
                expectNear(byCorners, m, 1e-3f);
        }
    }
}

TEST_F(TransformsTest, DegenerateEdgesAreRefused) {
    const Vector x{1, 0, 0}, y{0, 1, 0}, none;
    const std::pair<Vector, Vector> cases[] = {
        {{0.1f, 0.2f, 0.3f}, {-0.2f, -0.4f, -0.6f}}, {x, none}, {none, none}, {x, {1, 9e-4f, 0}}};
    const Matrix before{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}};
    Matrix m = before;
    for (const auto& [a, b] : cases) {
        EXPECT_FALSE(mapEdges(a, b, x, y, m)) << a.x << b.y;
        EXPECT_FALSE(mapEdges(x, y, a, b, m)) << a.x << b.y;
    }
    EXPECT_EQ(m, before);
    EXPECT_TRUE(mapEdges(x, {1, 1.2e-3f, 0}, x, y, m)) << "just beyond the bound";
}

TEST_F(TransformsTest, ComposingWhatWasDecomposedGivesTheMatrixBack) {
    for (int i = 0; i < 1000; ++i) {
        const Matrix m{{vector(), vector(), vector()}};
        const float determinant = dot(m.columns[0], cross(m.columns[1], m.columns[2]));
        if (std::fabs(determinant) < 0.05f)
            continue;
        Vector rotation, scale, shear;
        decomposeMatrix(m, rotation, scale, shear);
        expectNear(composeMatrix(rotation, scale, shear), m, 1e-4f);
        for (float s : {scale.x, scale.y, scale.z})
            EXPECT_EQ(s < 0.0f, determinant < 0.0f);
        // With scales of one sign, this is what leaves one answer only.
        EXPECT_LE(std::fabs(rotation.y), std::numbers::pi_v<float> / 2);
    }
}

TEST_F(TransformsTest, DecompositionIsExactAtItsEnds) {
    const Vector none, one{1, 1, 1};
    EXPECT_EQ(composeMatrix(none, one, none), Matrix());
    Vector rotation, scale, shear;
    decomposeMatrix({{{1, 5e-7f, -5e-7f}, {0, 1, 0}, {5e-7f, 0, 1.0000005f}}}, rotation, scale,
                    shear);
    EXPECT_EQ(rotation, none) << "rounding errors removed";
    EXPECT_EQ(scale, one);
    EXPECT_EQ(shear, none);
    decomposeMatrix({{{-1, 0, 0}, {0, -1, 0}, {0, 0, -1}}}, rotation, scale, shear);
    EXPECT_EQ(rotation, none) << "a point reflection is all scale";
    EXPECT_EQ(scale, -one);
    // At a quarter turn about y, x and z turn about the same axis.
    const Matrix locked =
        composeMatrix({0.5f, std::numbers::pi_v<float> / 2, 0.3f}, {1, 2, 3}, none);
    decomposeMatrix(locked, rotation, scale, shear);
    EXPECT_EQ(rotation.z, 0.0f);
    expectNear(composeMatrix(rotation, scale, shear), locked, 1e-5f);
}

TEST_F(TransformsTest, EyesStandApartAndLookAtTheFocus) {
    Transform t;
    t.axisX = {0, 0, -1}, t.axisY = {0, 1, 0}, t.axisZ = {1, 0, 0}, t.offset = {10, 20, 30};
    constexpr float kEye = 0.5f, kFocus = 4.0f;
    const float k = kFocus / std::sqrt(kEye * kEye + kFocus * kFocus);
    const Vector point = t.offset - t.axisZ * kFocus;
    for (int mode : {0, 1, 2}) {
        Transform left, right = t;
        stereoLeft(t, kEye, mode, kFocus, left);
        stereoRight(right, kEye, mode, kFocus, right);  // in place
        expectNear(left.offset, t.offset - t.axisX * kEye, 1e-5f);
        expectNear(right.offset, t.offset + t.axisX * kEye, 1e-5f);
        const float shrunk = mode == 0 ? 1 : k;
        for (const Transform& eye : {left, right}) {
            SCOPED_TRACE(mode);
            const Vector seen = mode == 0 ? point + (eye.offset - t.offset) : point;
            expectNear(eye.offset - eye.axisZ * (kFocus / shrunk), seen, 1e-5f);
            expectNear(eye.axisY, t.axisY * shrunk, 1e-6f);
            const Vector square = cross(eye.axisY, eye.axisZ);
            expectNear(eye.axisX, mode == 1 ? square : t.axisX * shrunk, 1e-6f);
        }
    }
}

}  // namespace
}  // namespace Tarnkit
