#pragma once

#include <functional>

#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "tests/support/chi_square.h"

// Statistical checks of a sampler against the density the library claims
// for it: a chi-square test over a binned disk, hemisphere or sphere, and
// the density's integral by quadrature.
//
// Bins sit in coordinates where the measure is constant: on the disk
// (angle / 2pi, r^2), on the sphere and hemisphere (angle / 2pi, cos theta),
// all in a local frame (for example about a lobe's axis). Expected counts
// come from an adaptive Gauss-Legendre quadrature of the density over each
// cell, in (angle, r) or (angle, theta) so that the poles and the centre
// carry no singular Jacobian; it splits a cell along the axis that gains
// most, so sharp lobes and the rims of clipped supports are resolved.

// Independent uniform inputs, never a low-discrepancy set: a fixed-seed
// Mersenne Twister through unit_from_u32, both ends of [0, 1] reachable.
struct UniformSquare {
  GRandomMt mt;
  explicit UniformSquare(unsigned seed) : mt(seed) {}
  double next() { return unit_from_u32(mt.genrand_int32()); }
  GMathVec2<double> operator()() {
    double const u = next();
    return GMathVec2<double>(u, next());
  }
};

enum class DensityDomain {
  disk,        // the unit disk in the frame's z = 0 plane; density per unit area
  hemisphere,  // unit directions with frame z >= 0; density per unit solid angle
  sphere,      // unit directions; density per unit solid angle
};

// Orthonormal frame whose z axis is the domain's pole (or the disk's normal).
struct DensityFrame {
  GMathVec3<double> x{1, 0, 0};
  GMathVec3<double> y{0, 1, 0};
  GMathVec3<double> z{0, 0, 1};
};

// Writes the sample of `uv` into `out`; false when it writes none (a
// discarded ray).
using DensitySampler = std::function<bool(GMathVec2<double> const& uv, GMathVec3<double>& out)>;
// Density at a world point of the domain, in the domain's measure.
using Density = std::function<double(GMathVec3<double> const& point)>;

struct DensityTestOptions {
  DensityFrame frame;
  int angle_bins = 51;    // odd, so that no edge sits on a symmetry line
  int height_bins = 101;  // r^2 or cos theta
  int samples = 1000000;
  unsigned seed = 1;
  double alpha = 0.01;  // the suite's Sidak-corrected level, chi_square_alpha(m)
};

// Draws `samples` fixed-seed Mersenne Twister points of the unit square,
// bins what the sampler makes of them and compares with the density. A
// sample off the domain by more than 1e-4 fails. Samples the sampler
// declines fill one more cell, which expects samples x (1 - integral of the
// density): a clipped sampler is tested against its unclipped density
// times the indicator of what it keeps. The integral must not exceed
// 1 + 1e-3, and must reach 1 - 1e-3 when nothing is declined.
ChiSquareResult chi_square_density(DensityDomain domain, DensitySampler const& sampler,
                                   Density const& density, DensityTestOptions const& options = {});

// Integral of the density over the domain by the same quadrature.
double integrate_density(DensityDomain domain, Density const& density,
                         DensityFrame const& frame = {});
