#pragma once

#include <cstring>
#include <random>
#include <vector>

#include "platform/math/gmath_ray.h"
#include "sampling/rays/sample_ray_generator.h"

// Helpers of the ray generator tests.

inline GMathVec3<double> unit(GMathVec3<double> const& v) {
  return v * (1.0 / v.length());
}

// A direction uniform over the sphere.
inline GMathVec3<double> random_unit(std::mt19937_64& rng) {
  std::normal_distribution<double> normal;
  return unit(GMathVec3<double>(normal(rng), normal(rng), normal(rng)));
}

// Ray records with every byte, padding included, set to `pattern`, so that
// whole records compare with memcmp and untouched ones show.
inline std::vector<GMathRay> patterned_rays(std::size_t count, unsigned char pattern = 0xA5) {
  std::vector<GMathRay> rays(count);
  std::memset(static_cast<void*>(rays.data()), pattern, count * sizeof(GMathRay));
  return rays;
}

// Random samples with the special points of the concentric map mixed in:
// centre, corners, edge midpoints and diagonals.
inline std::vector<GMathVec2<double>> test_samples(unsigned int count, unsigned int seed) {
  std::mt19937_64 rng(seed);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  double const special[] = {0.0, 0.25, 0.5, 0.75, 1.0};
  std::vector<GMathVec2<double>> samples;
  for (double u : special) {
    for (double v : special)
      samples.emplace_back(u, v);
  }
  while (samples.size() < count) {
    double const u = uniform(rng);
    samples.emplace_back(u, samples.size() % 9 == 0 ? 1.0 - u : uniform(rng));
  }
  return samples;
}

// True when every field of the two rays has the same bits (the padding of
// the record is not compared). Fields are compared as bytes, bools and enums
// too: a record left untouched still holds the fill pattern, which is no valid
// bool to load.
inline bool same_ray_bits(GMathRay const& a, GMathRay const& b) {
  auto same = [](void const* x, void const* y, std::size_t n) { return std::memcmp(x, y, n) == 0; };
  return same(&a.m_origin, &b.m_origin, sizeof a.m_origin) &&
         same(&a.m_direction, &b.m_direction, sizeof a.m_direction) &&
         same(&a.m_inverse_direction, &b.m_inverse_direction, sizeof a.m_inverse_direction) &&
         same(a.m_sign, b.m_sign, sizeof a.m_sign) &&
         same(&a.m_major_axis, &b.m_major_axis, sizeof a.m_major_axis) &&
         same(&a.m_has_differentials, &b.m_has_differentials, sizeof a.m_has_differentials) &&
         same(&a.m_differential, &b.m_differential, sizeof a.m_differential) &&
         same(&a.m_time, &b.m_time, sizeof a.m_time) && same(a.m_aux, b.m_aux, sizeof a.m_aux) &&
         same(a.m_aux_cleared, b.m_aux_cleared, sizeof a.m_aux_cleared) &&
         same(&a.m_type, &b.m_type, sizeof a.m_type);
}
