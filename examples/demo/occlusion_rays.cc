#include "examples/demo/occlusion_rays.h"

unsigned int occlusion_rays(CosineWeightedHemisphereRayGenerator& generator,
                            GMathVec3<double> const& origin,
                            GMathVec3<double> const& shading_normal,
                            GMathVec3<double> const& geometric_normal,
                            GMathVec2<double> const* samples, unsigned int count, GMathRay* rays) {
  // A negative opening angle gives the same cone without ray differentials,
  // which ambient occlusion does not use.
  GMathRay const middle(origin, shading_normal);
  generator.init(middle, -180.0, 1.0, 1.0);
  generator.discard_clipped_samples(geometric_normal);
  return generator.get_rays(samples, count, rays, nullptr);
}
