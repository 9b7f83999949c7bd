#pragma once

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/rays/sample_ray_generator.h"
#include "sampling/sampling_export.h"

template <typename G>
struct AnisotropicLobe;

// Glossy transmission rays at a surface point. Each sample (u, v) of [0,1]^2
// picks a microfacet normal H exactly as AnisotropicReflectionRayGenerator
// does (the Ashikhmin-Shirley anisotropic Phong lobe about the shading
// normal N, exponent nu along the tangent T and nv along B = N x T), and the
// incoming direction I is refracted through H with the ratio eta of the
// refractive indices (incoming side over transmitted side):
//   c = -(H . I), s2 = (1 - c^2) eta^2, T = eta I + (eta c - sqrt(1 - s2)) H,
// the root taken as 0 under total internal reflection (s2 >= 1), which leaves
// T in the plane perpendicular to H. A ray is kept when H faces I (c > 0) and
// T leaves by the far side of the geometric normal Ng (T . Ng not >= 0);
// otherwise H turned half a turn about N is tried once, and when that fails
// too the sample gives no ray. Every ray starts at the surface point, has
// type k_type_refraction, the incoming ray's time and weight 1.0. There is
// no packet frustum.
//
// Differentials: when the incoming ray has differentials, each ray gets
// first-order refraction differentials of T = eta I - mu H, with the
// incoming direction changing by its own differentials and the normal by the
// lobe's spread tangent t along the unit surface differentials; the
// auxiliary origins are the surface point plus its differentials. They are
// not finite numbers for a ray with T . H = 0 (a kept total internal
// reflection). See docs/rays.md.
class SAMPLING_API AnisotropicRefractionRayGenerator : public SampleRayGenerator {
 public:
  // Stores the callbacks and zeroes the frame and surface vectors; eta and
  // the exponents stay unset until init.
  AnisotropicRefractionRayGenerator();
  // Copies the whole record, the embedded incoming ray included.
  AnisotropicRefractionRayGenerator(AnisotropicRefractionRayGenerator const& other) = default;
  // Destroys the embedded incoming ray; the generator owns nothing else.
  ~AnisotropicRefractionRayGenerator() = default;

  // Prepares the generator for one shading point:
  //  - incoming_ray: copied whole; its direction I (expected of unit length),
  //    time and differentials are used;
  //  - position: P, the origin of every ray;
  //  - shading: N is its third column; T = direction.x times its first
  //    column plus direction.y times its second (not normalised: `direction`
  //    is expected to be a unit 2D direction and the first two columns an
  //    orthonormal tangent pair, otherwise the frame is skewed accordingly);
  //  - geometric_normal: Ng, the side of the surface rays must leave by;
  //  - differential: only its position differentials m_dpdx, m_dpdy are read;
  //  - nu, nv: the lobe exponents along T and B (0 for a cosine lobe);
  //  - eta: the ratio of refractive indices, incoming side over transmitted
  //    side (1 leaves directions unbent);
  //  - spread_reduction_x, spread_reduction_y: stored as 1 - value for users
  //    of the record, not used by the generator.
  void init(GMathRay const& incoming_ray, GMathVec3<double> const& position,
            GMathMatrix3x3<double> const& shading, GMathVec3<double> const& geometric_normal,
            GeometryDifferential const& differential, float const& nu, float const& nv,
            GMathVec2<float> const& direction, float const& eta, float const& spread_reduction_x,
            float const& spread_reduction_y);

  // Refracts I through the caller's unit world normal H into `ray` and
  // returns true, with differentials as for a sampled normal but with the
  // spread of H at the level 0.1 (exponent (nu L.x^2 + nv L.y^2) /
  // (1 - L.z^2), L = H in the local frame). Returns false, leaving `ray`
  // untouched, on total internal reflection (s2 >= 1). No side test. H must
  // not be -N (its spread is 0 / 0).
  bool compute_ray(GMathVec3<double> const& normal, GMathRay& ray) const;

  // Density per unit solid angle with which get_ray returns the unit world
  // `direction` T for uniform samples of [0,1]^2, counting only refracted
  // rays proper. The normal density p(H) of the reflection generator is
  // carried to directions by the refraction's Jacobian: the normal that
  // refracts I into T is H = +-(eta I - T) / |eta I - T| (eta as stored, the
  // incoming side's index over the transmitted side's), the sign making
  // H . I < 0, and dw(H) = |T . H| / |eta I - T|^2 dw(T). T must be on the
  // transmitted branch (T . H < 0) and leave by the far side of Ng. The
  // retry adds a second way to reach T when the half turn of H fails first:
  //   pdf(T) = p(H) |T . H| / |eta I - T|^2 (1 + [H turned half a turn fails]).
  // Samples that give no ray make up the rest of the unit mass; so do kept
  // total internal reflections (eta > 1 only): their directions eta (I + cH)
  // are not unit vectors, and pdf does not cover them. eta = 1 sends every
  // kept ray along I, which has no density: pdf returns 0 then. Expects an
  // orthonormal shading frame (T, B, N) and a unit incoming direction.
  double pdf(GMathVec3<double> const& direction) const;

  // 1 - spread_reduction_x and 1 - spread_reduction_y of the last init, and
  // the smaller of the two (single precision): the spread scaling a caller
  // applies to the rays' differentials, kept with the generator for it.
  GMathVec2<float> const& get_spread_scale() const { return m_spread_scale; }
  float get_spread_scale_min() const { return m_spread_scale_min; }

  // Copies the whole record; the copy generates the same rays.
  AnisotropicRefractionRayGenerator& operator=(AnisotropicRefractionRayGenerator const& other) =
      default;

 private:
  // The shared lobe: frame, sampling, ray builder and the three callbacks.
  friend struct AnisotropicLobe<AnisotropicRefractionRayGenerator>;

  // The ray of one sample: sampled normal, refraction, side tests, retry.
  // Returns false, writing nothing, when both normals fail.
  SAMPLING_LOCAL bool create_ray(GMathVec2<double> const& sample, GMathRay& ray) const;
  // The ray along T for normal H and spread tangent t, with differentials.
  SAMPLING_LOCAL void create_ray(GMathVec3<double> const& direction,
                                 GMathVec3<double> const& normal, double const& spread,
                                 GMathRay& ray) const;

  GMathRay m_incoming_ray;
  GMathVec3<double> m_tangent;
  GMathVec3<double> m_bitangent;
  GMathVec3<double> m_normal;
  GMathVec3<double> m_position;
  GMathVec3<double> m_geometric_normal;
  GMathVec3<double> m_dpdx;
  GMathVec3<double> m_dpdy;
  GMathVec3<double> m_dpdx_unit;
  GMathVec3<double> m_dpdy_unit;
  float m_eta;
  float m_exponent_u;
  float m_exponent_v;
  float m_exponent_ratio;
  float m_exponent_max;
  GMathVec2<float> m_spread_scale;
  float m_spread_scale_min;
};

static_assert(sizeof(AnisotropicRefractionRayGenerator) == 512,
              "AnisotropicRefractionRayGenerator: callbacks, incoming ray, nine vectors, "
              "eight floats");
