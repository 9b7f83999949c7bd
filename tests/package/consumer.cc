// Uses the installed library the way an application does and checks a few
// results that do not depend on rounding.
#include <cmath>
#include <cstdio>

#include "sampling/samplers.h"
#include "sampling/sampling.h"

int main() {
  HammersleySampler2d sampler;
  sampler.init(0, 4, 4);
  GMathVec2<double> samples[16];
  sampler.get_all_samples(samples);
  if (samples[1].x != 0.5 || samples[1].y != 0.0625) {
    std::fprintf(stderr, "unexpected Hammersley point (%g, %g)\n", samples[1].x, samples[1].y);
    return 1;
  }
  GMathVec3<double> d;
  Sampling::sphere_uniform(samples[5].x, samples[5].y, d);
  double const length = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
  if (!(std::fabs(length - 1.0) <= 1e-12)) {
    std::fprintf(stderr, "direction not unit: %g\n", length);
    return 1;
  }
  std::printf("consumer ok\n");
  return 0;
}
