#pragma once

#include <tavrin/function/Function.hpp>

#include <memory>

namespace tavrin::app::examples
{

using Field = std::shared_ptr<const FunctionBase>;

/// The velocity of the time-dependent double gyre, psi = A sin(pi f) sin(pi y) with
/// f = x + e sin(w t) (x^2 - 2 x), A = 0.1, e = 0.25, w = 2 pi / 10, on 101 x 51 points of
/// [0, 2] x [0, 1] at 21 times of one period, 0 ... 10.
///
/// S. C. Shadden, F. Lekien, J. E. Marsden (2005): Definition and properties of Lagrangian coherent
/// structures from finite-time Lyapunov exponents in two-dimensional aperiodic flows. Physica D
/// 212, 271-304.
Field makeDoubleGyre();

/// The velocity of the Arnold-Beltrami-Childress flow, which is its own curl, with A = sqrt 3,
/// B = sqrt 2, C = 1, on 33^3 points of [0, 2 pi]^3.
///
/// T. Dombre, U. Frisch, J. M. Greene, M. Henon, A. Mehr, A. M. Soward (1986): Chaotic streamlines
/// in the ABC flows. Journal of Fluid Mechanics 167, 353-391.
Field makeAbcFlow();

/// The stress (3 x 3, plane stress) in a wide plate with a round hole of radius 1 that is pulled
/// along x with unit stress at infinity, on 33 points from the hole to the edge of a square of width
/// 10 times 129 points around the hole, the last of which coincide with the first.
///
/// G. Kirsch (1898): Die Theorie der Elastizitaet und die Beduerfnisse der Festigkeitslehre.
/// Zeitschrift des Vereines deutscher Ingenieure 42, 797-807.
Field makePlateWithHole();

/// The velocity of Hill's spherical vortex of radius 1 in a stream of unit speed along x, in the
/// frame in which it is at rest, on 12000 tetrahedra that fill a cylinder of radius 1.6 around the
/// x axis, from -2 to 2.
///
/// M. J. M. Hill (1894): On a spherical vortex. Philosophical Transactions of the Royal Society of
/// London A 185, 213-245.
Field makeSphericalVortex();

/// The displacement of a bar of elliptic cross-section, half axes 1 along y and 0.5 along z, from
/// x = 0 to 4, twisted by 0.25 per unit of length: a quadratic field on 2160 quadratic tetrahedra
/// with curved edges. The cross-sections warp.
///
/// A. J. C. Barre de Saint-Venant (1855): De la torsion des prismes. Memoires presentes par divers
/// savants a l'Academie des Sciences 14, 233-560.
Field makeTwistedBar();

/// A grid for sampling the double gyre: 21 x 13 points of [0.5, 1.5] x [0.2, 0.8]. The values are
/// the indices of the points.
Field makeProbe();

/// A grid for sampling the spherical vortex: 39 x 29 points of the plane y = 0 with x in [-1.9, 1.9]
/// and z in [-1.4, 1.4]. The values are the indices of the points.
Field makeProbe3d();

}
