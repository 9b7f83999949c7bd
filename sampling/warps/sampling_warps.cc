// Disk, hemisphere and sphere warps of Sampling, and the index shuffle.

#include <cmath>

#include "sampling/checks.h"
#include "sampling/sampling.h"
#include "sampling/warps.h"
#include "sampling/warps/shuffle_index.h"

namespace warps = sampling::warps;

// The callers' contract of the warps: samples in [0,1]^2 and radius scales in
// [0,1]; nothing is clamped, so a breach gives radii above 1 or square roots
// of negative numbers far from where it happened. sphere_uniform keeps the
// formulas' own result outside the square, which the uniform-sphere ray
// generator passes on by design, and checks nothing. The densities and
// inverses read a direction's z and projected radius as those of a unit
// vector, so a direction left unnormalised gives a wrong density quietly.
#define SAMPLING_CHECK_WARP_SAMPLE(operation)                  \
  SAMPLING_CHECK(u >= 0.0 && u <= 1.0 && v >= 0.0 && v <= 1.0, \
                 operation ": sample (u, v) outside [0,1]^2")
#define SAMPLING_CHECK_RADIUS_SCALE(operation)               \
  SAMPLING_CHECK(radius_scale >= 0.0 && radius_scale <= 1.0, \
                 operation ": radius_scale outside [0,1]")
#define SAMPLING_CHECK_UNIT_DIRECTION(operation)                                  \
  SAMPLING_CHECK(std::fabs(direction.x* direction.x + direction.y * direction.y + \
                           direction.z * direction.z - 1.0) <= 1e-6,              \
                 operation ": direction not of unit length")

// Each entry runs the inline body of sampling/warps.h, so callers of either
// get the same bits.

void Sampling::to_unit_disk(double const& u, double const& v, double& radius, double& angle) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::to_unit_disk");
  warps::to_unit_disk(u, v, radius, angle);
}

void Sampling::to_unit_disk_inverse(double const& radius, double const& angle, double& u,
                                    double& v) {
  SAMPLING_CHECK(angle >= -0.5 * warps::detail::k_full_turn && angle < warps::detail::k_full_turn,
                 "Sampling::to_unit_disk_inverse: angle outside [-pi, 2pi)");
  warps::to_unit_disk_inverse(radius, angle, u, v);
}

void Sampling::disk_concentric(double const& u, double const& v, GMathVec3<double>& point) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::disk_concentric");
  warps::disk_concentric(u, v, point);
}

void Sampling::disk_concentric(double const& u, double const& v, GMathVec3<double>& point,
                               GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::disk_concentric");
  warps::disk_concentric(u, v, point, tangent, bitangent);
}

double Sampling::disk_concentric_pdf() {
  return warps::disk_concentric_pdf();
}

void Sampling::disk_concentric_inverse(GMathVec3<double> const& point, double& u, double& v) {
  warps::disk_concentric_inverse(point, u, v);
}

// The four hemisphere warps: sample, framed sample, density and inverse, each
// checked and then handed to its inline body.
#define SAMPLING_HEMISPHERE_WARP(name)                                                          \
  void Sampling::name(double const& u, double const& v, GMathVec3<double>& direction,           \
                      double const& radius_scale) {                                             \
    SAMPLING_CHECK_WARP_SAMPLE("Sampling::" #name);                                             \
    SAMPLING_CHECK_RADIUS_SCALE("Sampling::" #name);                                            \
    warps::name(u, v, direction, radius_scale);                                                 \
  }                                                                                             \
  void Sampling::name(double const& u, double const& v, GMathVec3<double>& direction,           \
                      GMathVec3<double>& tangent, GMathVec3<double>& bitangent,                 \
                      double const& radius_scale) {                                             \
    SAMPLING_CHECK_WARP_SAMPLE("Sampling::" #name);                                             \
    SAMPLING_CHECK_RADIUS_SCALE("Sampling::" #name);                                            \
    warps::name(u, v, direction, tangent, bitangent, radius_scale);                             \
  }                                                                                             \
  double Sampling::name##_pdf(GMathVec3<double> const& direction, double const& radius_scale) { \
    SAMPLING_CHECK_UNIT_DIRECTION("Sampling::" #name "_pdf");                                   \
    SAMPLING_CHECK_RADIUS_SCALE("Sampling::" #name "_pdf");                                     \
    return warps::name##_pdf(direction, radius_scale);                                          \
  }                                                                                             \
  void Sampling::name##_inverse(GMathVec3<double> const& direction, double const& radius_scale, \
                                double& u, double& v) {                                         \
    SAMPLING_CHECK_UNIT_DIRECTION("Sampling::" #name "_inverse");                               \
    SAMPLING_CHECK_RADIUS_SCALE("Sampling::" #name "_inverse");                                 \
    warps::name##_inverse(direction, radius_scale, u, v);                                       \
  }

SAMPLING_HEMISPHERE_WARP(hemisphere_uniform)
SAMPLING_HEMISPHERE_WARP(hemisphere_uniform_concentric)
SAMPLING_HEMISPHERE_WARP(hemisphere_cosine)
SAMPLING_HEMISPHERE_WARP(hemisphere_cosine_concentric)

// The two sphere warps' density and inverse, checked and handed to their
// inline bodies.
#define SAMPLING_SPHERE_DENSITY(name)                                                       \
  double Sampling::name##_pdf(GMathVec3<double> const& direction) {                         \
    SAMPLING_CHECK_UNIT_DIRECTION("Sampling::" #name "_pdf");                               \
    return warps::name##_pdf(direction);                                                    \
  }                                                                                         \
  void Sampling::name##_inverse(GMathVec3<double> const& direction, double& u, double& v) { \
    SAMPLING_CHECK_UNIT_DIRECTION("Sampling::" #name "_inverse");                           \
    warps::name##_inverse(direction, u, v);                                                 \
  }

SAMPLING_SPHERE_DENSITY(sphere_uniform)
SAMPLING_SPHERE_DENSITY(sphere_cosine)

void Sampling::sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction) {
  warps::sphere_uniform(u, v, direction);
}

void Sampling::sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                              GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  warps::sphere_uniform(u, v, direction, tangent, bitangent);
}

void Sampling::sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::sphere_cosine");
  warps::sphere_cosine(u, v, direction);
}

void Sampling::sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                             GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  SAMPLING_CHECK_WARP_SAMPLE("Sampling::sphere_cosine");
  warps::sphere_cosine(u, v, direction, tangent, bitangent);
}

// The body lives in shuffle_index.h, inline, for the sample loops.
unsigned int Sampling::shuffle_index(unsigned int const& index, unsigned int const& count) {
  return shuffled_index(index, count);
}
