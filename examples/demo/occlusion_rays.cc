#include "examples/demo/occlusion_rays.h"

#include <cmath>

#include "examples/demo/scene.h"
#include "sampling/sampling.h"

namespace {

// Two unit tangents completing the unit normal n to a right-handed frame,
// continuous everywhere but at n.z = -1 (Duff et al. 2017).
void tangent_frame(GMathVec3<double> const& n, GMathVec3<double>& t1, GMathVec3<double>& t2) {
  double const sign = std::copysign(1.0, n.z);
  double const a = -1.0 / (sign + n.z);
  double const b = n.x * n.y * a;
  t1 = GMathVec3<double>(1.0 + sign * n.x * n.x * a, sign * b, -sign * n.x);
  t2 = GMathVec3<double>(b, sign + n.y * n.y * a, -n.y);
}

}  // namespace

unsigned int occlusion_directions(GMathVec3<double> const& shading_normal,
                                  GMathVec3<double> const& geometric_normal,
                                  GMathVec2<double> const* samples, unsigned int count,
                                  GMathVec3<double>* directions) {
  GMathVec3<double> t1, t2;
  tangent_frame(shading_normal, t1, t2);
  unsigned int written = 0;
  for (unsigned int i = 0; i < count; ++i) {
    GMathVec3<double> local;
    Sampling::hemisphere_cosine_concentric(samples[i].x, samples[i].y, local, 1.0);
    GMathVec3<double> const w = t1 * local.x + t2 * local.y + shading_normal * local.z;
    if (dot(w, geometric_normal) > 0.0)
      directions[written++] = w;
  }
  return written;
}
