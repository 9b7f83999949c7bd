// The main road of a caller that shades a hit point: a sampler gives 2D
// samples of the unit square, and a ray generator set up at the hit turns
// them into rays. Built with the project so this code cannot drift from the
// headers; the README quotes the part from the includes to the end of
// main_road() verbatim.

#include <cstdio>

#include "sampling/ray_generators.h"
#include "sampling/samplers.h"

// Writes up to 16 occlusion rays of a hit at the origin whose surface normal
// is +z, with their weights; returns how many were written.
unsigned int main_road(GMathRay* rays, double* weights) {
  // 1. A sampler: 16 Hammersley points, seed 7.
  HammersleySampler2d sampler;
  sampler.init(/*seed=*/7, /*count_x=*/16, /*count_y=*/1);

  // 2. The samples, into the caller's array (the library never allocates).
  GMathVec2<double> samples[16];
  sampler.get_all_samples(samples);

  // 3. A generator at the hit: cosine-weighted about the normal over the
  //    full 180-degree cone, dropping directions that are not strictly above
  //    the true (geometric) surface.
  GMathVec3<double> const hit(0.0, 0.0, 0.0), normal(0.0, 0.0, 1.0);
  CosineWeightedHemisphereRayGenerator generator;
  generator.init(GMathRay(hit, normal), /*angle=*/180.0, /*spread_reduction_x=*/1.0,
                 /*spread_reduction_y=*/1.0);
  generator.discard_clipped_samples(normal);

  // 4. The rays: origin at the hit, unit directions, one weight each, packed
  //    at the front of the caller's arrays, ready to trace.
  return generator.get_rays(samples, sampler.get_sample_count(), rays, weights);
}

int main() {
  GMathRay rays[16];
  double weights[16];
  unsigned int const count = main_road(rays, weights);
  for (unsigned int i = 0; i < count; ++i) {
    std::printf("ray %2u: direction (%+.4f, %+.4f, %+.4f), weight %.1f\n", i, rays[i].m_direction.x,
                rays[i].m_direction.y, rays[i].m_direction.z, weights[i]);
  }
  return 0;
}
