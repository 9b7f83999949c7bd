#pragma once

#include <cmath>
#include <cstddef>
#include <type_traits>

#include "platform/math/gmath_basic_ray.h"
#include "platform/math/gmath_ray_differential.h"
#include "platform/math/gmath_vec3.h"

// A ray as the renderer traces it: the basic ray (origin, direction and the
// data derived from the direction), then optional differentials, the time,
// and two pairs of per-ray scalars. A plain record: trivially copyable, so
// the records that embed one are copied as raw memory.
//
//  - m_has_differentials: m_differential holds the two auxiliary rays.
//  - m_aux[0], m_aux[1]: defined by set_differentials, a ray-cone summary of
//    the differentials: [0] the larger distance of an auxiliary origin from
//    m_origin (the footprint radius at the origin), [1] the larger distance
//    of an auxiliary direction from m_direction (the growth of the footprint
//    per unit distance travelled, to first order). A tracer estimates the
//    footprint radius at distance t as m_aux[0] + t m_aux[1]. Both are 0.0 on
//    a ray without differentials.
//  - m_aux_cleared[0], m_aux_cleared[1]: owned by the tracer, which keeps
//    there what it accumulates along a ray it restarts (for example through
//    a transparent surface): [0] the distance travelled before the current
//    origin, [1] the footprint growth collected at such restarts. Every
//    freshly generated ray starts with both at 0.0.
//  - m_type: what the ray is for, see Type.
class GMathRay : public GMathBasicRay {
 public:
  // What a ray is for, 32 bits. Renderers select shading and culling by it;
  // the generators copy it from their input or write a fixed value.
  enum Type : unsigned int {
    k_type_camera = 0,      // primary ray from the camera
    k_type_shadow = 1,      // visibility test towards a light
    k_type_diffuse = 2,     // diffuse scattering
    k_type_reflection = 3,  // glossy or mirror reflection
    k_type_refraction = 4,  // transmission through a surface
    k_type_probe = 5        // ray cast from a point to sample a shape or the
                            // surroundings; the shape generators' default
  };

  bool m_has_differentials;
  GMathRayDifferential m_differential;
  double m_time;
  double m_aux[2];
  double m_aux_cleared[2];
  Type m_type;

  // Origin (0, 0, 0), direction (0, 0, 1), no differentials, time 0, every
  // auxiliary value 0, camera type.
  GMathRay()
      : m_has_differentials(false), m_time(), m_aux{}, m_aux_cleared{}, m_type(k_type_camera) {}
  GMathRay(GMathVec3<double> const& origin, GMathVec3<double> const& direction,
           Type const& type = k_type_camera, double const& time = 0.0)
      : GMathBasicRay(origin, direction),
        m_has_differentials(false),
        m_time(time),
        m_aux{},
        m_aux_cleared{},
        m_type(type) {}

  // Copies the four vectors, sets m_has_differentials and derives m_aux (see
  // above) from them and the ray's current origin and direction, so callers
  // set those first. m_aux_cleared is not touched.
  void set_differentials(GMathRayDifferential const& differential) {
    m_differential = differential;
    m_has_differentials = true;
    m_aux[0] = std::sqrt(
        larger_squared_distance(differential.m_rx_origin, differential.m_ry_origin, m_origin));
    m_aux[1] = std::sqrt(larger_squared_distance(differential.m_rx_direction,
                                                 differential.m_ry_direction, m_direction));
  }

 private:
  // max(|a - c|^2, |b - c|^2); the root of the larger square is the larger
  // root, bit for bit, so one square root serves.
  static double larger_squared_distance(GMathVec3<double> const& a, GMathVec3<double> const& b,
                                        GMathVec3<double> const& c) {
    GMathVec3<double> const da = a - c;
    GMathVec3<double> const db = b - c;
    double const la = da.x * da.x + da.y * da.y + da.z * da.z;
    double const lb = db.x * db.x + db.y * db.y + db.z * db.z;
    return la > lb ? la : lb;
  }
};

static_assert(sizeof(GMathRay::Type) == 4, "GMathRay::Type is 32 bits");
// The values the generators write are part of the ray record's contract.
static_assert(GMathRay::k_type_reflection == 3 && GMathRay::k_type_refraction == 4 &&
                  GMathRay::k_type_probe == 5,
              "GMathRay::Type: the values the generators write");
static_assert(std::is_trivially_copyable<GMathRay>::value, "GMathRay is copied as raw memory");
static_assert(std::is_trivially_destructible<GMathRay>::value, "GMathRay owns nothing");
static_assert(sizeof(GMathRay) == 240, "GMathRay layout");

// The field order is part of the record: the basic ray first, then the flag,
// the differentials, the time and the scalars. offsetof on a derived record
// is conditionally supported; GCC and Clang lay it out as written.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(GMathRay, m_origin) == 0, "GMathRay: origin first");
static_assert(offsetof(GMathRay, m_direction) == 24, "GMathRay: direction second");
static_assert(offsetof(GMathRay, m_has_differentials) == sizeof(GMathBasicRay),
              "GMathRay: the derived direction data ends the basic ray");
static_assert(offsetof(GMathRay, m_differential) == 96, "GMathRay: differentials");
static_assert(offsetof(GMathRay, m_time) == 192, "GMathRay: time");
static_assert(offsetof(GMathRay, m_aux) == 200, "GMathRay: aux pair");
static_assert(offsetof(GMathRay, m_aux_cleared) == 216, "GMathRay: cleared aux pair");
static_assert(offsetof(GMathRay, m_type) == 232, "GMathRay: type last");
#pragma GCC diagnostic pop
