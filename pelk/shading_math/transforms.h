#pragma once

#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

// Small routines of linear algebra for texture mapping, instances and cameras. Pure functions in
// single precision: any thread, at hits too; nothing is allocated. A Matrix and the axes of a
// Transform are columns, the images of the three axes.

/// Coordinates in the plane that two vectors span; no unit, being multiples of those vectors.
struct PlaneCoordinates {
    float s = 0.0f, t = 0.0f;
};

/// The point s a + t b of the plane of `a` and `b` that lies nearest to `c`: barycentric
/// coordinates of a point in a triangle with the edges a and b, or, with the derivatives of the
/// position along u and v for a and b, how far a step `c` leads in u and v. With the determinant
/// d = (a.a)(b.b) - (a.b)^2 it solves the normal equations of least squares by Cramer's rule
/// (Golub and Van Loan, "Matrix Computations", section 5.3):
///
///     s = ((b.b)(a.c) - (a.b)(b.c)) / d,    t = ((a.a)(b.c) - (a.b)(a.c)) / d
///
/// Both are 0 if `a` and `b` are parallel or so short that |d| is below 1e-12. That bound is
/// absolute, so vectors of about a thousandth of the unit count as too short, whatever their angle.
PlaneCoordinates solvePlaneCoordinates(const Vector& a, const Vector& b, const Vector& c);

/// The linear map that carries the edges of the triangle p to those of the triangle q, as mapEdges
/// gives it. Corners are positions relative to a common origin, in scene units, or (u, v, 0): from
/// a triangle's uv set to its positions it carries tangent, bitangent and normal.
/// False, and `out` as it was, if a triangle is degenerate.
bool mapTriangle(const Vector& p0, const Vector& p1, const Vector& p2, const Vector& q0,
                 const Vector& q1, const Vector& q2, Matrix& out);

/// The linear map with out a = c, out b = d and out e = f. The third axes e of (a, b) and f of
/// (c, d), (a x b) / sqrt((a.a + b.b) / 2), stand on their edges; without them the map of a plane
/// wouldn't be determined off it. The root keeps them in the unit of the edges, so a map that
/// scales the edges scales the normal alike and a scaled instance keeps its angles.
///
/// False, and `out` as it was, if a pair is degenerate: if both the squared third axis and
/// |a x b|^2 = |(a.b)^2 - (a.a)(b.b)| are at most 1e-6 (a.a)(b.b), that is edges within a
/// thousandth of a radian of parallel, or a zero edge. The first of the two isn't relative; it lets
/// narrower triangles pass where edges are much shorter than 1. Edges of 1e-9 to 1e9 scene units.
bool mapEdges(const Vector& a, const Vector& b, const Vector& c, const Vector& d, Matrix& out);

/// The left and the right eye of a stereoscopic camera. `t`: the camera in the middle, its columns
/// the directions to the right, up and backwards, unit, and its offset the position. `eye`: the
/// distance of an eye from the middle, half the interocular distance, in scene units. `focus`: the
/// distance, above 0, at which both eyes see a point at the same place of their pictures (zero
/// parallax). `mode`:
///
///     0          parallel: the eyes look as the camera does, which puts zero parallax at infinity
///     1          toed in: each eye turns to the focus point offset - z focus; its first column
///                is second x third, so perpendicular to where the eye looks
///     any other  toed in, but the first column is x k, which keeps the camera's horizontal
///
/// k = focus / sqrt(eye^2 + focus^2), the cosine of the angle by which an eye turns. The first two
/// columns of an eye that turns have the length k, not 1: at the focus point, which is farther
/// from an eye than from the middle by 1 / k, the picture keeps its size.
void stereoLeft(const Transform& t, float eye, int mode, float focus, Transform& out);
void stereoRight(const Transform& t, float eye, int mode, float focus, Transform& out);

/// Splits a matrix into scale, shear and rotation, so that composeMatrix of the three gives it
/// back: the Gram-Schmidt process on the columns, as in Thomas, "Decomposing a Matrix into Simple
/// Transformations", Graphics Gems II, 1991. `m`: with three independent columns, or the zero
/// lengths make NaN of what is divided by them.
/// `rotation`: angles about x, y, z in radians; y lies within -pi/2 to pi/2, the others within -pi
/// to pi. Where y is +-pi/2, the axes of x and z coincide (gimbal lock) and z is 0.
/// `scale`: all above 0, or all below for a mirrored matrix, whose determinant is below 0.
/// `shear`: of y along x, of z along x, and of z along y, as multiples of the scale of the first.
/// Angles, shears and differences of a scale from 1 or -1 below 1e-6 are taken for rounding errors
/// and removed, so that a matrix without rotation is told from one with a little.
/// At y = -pi/2 exactly the angle about x comes with the sign of y = +pi/2: there, and nowhere
/// else, composing gives another matrix unless that angle is 0 or pi.
void decomposeMatrix(const Matrix& m, Vector& rotation, Vector& scale, Vector& shear);

/// The matrix whose transpose is S H X Y Z: the diagonal matrix S of the scales; the lower
/// triangular H with `shear` x, y, z at (2,1), (3,1), (3,2); and the rotations about the three
/// axes. As vectors are columns, what is mapped is turned about z last. Arguments as
/// decomposeMatrix gives them, but of any finite value; angles 0, scales 1 and shears 0 give
/// exactly the identity.
Matrix composeMatrix(const Vector& rotation, const Vector& scale, const Vector& shear);

}  // namespace Tarnkit
