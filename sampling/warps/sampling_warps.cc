// Disk, hemisphere and sphere warps of Sampling, and the index shuffle.

#include <cmath>

#include "sampling/checks.h"
#include "sampling/sampling.h"
#include "sampling/warps/concentric_map.h"
#include "sampling/warps/polar_warp.h"
#include "sampling/warps/shuffle_index.h"

namespace {

// Height above the disk of a hemisphere direction with projected radius rho.
inline double lift(double const& rho) {
  return std::sqrt(1.0 - rho * rho);
}

}  // namespace

// The callers' contract of the warps: samples in [0,1]^2 and radius scales in
// [0,1]; nothing is clamped, so a breach gives radii above 1 or square roots
// of negative numbers far from where it happened. sphere_uniform keeps the
// formulas' own result outside the square, which the uniform-sphere ray
// generator passes on by design, and checks nothing.
#define SAMPLING_CHECK_WARP_SAMPLE(operation)                  \
  SAMPLING_CHECK(u >= 0.0 && u <= 1.0 && v >= 0.0 && v <= 1.0, \
                 operation ": sample (u, v) outside [0,1]^2")
#define SAMPLING_CHECK_RADIUS_SCALE(operation)               \
  SAMPLING_CHECK(radius_scale >= 0.0 && radius_scale <= 1.0, \
                 operation ": radius_scale outside [0,1]")

// The map itself lives in concentric_map.h, inline, so that the ray
// generators' sample loops evaluate the very same arithmetic without a call.
void Sampling::to_unit_disk(double const& u, double const& v, double& radius, double& angle) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::to_unit_disk");
  concentric_map(u, v, radius, angle);
}

void Sampling::disk_concentric(double const& u, double const& v, GMathVec3<double>& point) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::disk_concentric");
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  polar_point(angle, radius, 0.0, point);
}

void Sampling::disk_concentric(double const& u, double const& v, GMathVec3<double>& point,
                               GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::disk_concentric");
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const c = std::cos(angle);
  double const s = std::sin(angle);
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

void Sampling::hemisphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                                  double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_uniform");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_uniform");
  double const rho = std::sin(u * k_sampling_half_pi) * radius_scale;
  polar_point(k_sampling_two_pi * v, rho, lift(rho), direction);
}

void Sampling::hemisphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                                  GMathVec3<double>& tangent, GMathVec3<double>& bitangent,
                                  double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_uniform");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_uniform");
  double const rho = std::sin(u * k_sampling_half_pi) * radius_scale;
  polar_frame(k_sampling_two_pi * v, rho, lift(rho), direction, tangent, bitangent);
}

void Sampling::hemisphere_uniform_concentric(double const& u, double const& v,
                                             GMathVec3<double>& direction,
                                             double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_uniform_concentric");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_uniform_concentric");
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = std::sin(radius * k_sampling_half_pi) * radius_scale;
  polar_point(angle, rho, lift(rho), direction);
}

void Sampling::hemisphere_uniform_concentric(double const& u, double const& v,
                                             GMathVec3<double>& direction,
                                             GMathVec3<double>& tangent,
                                             GMathVec3<double>& bitangent,
                                             double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_uniform_concentric");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_uniform_concentric");
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = std::sin(radius * k_sampling_half_pi) * radius_scale;
  polar_frame(angle, rho, lift(rho), direction, tangent, bitangent);
}

void Sampling::hemisphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                                 double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_cosine");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_cosine");
  double const rho = u * radius_scale;
  polar_point(k_sampling_two_pi * v, rho, lift(rho), direction);
}

void Sampling::hemisphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                                 GMathVec3<double>& tangent, GMathVec3<double>& bitangent,
                                 double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_cosine");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_cosine");
  double const rho = u * radius_scale;
  polar_frame(k_sampling_two_pi * v, rho, lift(rho), direction, tangent, bitangent);
}

void Sampling::hemisphere_cosine_concentric(double const& u, double const& v,
                                            GMathVec3<double>& direction,
                                            double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_cosine_concentric");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_cosine_concentric");
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = radius * radius_scale;
  polar_point(angle, rho, lift(rho), direction);
}

void Sampling::hemisphere_cosine_concentric(double const& u, double const& v,
                                            GMathVec3<double>& direction,
                                            GMathVec3<double>& tangent,
                                            GMathVec3<double>& bitangent,
                                            double const& radius_scale) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::hemisphere_cosine_concentric");
  SAMPLING_CHECK_RADIUS_SCALE("Sampling::hemisphere_cosine_concentric");
  double radius, angle;
  to_unit_disk(u, v, radius, angle);
  double const rho = radius * radius_scale;
  polar_frame(angle, rho, lift(rho), direction, tangent, bitangent);
}

void Sampling::sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction) {
  double const z = 1.0 - u * 2.0;
  polar_point(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction);
}

void Sampling::sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                              GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  sphere_uniform_frame(u, v, direction, tangent, bitangent);
}

void Sampling::sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::sphere_cosine");
  double const z = std::sin(k_sampling_half_pi - u * k_sampling_pi);
  polar_point(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction);
}

void Sampling::sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                             GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::sphere_cosine");
  double const z = std::sin(k_sampling_half_pi - u * k_sampling_pi);
  polar_frame(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction, tangent, bitangent);
}

// The body lives in shuffle_index.h, inline, for the sample loops.
unsigned int Sampling::shuffle_index(unsigned int const& index, unsigned int const& count) {
  return shuffled_index(index, count);
}
