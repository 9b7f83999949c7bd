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

// Glossy reflection rays at a surface point. Each sample (u, v) of [0,1]^2
// picks a microfacet normal H from the Ashikhmin-Shirley anisotropic Phong
// lobe about the shading normal N, with exponent nu along the tangent T and nv
// along the bitangent B = N x T: per unit solid angle,
//   p(H) = sqrt((nu + 1)(nv + 1)) / (2 pi) (H . N)^(nu cos^2 phi + nv sin^2 phi),
// phi being H's azimuth from T. The incoming direction I is mirrored about H:
// R = I - 2 (I . H) H. When H faces away from I or R would go below the
// geometric normal Ng, the sample uses H turned half a turn about N instead
// (and keeps it whatever it gives). Every ray starts at the surface point,
// has type k_type_reflection, the incoming ray's time and weight 1.0; no
// sample is rejected. There is no packet frustum.
//
// Differentials: when the incoming ray has differentials, each ray gets
// first-order reflection differentials in which the incoming direction
// changes by its own differentials and the normal by the lobe's spread
// tangent t along the unit surface differentials (Nx = t dpdx / |dpdx|); the
// auxiliary origins are the surface point plus its differentials. See
// docs/rays.md.
class SAMPLING_API AnisotropicReflectionRayGenerator : public SampleRayGenerator {
 public:
  // Stores the callbacks and zeroes the frame and surface vectors; the
  // exponents stay unset until init.
  AnisotropicReflectionRayGenerator();
  // Copies the whole record, the embedded incoming ray included.
  AnisotropicReflectionRayGenerator(AnisotropicReflectionRayGenerator const& other) = default;
  // Destroys the embedded incoming ray; the generator owns nothing else.
  ~AnisotropicReflectionRayGenerator() = default;

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
  //  - spread_reduction_x, spread_reduction_y: stored as 1 - value for users
  //    of the record, not used by the generator.
  void init(GMathRay const& incoming_ray, GMathVec3<double> const& position,
            GMathMatrix3x3<double> const& shading, GMathVec3<double> const& geometric_normal,
            GeometryDifferential const& differential, float const& nu, float const& nv,
            GMathVec2<float> const& direction, float const& spread_reduction_x,
            float const& spread_reduction_y);

  // Mirrors I about the caller's unit world normal H into `ray`, with
  // differentials as for a sampled normal but with the spread of H at the
  // level 0.1 (exponent (nu L.x^2 + nv L.y^2) / (1 - L.z^2), L = H in the
  // local frame). No side test. H must not be -N (its spread is 0 / 0).
  void compute_ray(GMathVec3<double> const& normal, GMathRay& ray) const;

  // Density per unit solid angle with which get_ray returns the unit world
  // `direction` R for uniform samples of [0,1]^2. The normal density p(H)
  // above (with the library's 2pi' and the stored single-precision exponent
  // ratio) is carried to directions by the mirror's Jacobian: with the half
  // vector H = (R - I) / |R - I|, dw(R) = 4 |R . H| dw(H). The retry adds a
  // second way to reach R: for Hu, whichever of H and -H lies above the
  // tangent plane,
  //   pdf(R) = p(Hu) / (4 |R . H|) ([H = Hu and R . Ng > 0]
  //                                 + [Hu turned half a turn fails]),
  // the first term for samples kept at once, the second for retried ones
  // (p is unchanged by the half turn). Directions below Ng can thus have a
  // density, from retries. Expects an orthonormal shading frame (T, B, N)
  // and a unit incoming direction; 0 where R = I.
  double pdf(GMathVec3<double> const& direction) const;

  // 1 - spread_reduction_x and 1 - spread_reduction_y of the last init, and
  // the smaller of the two (single precision): the spread scaling a caller
  // applies to the rays' differentials, kept with the generator for it.
  GMathVec2<float> const& get_spread_scale() const { return m_spread_scale; }
  float get_spread_scale_min() const { return m_spread_scale_min; }

  // Copies the whole record; the copy generates the same rays.
  AnisotropicReflectionRayGenerator& operator=(AnisotropicReflectionRayGenerator const& other) =
      default;

 private:
  // The shared lobe: frame, sampling, ray builder and the three callbacks.
  friend struct AnisotropicLobe<AnisotropicReflectionRayGenerator>;

  // The ray of one sample: sampled normal, mirror, side test, retry. Always
  // writes a ray and returns true (the lobe's callbacks read the result).
  SAMPLING_LOCAL bool create_ray(GMathVec2<double> const& sample, GMathRay& ray) const;
  // The ray along R for normal H and spread tangent t, with differentials.
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
  float m_exponent_u;
  float m_exponent_v;
  float m_exponent_ratio;
  float m_exponent_max;
  GMathVec2<float> m_spread_scale;
  float m_spread_scale_min;
};

static_assert(sizeof(AnisotropicReflectionRayGenerator) == 512,
              "AnisotropicReflectionRayGenerator: callbacks, incoming ray, nine vectors, "
              "seven floats");
