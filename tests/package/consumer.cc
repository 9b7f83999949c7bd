// Uses the installed library the way an application does and checks a few
// results that do not depend on rounding.
#include <cmath>
#include <cstdio>
#include <string>
#if __cplusplus >= 202002L
#include <span>
#endif

#include "sampling/ray_generators.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"
#include "sampling/version.h"
#include "sampling/warps.h"

#define SAMPLING_STRING(x) #x
#define SAMPLING_VERSION_STRING(a, b, c) \
  SAMPLING_STRING(a) "." SAMPLING_STRING(b) "." SAMPLING_STRING(c)

static int fail(char const* what) {
  std::fprintf(stderr, "consumer: %s\n", what);
  return 1;
}

int main() {
  // The version header, the loaded library and the package
  // (SAMPLING_PACKAGE_VERSION, from find_package or pkg-config) agree.
  unsigned int major_version = 0, minor_version = 0, patch_version = 0;
  SamplingVersion::get_version(major_version, minor_version, patch_version);
  std::string const header = SAMPLING_VERSION_STRING(SAMPLING_VERSION_MAJOR, SAMPLING_VERSION_MINOR,
                                                     SAMPLING_VERSION_PATCH);
  if (header != std::to_string(major_version) + "." + std::to_string(minor_version) + "." +
                    std::to_string(patch_version) ||
      header != SAMPLING_PACKAGE_VERSION || SamplingVersion::get_version() != SAMPLING_VERSION)
    return fail("versions differ");
  HammersleySampler2d sampler;
  sampler.init(0, 4, 4);
  GMathVec2<double> samples[16];
  sampler.get_all_samples(samples);
  if (samples[1].x != 0.5 || samples[1].y != 0.0625)
    return fail("unexpected Hammersley point");
  // The exported and the inline warps, a density and an inverse.
  GMathVec3<double> d, c;
  Sampling::sphere_uniform(samples[5].x, samples[5].y, d);
  sampling::warps::hemisphere_cosine_concentric(0.75, 0.5, c, 1.0);
  double u = 0.0, v = 0.0;
  Sampling::hemisphere_cosine_concentric_inverse(c, 1.0, u, v);
  if (!(std::fabs(d.length() - 1.0) <= 1e-12 && std::fabs(c.x - 0.5) <= 1e-12 &&
        std::fabs(Sampling::hemisphere_cosine_concentric_pdf(c, 1.0) * k_sampling_pi - c.z) <=
            1e-12 &&
        std::fabs(u - 0.75) + std::fabs(v - 0.5) <= 1e-12))
    return fail("warp, density or inverse off");
  // A generator's density: the uniform sphere's is 1 / (4 pi) everywhere.
  UniformSphereRayGenerator sphere;
  sphere.init(GMathVec3<double>(0.0, 0.0, 0.0), 1.0, 1.0);
  if (!(std::fabs(sphere.pdf(d) * 4.0 * k_sampling_pi - 1.0) <= 1e-12))
    return fail("sphere generator density off");
#if __cplusplus >= 202002L
  std::span<GMathVec2<double> const> const view(samples);
  std::printf("consumer ok (C++20, %zu samples)\n", view.size());
#else
  std::printf("consumer ok\n");
#endif
  return 0;
}
