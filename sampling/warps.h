#pragma once

// Inline warps: the bodies of Sampling's disk, hemisphere and sphere warps,
// each beside its density and its inverse, for callers that evaluate them
// in their own sample loops without a call per sample. Sampling's static
// warps call these very functions, so both give the same bits; Sampling's
// checked builds add the caller-contract checks, which these leave out.
//
// Every warp computes an azimuth phi, a projected radius rho and a height z
// and writes (cos(phi) rho, sin(phi) rho, z). Its angles use the library's
// truncated pi (sampling/angles.h), written pi_L below.
//
// Densities are those of the maps as computed, for (u, v) uniform on
// [0,1]^2: per unit area for the disk, per unit solid angle (steradian) for
// the hemisphere and the sphere; zero outside a warp's support. They read
// only z and rho, no trigonometry. The azimuths 2pi_L v, and the concentric
// angles in (-pi_L/4, 7pi_L/4], cover a turn of 2pi_L, 1.6e-12 rad short of
// a full one: the densities hold 1 / (2pi_L) per radian of azimuth where
// the maps reach, and carry that value over the missed sliver too (finding
// it would take an atan2 per call for a set of relative measure 2.5e-13),
// so they integrate to 2pi / 2pi_L = 1 + 2.5e-13 over the whole support.
//
// Inverses map a point of the support back into [0,1]^2 (clamped there, so
// rounding never leaves the square), such that the warp of the result is
// the point again to rounding. Azimuths come from atan2 and are wrapped
// into the map's angle range. Where the map is not one-to-one, the inverse
// picks one preimage: at a pole or the disk's centre (azimuth undefined)
// the one of atan2(y, x), azimuth 0 for (0, 0).
//
// Callers pass unit directions to the hemisphere and sphere densities and
// inverses, samples in [0,1]^2 and radius scales in [0,1] to the warps.

#include <algorithm>
#include <cmath>

#include "platform/math/gmath_vec3.h"
#include "sampling/angles.h"

namespace sampling {
namespace warps {
namespace detail {

// 2pi to double precision, the period of atan2, sin and cos: the inverses
// wrap atan2's angles with it before scaling them by the library's angles.
constexpr double k_full_turn = 0x1.921fb54442d18p+2;
// sin(pi_L/2 - u pi_L) = cos(u pi_L + k_pi_shortfall): half of what pi_L
// lacks of pi, the polar angle sphere_cosine starts from.
constexpr double k_pi_shortfall = 0.5 * (0.5 * k_full_turn - k_sampling_pi);
constexpr double k_inv_pi = 1.0 / k_sampling_pi;
constexpr double k_inv_two_pi = 1.0 / k_sampling_two_pi;
constexpr double k_inv_half_pi = 1.0 / k_sampling_half_pi;
constexpr double k_inv_quarter_pi = 1.0 / k_sampling_quarter_pi;

// The cosine and sine of one angle (one sincos call where the compiler
// fuses them; the bits of cos and sin either way). Each result is then held
// in a register of its own: otherwise GCC's straight-line vectoriser reloads
// the call's two 8-byte results as one 16-byte load, which the processor
// cannot forward from the two 8-byte stores and waits on, about 3 ns per
// warp. The empty asm statement emits nothing and changes no bit.
inline void cos_sin(double const& angle, double& c, double& s) {
  double cosine = std::cos(angle);
  double sine = std::sin(angle);
#if defined(__GNUC__) && defined(__SSE2__)
  asm("" : "+x"(cosine), "+x"(sine));
#endif
  c = cosine;
  s = sine;
}

// Writes (cos(phi) rho, sin(phi) rho, z).
inline void polar_point(double const& phi, double const& rho, double const& z,
                        GMathVec3<double>& out) {
  double c, s;
  cos_sin(phi, c, s);
  out.x = c * rho;
  out.y = s * rho;
  out.z = z;
}

// The same, plus tangent (increasing azimuth) and bitangent (towards +z).
inline void polar_frame(double const& phi, double const& rho, double const& z,
                        GMathVec3<double>& out, GMathVec3<double>& tangent,
                        GMathVec3<double>& bitangent) {
  double c, s;
  cos_sin(phi, c, s);
  out.x = c * rho;
  out.y = s * rho;
  out.z = z;
  tangent.x = -s;
  tangent.y = c;
  tangent.z = 0.0;
  bitangent.x = -z * c;
  bitangent.y = -z * s;
  bitangent.z = rho;
}

// Height above the disk of a hemisphere direction with projected radius rho.
inline double lift(double const& rho) {
  return std::sqrt(1.0 - rho * rho);
}

inline double unit_clamp(double const& x) {
  return std::min(std::max(x, 0.0), 1.0);
}

// Distance of a point from the z axis.
inline double projected_radius(GMathVec3<double> const& d) {
  return std::sqrt(d.x * d.x + d.y * d.y);
}

// Fraction of the library's turn 2pi_L at the azimuth of (x, y), which
// atan2 gives in (-pi, pi]; 0 at the axis.
inline double turn_of(GMathVec3<double> const& d) {
  double const phi = std::atan2(d.y, d.x);
  return unit_clamp((phi < 0.0 ? phi + k_full_turn : phi) * k_inv_two_pi);
}

// True for a direction of the cone z >= sqrt(1 - s^2) that the hemisphere
// warps with radius scale s reach; a rounding's slack keeps their own rim
// directions inside.
inline bool in_cone(GMathVec3<double> const& d, double const& rho, double const& s) {
  return d.z >= 0.0 && rho <= s + s * 0x1p-50;
}

// s cos(t) = sqrt(s^2 - rho^2) for rho = s sin(t) and a unit direction.
// Nearer the horizon than the pole it is taken as sqrt(z^2 - (1 - s^2)):
// there z keeps the digits that rho = sqrt(1 - z^2) loses, which decide
// the rim of a cone with s near 1.
inline double cone_cosine(GMathVec3<double> const& d, double const& rho, double const& s) {
  double const q = d.z < rho ? d.z * d.z - (1.0 - s) * (1.0 + s) : (s - rho) * (s + rho);
  return std::sqrt(std::max(q, 0.0));
}

// The angle t in [0, pi/2] of rho = s sin(t); for s = 1, the polar angle.
inline double sine_angle(GMathVec3<double> const& d, double const& rho, double const& s) {
  return std::atan2(rho, cone_cosine(d, rho, s));
}

// z / sqrt(s^2 - rho^2): turns a density in t of rho = s sin(t) into one per
// solid angle. 1 for s = 1 (where z = sqrt(1 - rho^2) itself, horizon
// included); without bound at the rim of a narrower cone.
inline double rim_factor(GMathVec3<double> const& d, double const& rho, double const& s) {
  if (s == 1.0)
    return 1.0;
  double const c = cone_cosine(d, rho, s);
  return c > 0.0 ? d.z / c : HUGE_VAL;
}

}  // namespace detail

// ---- Concentric square-to-disk map ----------------------------------------

// Concentric (Shirley-Chiu) map in polar form: (u, v) in [0,1]^2 to radius
// in [0, 1] and angle in (-pi_L/4, 7pi_L/4]; uniform over the disk's area.
// The centre gives radius -0.0 and angle 0. The strict and non-strict
// comparisons decide which sector owns each diagonal; the guards only
// matter at the exact centre. Trig-free.
inline void to_unit_disk(double const& u, double const& v, double& radius, double& angle) {
  double const a = u * 2.0 - 1.0;
  double const b = v * 2.0 - 1.0;
  if (a > -b) {
    if (a > b) {
      radius = a;
      angle = (b / a) * k_sampling_quarter_pi;
    } else {
      radius = b;
      angle = (2.0 - a / b) * k_sampling_quarter_pi;
    }
  } else {
    if (a >= b) {
      radius = -b;
      angle = (-b > 0.0) ? (a / (-b) + 6.0) * k_sampling_quarter_pi : 0.0;
    } else {
      radius = -a;
      angle = (-a > 0.0) ? (4.0 - b / (-a)) * k_sampling_quarter_pi : 0.0;
    }
  }
}

// Inverse of to_unit_disk: polar (radius, angle) with radius in [0, 1] and
// angle in [-pi, 2pi) of the true pi (what atan2 gives, a full turn from 0,
// or the map's own range) to (u, v) in [0,1]^2. Angles are wrapped by a true turn into
// [-pi_L/4, 2pi - pi_L/4); the sliver past 7pi_L/4 that the map misses goes
// to the nearest edge. Radius 0 gives the centre (0.5, 0.5).
inline void to_unit_disk_inverse(double const& radius, double const& angle, double& u, double& v) {
  double t = angle;
  if (t < -k_sampling_quarter_pi)
    t += detail::k_full_turn;
  else if (t >= detail::k_full_turn - k_sampling_quarter_pi)
    t -= detail::k_full_turn;
  double const s = t * detail::k_inv_quarter_pi;  // in sectors of pi_L/4: [-1, 7]
  double a, b;
  if (s < 1.0) {  // right: angle = (b / a) pi_L/4
    a = radius;
    b = radius * s;
  } else if (s < 3.0) {  // top: angle = (2 - a / b) pi_L/4
    b = radius;
    a = radius * (2.0 - s);
  } else if (s < 5.0) {  // left: angle = (4 - b / -a) pi_L/4
    a = -radius;
    b = radius * (4.0 - s);
  } else {  // bottom: angle = (a / -b + 6) pi_L/4
    b = -radius;
    a = radius * (s - 6.0);
  }
  u = detail::unit_clamp((a + 1.0) * 0.5);
  v = detail::unit_clamp((b + 1.0) * 0.5);
}

// ---- Disk -----------------------------------------------------------------

// Point of the unit disk in the z = 0 plane: the concentric map made
// Cartesian. Uniform per unit area.
inline void disk_concentric(double const& u, double const& v, GMathVec3<double>& point) {
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  detail::polar_point(angle, radius, 0.0, point);
}

// ... with tangent = radial direction and bitangent = direction of
// increasing angle; tangent x bitangent = +z.
inline void disk_concentric(double const& u, double const& v, GMathVec3<double>& point,
                            GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double c, s;
  detail::cos_sin(angle, c, s);
  point.x = c * radius;
  point.y = s * radius;
  point.z = 0.0;
  tangent.x = c;
  tangent.y = s;
  tangent.z = 0.0;
  bitangent.x = -s;
  bitangent.y = c;
  bitangent.z = 0.0;
}

// Density of disk_concentric per unit area of the disk: 1 / pi_L, the map
// sweeping the area pi_L (its angles span 2pi_L) at a constant Jacobian.
inline double disk_concentric_pdf() {
  return detail::k_inv_pi;
}

// Inverse of disk_concentric for a point of the unit disk (z ignored).
inline void disk_concentric_inverse(GMathVec3<double> const& point, double& u, double& v) {
  to_unit_disk_inverse(detail::projected_radius(point), std::atan2(point.y, point.x), u, v);
}

// ---- Hemisphere about +z --------------------------------------------------
//
// s is radius_scale in [0, 1]: it scales rho before z = sqrt(1 - rho^2) is
// taken, so directions stay in the cone z >= sqrt(1 - s^2), whose half-angle
// has sine s; the densities are zero outside it and below the horizon.
// With s = 0 every sample goes to the pole, a point mass: the densities
// are then infinite there and the inverses give rho / s as 0.

// Polar angle t = u pi_L/2 (linear in u, not uniform per solid angle),
// rho = sin(t) s, azimuth 2pi_L v.
inline void hemisphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                               double const& radius_scale) {
  double const rho = std::sin(u * k_sampling_half_pi) * radius_scale;
  detail::polar_point(k_sampling_two_pi * v, rho, detail::lift(rho), direction);
}
inline void hemisphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                               GMathVec3<double>& tangent, GMathVec3<double>& bitangent,
                               double const& radius_scale) {
  double const rho = std::sin(u * k_sampling_half_pi) * radius_scale;
  detail::polar_frame(k_sampling_two_pi * v, rho, detail::lift(rho), direction, tangent, bitangent);
}

// Density of hemisphere_uniform per unit solid angle:
// z / (pi_L^2 rho sqrt(s^2 - rho^2)) in the cone, which is 1 / (pi_L^2 rho)
// for s = 1 (t uniform with density 2 / pi_L, rho = s sin(t), azimuth
// 1 / (2pi_L), and dA = z dw from disk to hemisphere). Infinite, but
// integrable, at the pole and at the rim of a cone with s < 1.
inline double hemisphere_uniform_pdf(GMathVec3<double> const& direction,
                                     double const& radius_scale) {
  double const rho = detail::projected_radius(direction);
  if (!detail::in_cone(direction, rho, radius_scale))
    return 0.0;
  return detail::rim_factor(direction, rho, radius_scale) * (detail::k_inv_pi * detail::k_inv_pi) /
         rho;
}

// Inverse of hemisphere_uniform: u = asin(rho / s) 2 / pi_L, v = azimuth / 2pi_L.
inline void hemisphere_uniform_inverse(GMathVec3<double> const& direction,
                                       double const& radius_scale, double& u, double& v) {
  double const rho = detail::projected_radius(direction);
  u = detail::unit_clamp(detail::sine_angle(direction, rho, radius_scale) * detail::k_inv_half_pi);
  v = detail::turn_of(direction);
}

// As hemisphere_uniform, with the radius of the concentric map in place of u
// (t = radius pi_L/2) and its angle as the azimuth.
inline void hemisphere_uniform_concentric(double const& u, double const& v,
                                          GMathVec3<double>& direction,
                                          double const& radius_scale) {
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = std::sin(radius * k_sampling_half_pi) * radius_scale;
  detail::polar_point(angle, rho, detail::lift(rho), direction);
}
inline void hemisphere_uniform_concentric(double const& u, double const& v,
                                          GMathVec3<double>& direction, GMathVec3<double>& tangent,
                                          GMathVec3<double>& bitangent,
                                          double const& radius_scale) {
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = std::sin(radius * k_sampling_half_pi) * radius_scale;
  detail::polar_frame(angle, rho, detail::lift(rho), direction, tangent, bitangent);
}

// Density of hemisphere_uniform_concentric per unit solid angle:
// 4 t z / (pi_L^3 rho sqrt(s^2 - rho^2)) with t = asin(rho / s) in the cone
// ((radius, angle) has density radius / pi_L per unit radius and radian,
// t = radius pi_L/2 gives 4 t / pi_L^3, then rho = s sin(t) and dA = z dw),
// so 4 theta / (pi_L^3 sin(theta)) for s = 1; 4 / (pi_L^3 s^2) at the pole,
// infinite at the rim of a cone with s < 1.
inline double hemisphere_uniform_concentric_pdf(GMathVec3<double> const& direction,
                                                double const& radius_scale) {
  double const rho = detail::projected_radius(direction);
  if (!detail::in_cone(direction, rho, radius_scale))
    return 0.0;
  double const t_over_rho =
      rho > 0.0 ? detail::sine_angle(direction, rho, radius_scale) / rho : 1.0 / radius_scale;
  return 4.0 * detail::k_inv_pi * detail::k_inv_pi * detail::k_inv_pi * t_over_rho *
         detail::rim_factor(direction, rho, radius_scale);
}

// Inverse of hemisphere_uniform_concentric: the concentric map's inverse at
// radius asin(rho / s) 2 / pi_L and the direction's azimuth.
inline void hemisphere_uniform_concentric_inverse(GMathVec3<double> const& direction,
                                                  double const& radius_scale, double& u,
                                                  double& v) {
  double const rho = detail::projected_radius(direction);
  to_unit_disk_inverse(detail::sine_angle(direction, rho, radius_scale) * detail::k_inv_half_pi,
                       std::atan2(direction.y, direction.x), u, v);
}

// Direction lifted from the polar disk point (u s, 2pi_L v), which is not
// area-uniform on the disk.
inline void hemisphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                              double const& radius_scale) {
  double const rho = u * radius_scale;
  detail::polar_point(k_sampling_two_pi * v, rho, detail::lift(rho), direction);
}
inline void hemisphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                              GMathVec3<double>& tangent, GMathVec3<double>& bitangent,
                              double const& radius_scale) {
  double const rho = u * radius_scale;
  detail::polar_frame(k_sampling_two_pi * v, rho, detail::lift(rho), direction, tangent, bitangent);
}

// Density of hemisphere_cosine per unit solid angle: z / (2pi_L s rho) in
// the cone (rho uniform on [0, s], so 1 / (2pi_L s rho) per unit disk area,
// times z = dA / dw). Infinite, but integrable, at the pole.
inline double hemisphere_cosine_pdf(GMathVec3<double> const& direction,
                                    double const& radius_scale) {
  double const rho = detail::projected_radius(direction);
  if (!detail::in_cone(direction, rho, radius_scale))
    return 0.0;
  return direction.z * detail::k_inv_two_pi / (radius_scale * rho);
}

// Inverse of hemisphere_cosine: u = rho / s, v = azimuth / 2pi_L.
inline void hemisphere_cosine_inverse(GMathVec3<double> const& direction,
                                      double const& radius_scale, double& u, double& v) {
  double const rho = detail::projected_radius(direction);
  u = radius_scale > 0.0 ? detail::unit_clamp(rho / radius_scale) : 0.0;
  v = detail::turn_of(direction);
}

// Cosine-weighted direction (Malley): the concentric disk point, scaled by
// s, lifted to the hemisphere.
inline void hemisphere_cosine_concentric(double const& u, double const& v,
                                         GMathVec3<double>& direction, double const& radius_scale) {
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = radius * radius_scale;
  detail::polar_point(angle, rho, detail::lift(rho), direction);
}
inline void hemisphere_cosine_concentric(double const& u, double const& v,
                                         GMathVec3<double>& direction, GMathVec3<double>& tangent,
                                         GMathVec3<double>& bitangent, double const& radius_scale) {
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = radius * radius_scale;
  detail::polar_frame(angle, rho, detail::lift(rho), direction, tangent, bitangent);
}

// Density of hemisphere_cosine_concentric per unit solid angle:
// z / (pi_L s^2) in the cone (the disk point is uniform over the area
// pi_L s^2, and dA = z dw); cos(theta) / pi_L for s = 1.
inline double hemisphere_cosine_concentric_pdf(GMathVec3<double> const& direction,
                                               double const& radius_scale) {
  double const rho = detail::projected_radius(direction);
  if (!detail::in_cone(direction, rho, radius_scale))
    return 0.0;
  return direction.z * detail::k_inv_pi / (radius_scale * radius_scale);
}

// Inverse of hemisphere_cosine_concentric: the concentric map's inverse at
// radius rho / s and the direction's azimuth.
inline void hemisphere_cosine_concentric_inverse(GMathVec3<double> const& direction,
                                                 double const& radius_scale, double& u, double& v) {
  double const rho = detail::projected_radius(direction);
  to_unit_disk_inverse(radius_scale > 0.0 ? std::min(rho / radius_scale, 1.0) : 0.0,
                       std::atan2(direction.y, direction.x), u, v);
}

// ---- Sphere ---------------------------------------------------------------

// Uniform direction on the unit sphere: z = 1 - 2u (from +1 at u = 0 to -1
// at u = 1), azimuth 2pi_L v.
inline void sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction) {
  double const z = 1.0 - u * 2.0;
  detail::polar_point(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction);
}
inline void sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                           GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  double const z = 1.0 - u * 2.0;
  detail::polar_frame(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction, tangent,
                      bitangent);
}

// Density of sphere_uniform per unit solid angle: 1 / (4pi_L) everywhere
// (z uniform on [-1, 1], azimuth uniform on 2pi_L). The direction is not read.
inline double sphere_uniform_pdf(GMathVec3<double> const& /*direction*/) {
  return 0.25 * detail::k_inv_pi;
}

// Inverse of sphere_uniform: u = (1 - z) / 2, v = azimuth / 2pi_L.
inline void sphere_uniform_inverse(GMathVec3<double> const& direction, double& u, double& v) {
  u = detail::unit_clamp((1.0 - direction.z) * 0.5);
  v = detail::turn_of(direction);
}

// Direction on the unit sphere with z = sin(pi_L/2 - u pi_L): polar angle
// u pi_L + (pi - pi_L)/2, linear in u; azimuth 2pi_L v.
inline void sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction) {
  double const z = std::sin(k_sampling_half_pi - u * k_sampling_pi);
  detail::polar_point(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction);
}
inline void sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                          GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  double const z = std::sin(k_sampling_half_pi - u * k_sampling_pi);
  detail::polar_frame(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction, tangent,
                      bitangent);
}

// Density of sphere_cosine per unit solid angle: 1 / (2pi_L^2 sin(theta)),
// with sin(theta) = rho (polar angle uniform with density 1 / pi_L).
// Infinite, but integrable, at both poles.
inline double sphere_cosine_pdf(GMathVec3<double> const& direction) {
  return 0.5 * detail::k_inv_pi * detail::k_inv_pi / detail::projected_radius(direction);
}

// Inverse of sphere_cosine: u = (theta - (pi - pi_L)/2) / pi_L with theta
// from atan2, v = azimuth / 2pi_L.
inline void sphere_cosine_inverse(GMathVec3<double> const& direction, double& u, double& v) {
  double const theta = std::atan2(detail::projected_radius(direction), direction.z);
  u = detail::unit_clamp((theta - detail::k_pi_shortfall) * detail::k_inv_pi);
  v = detail::turn_of(direction);
}

}  // namespace warps
}  // namespace sampling
