#pragma once

#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/rays/sample_ray_generator.h"

// Rays scattered about an incoming ray's direction D with a cosine-weighted
// distribution restricted to a cone of half-angle h about D.
//
// A sample (u, v) in [0,1]^2 goes through the concentric map to the polar
// disk point (r, phi), is scaled to the disk of radius sin h and lifted onto
// the unit sphere: with s = r sin h, the local direction is
// (s cos phi, s sin phi, sqrt(1 - s^2)) in the frame (T1, T2, D) of
// orthonormal_basis(D). Directions are therefore distributed with density
// cos(theta) / (pi sin^2 h) per unit solid angle for theta <= h (theta the
// angle to D), and every ray has weight 1.0. Angle 180 degrees gives the full
// cosine-weighted hemisphere.
//
// Every ray starts at the incoming ray's origin with its time and type. Rays
// carry differentials unless the cone is empty (angle <= 1e-8 degrees) and the
// incoming ray has none: the x auxiliary direction is the ray's direction
// turned by the x spread towards the azimuthal tangent, the y one turned by the
// y spread towards the polar tangent (pointing to D); both auxiliary origins
// are those built by init (docs/rays.md).
//
// Clipping modes, for rays that fall below a plane through the origin with a
// normal n: plain (keep every ray), discard (drop rays with direction . n not
// strictly positive) and project (flatten rays with direction . n < 0 onto
// the plane).
//
// Frustum of a sample box [corner0, corner1]: four planes through the common
// origin O, plane k through the cone directions of box corners k and k + 1
// (corners (umin, vmin), (umax, vmin), (umax, vmax), (umin, vmax)), each then
// turned outward by a margin of 0.025 of its normal's length towards the
// corner directions' centroid. Normals point inside: a point X is inside when
// m_plane_normal[k] . X + m_plane_distance[k] >= 0 for all four planes
// (all four point outside when exactly one coordinate of the corners is
// exchanged). The margin covers the curved box edges for boxes up to a
// quadrant of the square; the frustum of the whole square or of half of it
// misses rays. Clipping modes and differentials do not change the frustum.
//
// Callers pass unit ray directions, samples and frustum corners in [0,1]^2,
// and unit clipping normals (a normal of another length is used as given).
class SAMPLING_API CosineWeightedHemisphereRayGenerator : public SampleRayGenerator {
 public:
  // Plain mode, clipping normal (0, 0, 0); until init, rays leave the world
  // origin along +z (the state init gives a default GMathRay and angle 0).
  CosineWeightedHemisphereRayGenerator();
  CosineWeightedHemisphereRayGenerator(CosineWeightedHemisphereRayGenerator const& other) = default;
  ~CosineWeightedHemisphereRayGenerator() = default;

  // Sets up the cone about `ray` (its direction must be a unit vector) with
  // full opening angle |angle| degrees, clamped to 180. The differential
  // spreads are tangents: t = (1 - spread_reduction) h plus, when `ray` has
  // differentials, the tangent of the angle between its direction and its
  // auxiliary direction; a spread reduction of 1 leaves only the incoming
  // spread. The auxiliary origins are the incoming ones' displacements
  // projected into the plane of T1 and T2, placed along T1 (x) and T2 (y).
  // Keeps the clipping mode and normal.
  void init(GMathRay const& ray, double const& angle, double const& spread_reduction_x,
            double const& spread_reduction_y);

  // Plain mode: every sample gives a ray. Keeps the clipping normal.
  void disable_clipping();
  // Discard mode: a sample gives a ray only when its direction . normal > 0;
  // get_rays packs the survivors. The normal is stored as given.
  void discard_clipped_samples(GMathVec3<double> const& normal);
  // Project mode: a direction with direction . normal < 0 is replaced by its
  // projection onto the plane, normalised (zero when it vanishes), and its
  // tangents are made perpendicular to it again. The normal is stored as given.
  void project_clipped_samples(GMathVec3<double> const& normal);

  // Local-to-world frame: columns T1, T2, D and a zero translation.
  GMathMatrix4x4<double> const& get_matrix() const { return m_matrix; }
  // The incoming ray with the differentials init built for the generated rays.
  GMathRay const& get_middle_ray() const { return m_middle_ray; }
  // Cosine and sine of the cone's half-angle h.
  double const& get_angle_cos() const { return m_cos[0]; }
  double const& get_angle_sin() const { return m_sin[0]; }

  // Density per unit solid angle with which get_ray returns the unit world
  // `direction` for uniform samples of [0,1]^2, before clipping:
  //   cos(theta) / (pi' sin^2 h) inside the cone (sin theta <= sin h and
  //   cos theta > 0, theta the angle to D), 0 outside,
  // pi' = 3.141592653589 being the library's pi, whose concentric map covers
  // the disk of radius sin h with density 1 / (pi' sin^2 h) per unit area.
  // An empty cone (angle 0) sends every ray along D: that is no density over
  // solid angle, and pdf returns 0 for every direction.
  //  - Discard mode: a surviving ray has this same density (the lobe's, not
  //    renormalised over the survivors); the rays below the plane are
  //    missing, so an estimator that counts a discarded sample as zero stays
  //    unbiased with this pdf.
  //  - Project mode: above the plane (direction . n > 0) the density is this
  //    one unchanged; below it there are no rays (density 0); the mass of
  //    the lobe below the plane lands on the plane itself, on the great
  //    circle direction . n = 0, where it has no density over solid angle.
  // pdf ignores the mode: it gives the unclipped lobe in every mode.
  double pdf(GMathVec3<double> const& direction) const;

  CosineWeightedHemisphereRayGenerator& operator=(
      CosineWeightedHemisphereRayGenerator const& other) = default;

 private:
  // Direction W, azimuthal tangent U and polar tangent V (towards D) of the
  // cone direction of the polar disk point (radius, angle).
  SAMPLING_LOCAL void warp(double const& radius, double const& angle, GMathVec3<double>& direction,
                           GMathVec3<double>& tangent_u, GMathVec3<double>& tangent_v) const;

  // warp() of the sample's concentric-map polar coordinates.
  SAMPLING_LOCAL void warp_sample(GMathVec2<double> const& sample, GMathVec3<double>& direction,
                                  GMathVec3<double>& tangent_u, GMathVec3<double>& tangent_v) const;

  // Writes the ray of direction W with tangents U and V.
  SAMPLING_LOCAL void create_ray(GMathVec3<double> const& direction,
                                 GMathVec3<double> const& tangent_u,
                                 GMathVec3<double> const& tangent_v, GMathRay& ray) const;
  // Warps the sample and writes its ray.
  SAMPLING_LOCAL void create_ray(GMathVec2<double> const& sample, GMathRay& ray) const;
  // 1 when the sample's ray is above the clipping plane and was written, else
  // 0 with the ray untouched.
  SAMPLING_LOCAL unsigned int create_ray_discard(GMathVec2<double> const& sample,
                                                 GMathRay& ray) const;
  // Writes the sample's ray, projected onto the clipping plane when below it.
  SAMPLING_LOCAL void create_ray_project(GMathVec2<double> const& sample, GMathRay& ray) const;
  // The same from the sample's direction W and tangents U and V.
  SAMPLING_LOCAL void create_ray_project(GMathVec3<double> const& direction,
                                         GMathVec3<double> const& tangent_u,
                                         GMathVec3<double> const& tangent_v, GMathRay& ray) const;
  // The rays of samples[0..count-1] in plain (0), discard (1) or project (2)
  // mode, each as the one-sample builder above writes it, packed at the
  // front in discard mode; two at a time in SSE2 lanes where available.
  // Returns the number written. The mode is a template argument, so each
  // callback runs code without the other modes' tests.
  template <int mode>
  SAMPLING_LOCAL unsigned int create_rays(GMathVec2<double> const* samples,
                                          unsigned int const& count, GMathRay* rays) const;
  // create_rays for a get_rays callback: checks, rays, unit weights.
  template <int mode>
  SAMPLING_LOCAL static unsigned int get_rays_in_mode(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
      unsigned int const& count, GMathRay* rays, double* weights);
  SAMPLING_LOCAL static bool get_ray_callback(CosineWeightedHemisphereRayGenerator const& generator,
                                              GMathVec2<double> const& sample, GMathRay& ray,
                                              double* weight);
  SAMPLING_LOCAL static unsigned int get_rays_callback(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
      unsigned int const& count, GMathRay* rays, double* weights);
  SAMPLING_LOCAL static bool get_ray_discard_callback(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& sample,
      GMathRay& ray, double* weight);
  SAMPLING_LOCAL static unsigned int get_rays_discard_callback(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
      unsigned int const& count, GMathRay* rays, double* weights);
  SAMPLING_LOCAL static bool get_ray_project_callback(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& sample,
      GMathRay& ray, double* weight);
  SAMPLING_LOCAL static unsigned int get_rays_project_callback(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
      unsigned int const& count, GMathRay* rays, double* weights);
  // The frustum described above.
  SAMPLING_LOCAL static void get_frustum_callback(
      CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& corner0,
      GMathVec2<double> const& corner1, GMathFrustum& frustum);

  GMathRay m_middle_ray;
  GMathMatrix4x4<double> m_matrix;
  GMathVec3<double> m_clip_normal;
  double m_angle;
  double m_angle_inverse;
  double m_cos[3];
  double m_sin[3];
};

static_assert(sizeof(CosineWeightedHemisphereRayGenerator) == 24 + 240 + 128 + 24 + 16 + 48,
              "CosineWeightedHemisphereRayGenerator layout");
