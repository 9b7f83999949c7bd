// The main road of a caller that shades a hit point: a sampler gives 2D
// samples of the unit square, a warp turns each into a direction about the
// surface normal, and the directions become rays. Built with the project so
// this code cannot drift from the headers; the README quotes it.

#include <cstdio>

#include "sampling/samplers.h"
#include "sampling/sampling.h"

// What a tracer takes; the ray generators write the platform's GMathRay.
struct Ray {
  GMathVec3<double> origin;
  GMathVec3<double> direction;
};

int main() {
  // 1. A sampler: 16 Hammersley points, seed 7.
  HammersleySampler2d sampler;
  sampler.init(/*seed=*/7, /*count_x=*/16, /*count_y=*/1);

  // 2. The samples, into the caller's array (the library never allocates).
  GMathVec2<double> samples[16];
  sampler.get_all_samples(samples);

  // 3. Directions: cosine-weighted about +z, the local frame of a hit whose
  //    normal is +z. (With the ray generators this step becomes
  //    CosineWeightedHemisphereRayGenerator::init from the hit, then
  //    get_rays(samples) writing rays with weights and differentials.)
  GMathVec3<double> directions[16];
  for (unsigned int i = 0; i < sampler.get_sample_count(); ++i) {
    Sampling::hemisphere_cosine_concentric(samples[i].x, samples[i].y, directions[i],
                                           /*radius_scale=*/1.0);
  }

  // 4. Rays: origin at the hit, one direction per sample, ready to trace.
  GMathVec3<double> const hit(0.0, 0.0, 0.0);
  Ray rays[16];
  for (unsigned int i = 0; i < sampler.get_sample_count(); ++i)
    rays[i] = Ray{hit, directions[i]};

  for (unsigned int i = 0; i < sampler.get_sample_count(); ++i) {
    std::printf("ray %2u: sample (%.4f, %.4f) -> direction (%+.4f, %+.4f, %+.4f)\n", i,
                samples[i].x, samples[i].y, rays[i].direction.x, rays[i].direction.y,
                rays[i].direction.z);
  }
  return 0;
}
