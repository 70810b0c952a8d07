#include "pelk/shading_math/transforms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "fake_host/dice.h"

using namespace Tarnkit;

namespace {

class TransformsTest : public testing::Test, protected Dice {};

void expectNear(const Vector& a, const Vector& b, float tolerance) {
    EXPECT_LE(length(a - b), tolerance)
        << a.x << " " << a.y << " " << a.z << " and " << b.x << " " << b.y << " " << b.z;
}

void expectNear(const Matrix& a, const Matrix& b, float tolerance) {
    for (int i = 0; i < 3; ++i)
        expectNear(a.columns[i], b.columns[i], tolerance);
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
    const Matrix before{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}};
    Matrix m = before;
    for (const Vector& b : {none, x * -2, Vector(1, 9e-4f, 0)}) {
        EXPECT_FALSE(mapEdges(x, b, x, y, m)) << b.x;
        EXPECT_FALSE(mapEdges(x, y, b, x, m)) << b.x;
    }
    EXPECT_EQ(m, before);
    EXPECT_TRUE(mapEdges(x, {1, 1.2e-3f, 0}, x, y, m)) << "just beyond the bound";
}

TEST_F(TransformsTest, ComposingWhatWasDecomposedGivesTheMatrixBack) {
    for (int i = 0; i < 1000; ++i) {
        Matrix m{{vector(), vector(), vector()}};
        if (i % 8 == 0)  // turned so that the axes of two angles are one
            m = composeMatrix({between(-1, 1), std::numbers::pi_v<float> / 2, between(-1, 1)},
                              {0.5f, 1, 2}, vector());
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
    Vector rotation, scale, shear;
    decomposeMatrix({{{-1 - 4e-7f, 4e-7f, 0}, {-5e-7f, -1, 0}, {0, 3e-7f, -1}}}, rotation, scale,
                    shear);
    EXPECT_EQ(composeMatrix(rotation, scale, shear), composeMatrix({}, {-1, -1, -1}, {}))
        << "rounding is taken off";
}

TEST_F(TransformsTest, PlaneCoordinatesLeadToTheNearestPoint) {
    for (int i = 0; i < 300; ++i) {
        const Vector a = vector(), b = vector(), c = vector();
        if (length(cross(a, b)) < 0.1f)
            continue;
        const auto [s, t] = solvePlaneCoordinates(a, b, c);
        const Vector rest = c - s * a - t * b;
        EXPECT_NEAR(dot(rest, a), 0, 1e-5f);
        EXPECT_NEAR(dot(rest, b), 0, 1e-5f);
        EXPECT_EQ(solvePlaneCoordinates(a, a * 2, c).s, 0.0f) << "parallel";
    }
}

TEST_F(TransformsTest, EyesStandApartAndLookAtTheFocus) {
    for (const int mode : {0, 1, 2}) {
        const Matrix m = composeMatrix(vector() * 3, {1, 1, 1}, {});
        const Transform t{m.columns[0], m.columns[1], m.columns[2], vector()};
        Transform eyes[2];
        stereoLeft(t, 0.5f, mode, 4, eyes[0]);
        stereoRight(t, 0.5f, mode, 4, eyes[1]);
        expectNear(eyes[0].offset + t.axisX, eyes[1].offset, 1e-6f);
        for (const Transform& eye : eyes) {
            SCOPED_TRACE(mode);
            const float far = mode ? std::hypot(0.5f, 4.0f) : 4, k = 4 / far;
            const Vector focus = mode ? t.offset - t.axisZ * 4 : eye.offset - t.axisZ * 4;
            expectNear(eye.offset - eye.axisZ * far, focus, 1e-5f);
            expectNear(eye.axisY, t.axisY * k, 1e-6f);
            expectNear(eye.axisX, mode == 1 ? cross(eye.axisY, eye.axisZ) : t.axisX * k, 1e-6f);
        }
    }
}

}  // namespace
