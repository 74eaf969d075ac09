// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"
#include "host/Vector.h"

namespace trovik {

/// The deformation that an ElasticGrab stroke applies around its press point.
enum class ElasticMode : int {
    /// The press point is displaced.
    Grab = 0,
    /// The surroundings rotate about an axis through the press point.
    Twist = 1,
    /// The surroundings expand or shrink.
    Scale = 2,
    /// The surroundings are stretched along an axis and pinched towards it.
    Pinch = 3
};

/// Settings of the elastic material.
struct ElasticMaterial {
    /// 0 to 0.5. At 0.5 the material is incompressible: Grab, Twist and Pinch preserve volume.
    float poissonRatio = 0.5f;
    /// Number of superposed scales, 1 to 3. With more scales, the displacement decays faster with
    /// the distance r: for Grab as 1/r, 1/r^3 and 1/r^5.
    int scales = 3;
};

/// The displacement of an infinite elastic medium under a load that is spread over a ball; see F.
/// de Goes and D. L. James, "Regularized Kelvinlets: Sculpting Brushes based on Fundamental
/// Solutions of Elasticity", ACM Transactions on Graphics 36(4), 2017. The regularization radius
/// epsilon is the brush radius; the superposed scales have epsilon, 1.1 epsilon and 1.21 epsilon
/// (sections 4 and 5 of the paper).
///
/// With r the vector from the press point, r_e = sqrt(r r + e e), a = 1 and b = a / (4 (1 - nu)),
/// the displacement is
///
///     Grab     A f + B (r . f) r     A = (a - b) / r_e + a e^2 / (2 r_e^3)      B = b / r_e^3
///     Twist    A (q x r)             A = 1 / r_e^3 + 3 e^2 / (2 r_e^5)
///     Scale    A s r                 A as for Twist
///     Pinch    A F r + B (r . F r) r A = (2 b - a) / r_e^3 - 3 a e^2 / (2 r_e^5)
///                                    B = -3 b / r_e^5
///
/// where A and B are divided by A(0). Then f is the displacement of the press point, and q, s and F
/// are the rotation vector, the growth and the strain there. Finite twists use the rotation of the
/// Cayley transform instead of q x r, to which it is equal to first order. It rotates each sphere
/// around the press point rigidly, so it preserves volume for any angle. F stretches along an axis
/// n by p and shrinks the plane perpendicular to it by p / 2: F r = p (3/2 (n . r) n - 1/2 r).
///
/// The coefficients are evaluated in double precision, because the scales almost cancel each other,
/// and rounded to single precision; displacements are evaluated in single precision, from left to
/// right.
class TROVIK_API Kelvinlet {
public:
    static constexpr int maxScales = 3;
    static constexpr float maxPoissonRatio = 0.5f;

    /// \param radius  above 0.
    Kelvinlet(ElasticMode deformation, float radius, const ElasticMaterial& material);

    /// A and B at one point.
    struct Coefficients {
        float direct = 0.0f;
        float radial = 0.0f;
    };
    Coefficients At(const Vector& arm) const;

    /// The load of a stroke.
    struct Load {
        /// Grab: the displacement of the press point. Otherwise the unit axis.
        Vector vector;
        /// Twist: the angle in radians, to first order. Scale, Pinch: the growth along the axis.
        float amount = 0.0f;
    };
    /// Returns the displacement of a point.
    /// \param arm  the vector from the press point to the point. \param at  the coefficients there.
    Vector Displacement(const Vector& arm, const Coefficients& at, const Load& load) const;
    /// Returns an upper limit of the displacement at a point, as a fraction of the largest one.
    float RelativeSize(const Vector& arm, const Coefficients& at) const;

private:
    /// Unnormalised A and B of one scale.
    struct Pair {
        double direct;
        double radial;
    };
    Pair OfScale(double epsilon, double squaredDistance) const;
    Pair Sum(double squaredDistance) const;

    ElasticMode mode;
    double ratio;
    int count;
    double epsilons[maxScales];
    double weights[maxScales];
    double factor = 1.0;
};

}  // namespace trovik
