// Uses the installed library the way an application does and checks a few
// results that do not depend on rounding.
#include <cmath>
#include <cstdio>

#include "sampling/samplers.h"
#include "sampling/sampling.h"
#include "sampling/warps.h"

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
  // The inline warps, the densities and the inverses, inline and exported.
  GMathVec3<double> c;
  sampling::warps::hemisphere_cosine_concentric(0.75, 0.5, c, 1.0);
  double const pdf = Sampling::hemisphere_cosine_concentric_pdf(c, 1.0);
  double u = 0.0, v = 0.0;
  Sampling::hemisphere_cosine_concentric_inverse(c, 1.0, u, v);
  double iu = 0.0, iv = 0.0;
  sampling::warps::sphere_uniform_inverse(d, iu, iv);
  if (!(std::fabs(c.x - 0.5) <= 1e-12 && std::fabs(pdf * k_sampling_pi - c.z) <= 1e-12 &&
        std::fabs(u - 0.75) + std::fabs(v - 0.5) <= 1e-12 &&
        pdf == sampling::warps::hemisphere_cosine_concentric_pdf(c, 1.0) &&
        std::fabs(iu - samples[5].x) + std::fabs(iv - samples[5].y) <= 1e-12)) {
    std::fprintf(stderr, "inline warp, density or inverse off: (%g, %g), pdf %g\n", u, v, pdf);
    return 1;
  }
  std::printf("consumer ok\n");
  return 0;
}
