// The uniform sphere generator's array path (inline warp, record fields held
// in locals) against the plain path: Sampling::sphere_uniform's frame and
// the ray built field by field from it, over a hundred thousand samples.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "sampling/ray_generators.h"
#include "sampling/sampling.h"
#include "tests/support/ray_bits.h"

namespace {

// The ray from the centre along the warp's direction, the auxiliary
// directions turned by atan(A) towards the tangent and atan(B) towards the
// bitangent, A = (1 - rx) 2pi and B = (1 - ry) pi.
GMathRay plain_ray(GMathVec3<double> const& centre, double const& rx, double const& ry,
                   GMathVec2<double> const& sample) {
  GMathVec3<double> d, t, b;
  Sampling::sphere_uniform(sample.x, sample.y, d, t, b);
  double const a = (1.0 - rx) * k_sampling_two_pi, c = (1.0 - ry) * k_sampling_pi;
  double const cos_x = 1.0 / std::sqrt(a * a + 1.0), sin_x = cos_x * a;
  double const cos_y = 1.0 / std::sqrt(c * c + 1.0), sin_y = cos_y * c;
  GMathRay ray(centre, d, GMathRay::k_type_shadow, 0.25);
  GMathRayDifferential differential;
  differential.m_rx_origin = centre;
  differential.m_ry_origin = centre;
  differential.m_rx_direction = d * cos_x + t * sin_x;
  differential.m_ry_direction = d * cos_y + b * sin_y;
  ray.set_differentials(differential);
  return ray;
}

TEST(UniformSphereRayGeneratorFastPath, ArrayPathIsTheWarpAndTheRayBuiltFromIt) {
  std::mt19937_64 rng(77);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  GMathVec3<double> const centre(0.5, -2.0, 3.25);
  UniformSphereRayGenerator generator(GMathRay::k_type_shadow, 0.25);
  unsigned int const batch = 4096;
  std::vector<GMathVec2<double>> samples(batch);
  std::vector<GMathRay> rays(batch);
  std::vector<double> weights(batch);
  unsigned int mismatches = 0;
  for (unsigned int round = 0; round < 32; ++round) {
    // Spread reductions vary per round, including 1 (no spread) and the
    // closed ends of the sample square.
    double const rx = round % 7 == 0 ? 1.0 : unit(rng), ry = unit(rng);
    generator.init(centre, rx, ry);
    for (GMathVec2<double>& s : samples)
      s = GMathVec2<double>(unit(rng), unit(rng));
    samples[0] = GMathVec2<double>(0.0, 0.0);
    samples[1] = GMathVec2<double>(1.0, 1.0);
    ASSERT_EQ(generator.get_rays(samples.data(), batch, rays.data(), weights.data()), batch);
    for (unsigned int i = 0; i < batch; ++i) {
      // The single-ray path shares the ray builder; every 16th sample checks it.
      GMathRay single = plain_ray(centre, rx, ry, samples[i]);
      double weight = 1.0;
      if (i % 16 == 0)
        generator.get_ray(samples[i], single, &weight);
      GMathRay const plain = plain_ray(centre, rx, ry, samples[i]);
      if (!same_ray_bits(rays[i], plain) || !same_ray_bits(single, plain) || weights[i] != 1.0 ||
          weight != 1.0) {
        ADD_FAILURE() << "round " << round << " sample " << i << " (" << samples[i].x << ", "
                      << samples[i].y << ")";
        if (++mismatches > 10)
          return;
      }
    }
  }
}

}  // namespace
