#pragma once

// Sampling: the library's static entry points.
//
//  - Start and end: create and free the process-wide state (the shared
//    permutation table of HierarchicalSampler2d).
//  - Warps: stateless maps from a 2D sample (u, v) in [0,1]^2 onto the unit
//    disk, the hemisphere about +z and the unit sphere, with optional frames,
//    plus the concentric square-to-disk map and an index permutation.
//  - Point sets: fixed N x N point sets on a disk and on a grid.
//  - Surface scattering: points spread over a geometry object's primitives
//    in proportion to their world-space area, as white or blue noise.
//
// All angles use the library's truncated pi (sampling/angles.h).

#include "platform/core/core_array.h"
#include "platform/geometry/ctx_eval.h"
#include "platform/geometry/geometry_object.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/angles.h"
#include "sampling/sampling_export.h"

class SAMPLING_API Sampling {
 public:
  Sampling() = delete;

  // ---- Library start and end ---------------------------------------------
  //
  // Loading the library creates nothing. The application calls init once,
  // before any HierarchicalSampler2d is initialised in its Hammersley mode
  // and before other threads use the library, and destroy once after all
  // use. Neither is synchronised.

  // Creates the shared permutation table of the hierarchical sampler (empty;
  // permutations are built on demand). Does nothing if it exists.
  static void init();
  // Frees every shared permutation and the table; does nothing without a
  // table. Hierarchical samplers in the Hammersley mode must not be used
  // afterwards. init may be called again later: permutations are rebuilt
  // with the same contents.
  static void destroy();

  // ---- Warps -------------------------------------------------------------
  //
  // Every warp below computes an azimuth phi, a projected radius rho and a
  // height z, and writes (cos(phi) rho, sin(phi) rho, z). The frame overloads
  // add, for the hemisphere and sphere warps, tangent = (-sin phi, cos phi, 0)
  // (increasing azimuth) and bitangent = (-z cos phi, -z sin phi, rho)
  // (towards the +z pole), so that tangent x bitangent = direction for a unit
  // direction. No input is clamped: callers keep u, v and radius_scale in
  // [0, 1].
  //
  // Each warp has a density (_pdf) and an inverse (_inverse). Densities are
  // those of the map as computed (its truncated pi, its radius_scale cone)
  // for (u, v) uniform on [0,1]^2: per unit area on the disk, per unit solid
  // angle on the hemisphere and sphere, zero outside the support. Inverses
  // take a point of the support (a unit direction for the hemisphere and
  // sphere) to (u, v) in [0,1]^2 whose warp is that point to rounding; at a
  // pole or the centre, where the azimuth is undefined, they pick the
  // preimage of atan2's azimuth. The same functions, inline and with the
  // same bits, are in sampling/warps.h (namespace sampling::warps), which
  // also derives each density; docs/densities.md sums them up.

  // Concentric (Shirley-Chiu) square-to-disk map in polar form: radius in
  // [0, 1] and angle in (-pi/4, 7pi/4] for (u, v) in [0,1]^2. Uniform over
  // the disk's area. The centre gives radius -0.0 and angle 0. Trig-free.
  static void to_unit_disk(double const& u, double const& v, double& radius, double& angle);
  // Its inverse: polar (radius, angle), radius in [0, 1] and angle in
  // [-pi, 2pi) of the true pi (atan2's range, [0, 2pi) or the map's own),
  // to (u, v) in [0,1]^2. Radius 0 gives (0.5, 0.5).
  static void to_unit_disk_inverse(double const& radius, double const& angle, double& u, double& v);

  // Point of the unit disk in the z = 0 plane, uniform per unit area.
  static void disk_concentric(double const& u, double const& v, GMathVec3<double>& point);
  // ... with tangent = radial direction and bitangent = direction of
  // increasing angle; tangent x bitangent = +z.
  static void disk_concentric(double const& u, double const& v, GMathVec3<double>& point,
                              GMathVec3<double>& tangent, GMathVec3<double>& bitangent);
  // Density of disk_concentric per unit area: 1 / pi (the library's pi).
  static double disk_concentric_pdf();
  // Inverse of disk_concentric for a point of the unit disk (z not read).
  static void disk_concentric_inverse(GMathVec3<double> const& point, double& u, double& v);

  // Hemisphere direction with polar angle u pi/2 (linear in u, so not uniform
  // per solid angle) and azimuth 2pi v; rho = sin(u pi/2) radius_scale.
  static void hemisphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                                 double const& radius_scale);
  static void hemisphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                                 GMathVec3<double>& tangent, GMathVec3<double>& bitangent,
                                 double const& radius_scale);
  // Density per unit solid angle: z / (pi^2 rho sqrt(s^2 - rho^2)) in the
  // cone rho <= s = radius_scale, 1 / (pi^2 sin(theta)) for s = 1; infinite
  // (integrably) at the pole and at the rim of a cone with s < 1.
  static double hemisphere_uniform_pdf(GMathVec3<double> const& direction,
                                       double const& radius_scale);
  // Inverse: u = asin(rho / s) 2 / pi, v = azimuth / 2pi.
  static void hemisphere_uniform_inverse(GMathVec3<double> const& direction,
                                         double const& radius_scale, double& u, double& v);

  // As hemisphere_uniform, with the polar angle radius pi/2 and the azimuth
  // taken from the concentric map.
  static void hemisphere_uniform_concentric(double const& u, double const& v,
                                            GMathVec3<double>& direction,
                                            double const& radius_scale);
  static void hemisphere_uniform_concentric(double const& u, double const& v,
                                            GMathVec3<double>& direction,
                                            GMathVec3<double>& tangent,
                                            GMathVec3<double>& bitangent,
                                            double const& radius_scale);
  // Density per unit solid angle: 4 t z / (pi^3 rho sqrt(s^2 - rho^2)) with
  // t = asin(rho / s) in the cone; 4 theta / (pi^3 sin(theta)) for s = 1.
  static double hemisphere_uniform_concentric_pdf(GMathVec3<double> const& direction,
                                                  double const& radius_scale);
  // Inverse: the concentric map's inverse at radius asin(rho / s) 2 / pi and
  // the direction's azimuth.
  static void hemisphere_uniform_concentric_inverse(GMathVec3<double> const& direction,
                                                    double const& radius_scale, double& u,
                                                    double& v);

  // Hemisphere direction lifted from the polar disk point (u radius_scale,
  // 2pi v); not area-uniform on the disk.
  static void hemisphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                                double const& radius_scale);
  static void hemisphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                                GMathVec3<double>& tangent, GMathVec3<double>& bitangent,
                                double const& radius_scale);
  // Density per unit solid angle: z / (2pi s rho) in the cone; infinite
  // (integrably) at the pole.
  static double hemisphere_cosine_pdf(GMathVec3<double> const& direction,
                                      double const& radius_scale);
  // Inverse: u = rho / s, v = azimuth / 2pi.
  static void hemisphere_cosine_inverse(GMathVec3<double> const& direction,
                                        double const& radius_scale, double& u, double& v);

  // Cosine-weighted hemisphere direction (Malley: the concentric disk point
  // lifted to the hemisphere). With radius_scale s = 1 the density is
  // cos(theta) / pi per unit solid angle; with s in (0, 1) directions stay in
  // the cone z >= sqrt(1 - s^2) with density cos(theta) / (pi s^2).
  static void hemisphere_cosine_concentric(double const& u, double const& v,
                                           GMathVec3<double>& direction,
                                           double const& radius_scale);
  static void hemisphere_cosine_concentric(double const& u, double const& v,
                                           GMathVec3<double>& direction, GMathVec3<double>& tangent,
                                           GMathVec3<double>& bitangent,
                                           double const& radius_scale);
  // Density per unit solid angle: z / (pi s^2) in the cone, else 0.
  static double hemisphere_cosine_concentric_pdf(GMathVec3<double> const& direction,
                                                 double const& radius_scale);
  // Inverse: the concentric map's inverse at radius rho / s and the
  // direction's azimuth.
  static void hemisphere_cosine_concentric_inverse(GMathVec3<double> const& direction,
                                                   double const& radius_scale, double& u,
                                                   double& v);

  // Uniform direction on the unit sphere, density 1 / (4 pi) per unit solid
  // angle: z = 1 - 2u (from +1 at u = 0 to -1 at u = 1), azimuth 2pi v.
  static void sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction);
  static void sphere_uniform(double const& u, double const& v, GMathVec3<double>& direction,
                             GMathVec3<double>& tangent, GMathVec3<double>& bitangent);
  // Density per unit solid angle: 1 / (4 pi) everywhere.
  static double sphere_uniform_pdf(GMathVec3<double> const& direction);
  // Inverse: u = (1 - z) / 2, v = azimuth / 2pi.
  static void sphere_uniform_inverse(GMathVec3<double> const& direction, double& u, double& v);

  // Direction on the unit sphere with z = sin(pi/2 - u pi) (polar angle
  // linear in u), azimuth 2pi v.
  static void sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction);
  static void sphere_cosine(double const& u, double const& v, GMathVec3<double>& direction,
                            GMathVec3<double>& tangent, GMathVec3<double>& bitangent);
  // Density per unit solid angle: 1 / (2pi^2 sin(theta)); infinite
  // (integrably) at both poles.
  static double sphere_cosine_pdf(GMathVec3<double> const& direction);
  // Inverse: u from the polar angle theta (atan2), v = azimuth / 2pi.
  static void sphere_cosine_inverse(GMathVec3<double> const& direction, double& u, double& v);

  // Position of `index` in the recursive even/odd order of `count` items:
  // the rank of index's base-2 radical inverse among those of 0..count-1.
  // A bijection of [0, count); an index >= count gives its insertion
  // position, in [0, count]. For a power-of-two count it reverses the
  // log2(count) low bits of index.
  static unsigned int shuffle_index(unsigned int const& index, unsigned int const& count);

  // ---- Point sets --------------------------------------------------------

  // Replaces `points` by N x N points on concentric rings of the unit disk:
  // ring k (from the outside) has 4N - 4 - 8k points starting at angle 0 and
  // running counter-clockwise; odd N ends with the centre. Deterministic.
  static void disk_uniform(CoreArray<GMathVec2<double>>& points, unsigned int const& n);

  // Replaces `points` by an N x N grid from `minimum` to `maximum`, row by row
  // with x fastest. N = 1 gives the minimum corner alone. Coordinates are
  // accumulated, so the last row and column reach `maximum` up to rounding.
  static void grid_uniform(CoreArray<GMathVec2<double>>& points, unsigned int const& n,
                           GMathVec2<double> const& minimum, GMathVec2<double> const& maximum);

  // ---- Surface scattering ------------------------------------------------
  //
  // These entries spread points over the primitives of `object` placed in
  // the world by `matrix`, in proportion to each primitive's world-space
  // area (GeometryObject::get_primitive_area under `matrix`, in `context`).
  // A point is a descriptor: primitive index and parametric coordinates
  // (u, v) in [0, 1], with u + v <= 1 on triangles. `group` selects the
  // primitives of one group, or all of them with 0xFFFFFFFF.
  //
  // Outputs are replaced wholesale. The long overloads also evaluate every
  // descriptor, in order, into `positions` and the two world vectors the
  // platform's fragment holds after the position (GeometryFragment: the
  // unit geometric normal into `surface_vectors_a`, the tangent dP/du into
  // `surface_vectors_b`). `spacing` receives 1 / sqrt(density), the side of
  // a square of area 1 / density, where density is the caller's, or count /
  // total area for the count entries.
  //
  // A count of 0, or a density whose count (total area x density, truncated)
  // is 0, empties every output array and leaves `spacing` untouched. Each
  // call seeds its own Mersenne Twister with 1: the same request always
  // gives the same points. They return true in every case. The object's
  // operations must be callable from the calling thread; concurrent calls
  // with distinct outputs are independent.

  // White noise: `count` points at uniform parametric coordinates (uniform
  // per unit area on triangles and parallelograms), split among primitives
  // by area with the fractions carried over so the total is exact; grouped
  // by primitive, largest area first. A zero total area (or a group without
  // primitives) places nothing: the outputs end empty.
  static bool surface_random_noise_count(CtxEval const& context, GeometryObject const& object,
                                         GMathMatrix4x4<double> const& matrix,
                                         unsigned int const& count,
                                         CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                                         double& spacing, unsigned int const& group);
  static bool surface_random_noise_count(
      CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
      unsigned int const& count, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
      CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
      CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group);

  // White noise at `density` points per unit world area: count = total area
  // x density, truncated, then as surface_random_noise_count.
  static bool surface_random_noise_density(
      CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
      double const& density, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
      double& spacing, unsigned int const& group);
  static bool surface_random_noise_density(
      CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
      double const& density, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
      CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
      CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group);

  // Blue noise by dart throwing: up to `count` points, no two of the same
  // group closer than about `spacing` (the collision predicate of Octree
  // with radius spacing / 2 each: world distance < spacing rejects). Points
  // of different groups ignore each other when every group is selected.
  // Candidates that find no free place are dropped, so fewer than `count`
  // points may come back; the outputs then hold exactly the points placed.
  // The object must report at least one group, and each primitive's group
  // must be below that count.
  static bool surface_blue_noise_count(CtxEval const& context, GeometryObject const& object,
                                       GMathMatrix4x4<double> const& matrix,
                                       unsigned int const& count,
                                       CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                                       double& spacing, unsigned int const& group);
  static bool surface_blue_noise_count(
      CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
      unsigned int const& count, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
      CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
      CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group);

  // Blue noise at `density` points per unit world area: at most total area
  // x density (truncated) points, spacing 1 / sqrt(density).
  static bool surface_blue_noise_density(CtxEval const& context, GeometryObject const& object,
                                         GMathMatrix4x4<double> const& matrix,
                                         double const& density,
                                         CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                                         double& spacing, unsigned int const& group);
  static bool surface_blue_noise_density(
      CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
      double const& density, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
      CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
      CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group);

  // Placeholder for a uniform scattering: does nothing and returns false.
  // It reads none of its arguments and leaves every output as it was.
  static bool surface_uniform(CtxEval const& context, GeometryObject const& object,
                              GMathMatrix4x4<double> const& matrix, double const& density,
                              CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                              CoreArray<GMathVec3<double>>& positions,
                              CoreArray<GMathVec3<double>>& surface_vectors_a,
                              CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing,
                              unsigned int const& group, bool const& flag);
};
