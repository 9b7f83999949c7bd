#include "sampling/rays/sample_ray_generator.h"

void SampleRayGenerator::set_callbacks(GetRayCallback ray_callback, GetRaysCallback rays_callback,
                                       GetFrustumCallback frustum_callback) {
  m_get_ray_callback = ray_callback;
  m_get_rays_callback = rays_callback;
  m_get_frustum_callback = frustum_callback;
}
