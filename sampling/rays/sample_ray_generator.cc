#include "sampling/rays/sample_ray_generator.h"

void SampleRayGenerator::set_callbacks(GetRayCallback get_ray, GetRaysCallback get_rays,
                                       GetFrustumCallback get_frustum) {
  m_get_ray_callback = get_ray;
  m_get_rays_callback = get_rays;
  m_get_frustum_callback = get_frustum;
}
