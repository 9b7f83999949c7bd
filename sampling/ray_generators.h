#pragma once

// The ray generators: every generator is reached through the
// SampleRayGenerator base record (sampling/rays/sample_ray_generator.h); the
// rays, differentials and frusta they fill are the platform records of
// platform/math/ (docs/rays.md).

#include "sampling/rays/anisotropic_reflection_ray_generator.h"
#include "sampling/rays/anisotropic_refraction_ray_generator.h"
#include "sampling/rays/cosine_weighted_hemisphere_ray_generator.h"
#include "sampling/rays/disk_ray_generator.h"
#include "sampling/rays/line_ray_generator.h"
#include "sampling/rays/plane_ray_generator.h"
#include "sampling/rays/sample_ray_generator.h"
#include "sampling/rays/uniform_sphere_ray_generator.h"
