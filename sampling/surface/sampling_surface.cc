// Surface scattering entries of Sampling: the white-noise and blue-noise
// scatterings by count and by density, each with and without world-space
// evaluation. All eight share one path per request kind (count, density);
// they differ only in the placement they call and the outputs they fill.

#include <cmath>

#include "sampling/sampling.h"
#include "sampling/surface/area_table.h"
#include "sampling/surface/blue_noise_placement.h"
#include "sampling/surface/random_placement.h"

namespace {

enum class Noise { k_random, k_blue };

// The caller's output arrays; the vector arrays are null in the short
// overloads.
struct SurfaceOutputs {
  CoreArray<GeometryPrimitiveSampleDescriptor>& m_descriptors;
  CoreArray<GMathVec3<double>>* m_positions;
  CoreArray<GMathVec3<double>>* m_surface_vectors_a;
  CoreArray<GMathVec3<double>>* m_surface_vectors_b;

  // Frees every buffer: the answer to a request for no point.
  void empty() const {
    m_descriptors.clear();
    if (m_positions != nullptr) {
      m_positions->clear();
      m_surface_vectors_a->clear();
      m_surface_vectors_b->clear();
    }
  }

  void evaluate(CtxEval const& context, GeometryObject const& object,
                GMathMatrix4x4<double> const& matrix) const {
    if (m_positions != nullptr) {
      compute_world_samples(context, object, matrix, m_descriptors, *m_positions,
                            *m_surface_vectors_a, *m_surface_vectors_b);
    }
  }
};

// Places `count` points at `density` from the built table, frees the
// table, evaluates the descriptors if asked and writes the spacing. Blue
// noise needs the spacing for its dart radius, so it writes it first; white
// noise writes it last.
void place_and_finish(Noise const& noise, CtxEval const& context, GeometryObject const& object,
                      GMathMatrix4x4<double> const& matrix, unsigned int const& group,
                      unsigned int const& count, double const& density,
                      CoreArray<PrimitiveArea>& table, SurfaceOutputs const& outputs,
                      double& spacing) {
  if (noise == Noise::k_blue) {
    spacing = 1.0 / std::sqrt(density);
    double const dart_radius = spacing * 0.5;
    place_blue_noise_samples(context, object, matrix, group, count, density, dart_radius, table,
                             outputs.m_descriptors);
  } else {
    place_random_samples(count, density, table, outputs.m_descriptors);
  }
  table.clear();
  outputs.evaluate(context, object, matrix);
  if (noise == Noise::k_random)
    spacing = 1.0 / std::sqrt(density);
}

bool scatter_count(Noise const& noise, CtxEval const& context, GeometryObject const& object,
                   GMathMatrix4x4<double> const& matrix, unsigned int const& count,
                   SurfaceOutputs const& outputs, double& spacing, unsigned int const& group) {
  if (count == 0) {
    outputs.empty();
    return true;
  }
  CoreArray<PrimitiveArea> table;
  double total;
  build_area_table(context, object, matrix, group, table, total);
  double const density = static_cast<double>(count) / total;
  place_and_finish(noise, context, object, matrix, group, count, density, table, outputs, spacing);
  return true;
}

bool scatter_density(Noise const& noise, CtxEval const& context, GeometryObject const& object,
                     GMathMatrix4x4<double> const& matrix, double const& density,
                     SurfaceOutputs const& outputs, double& spacing, unsigned int const& group) {
  CoreArray<PrimitiveArea> table;
  double total;
  build_area_table(context, object, matrix, group, table, total);
  unsigned int const count = truncate_to_u32(total * density);
  if (count == 0) {
    outputs.empty();
    return true;
  }
  place_and_finish(noise, context, object, matrix, group, count, density, table, outputs, spacing);
  return true;
}

}  // namespace

bool Sampling::surface_random_noise_count(CtxEval const& context, GeometryObject const& object,
                                          GMathMatrix4x4<double> const& matrix,
                                          unsigned int const& count,
                                          CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                                          double& spacing, unsigned int const& group) {
  return scatter_count(Noise::k_random, context, object, matrix, count,
                       SurfaceOutputs{descriptors, nullptr, nullptr, nullptr}, spacing, group);
}

bool Sampling::surface_random_noise_count(
    CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
    unsigned int const& count, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
    CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
    CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group) {
  return scatter_count(
      Noise::k_random, context, object, matrix, count,
      SurfaceOutputs{descriptors, &positions, &surface_vectors_a, &surface_vectors_b}, spacing,
      group);
}

bool Sampling::surface_random_noise_density(
    CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
    double const& density, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
    double& spacing, unsigned int const& group) {
  return scatter_density(Noise::k_random, context, object, matrix, density,
                         SurfaceOutputs{descriptors, nullptr, nullptr, nullptr}, spacing, group);
}

bool Sampling::surface_random_noise_density(
    CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
    double const& density, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
    CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
    CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group) {
  return scatter_density(
      Noise::k_random, context, object, matrix, density,
      SurfaceOutputs{descriptors, &positions, &surface_vectors_a, &surface_vectors_b}, spacing,
      group);
}

bool Sampling::surface_blue_noise_count(CtxEval const& context, GeometryObject const& object,
                                        GMathMatrix4x4<double> const& matrix,
                                        unsigned int const& count,
                                        CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                                        double& spacing, unsigned int const& group) {
  return scatter_count(Noise::k_blue, context, object, matrix, count,
                       SurfaceOutputs{descriptors, nullptr, nullptr, nullptr}, spacing, group);
}

bool Sampling::surface_blue_noise_count(
    CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
    unsigned int const& count, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
    CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
    CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group) {
  return scatter_count(
      Noise::k_blue, context, object, matrix, count,
      SurfaceOutputs{descriptors, &positions, &surface_vectors_a, &surface_vectors_b}, spacing,
      group);
}

bool Sampling::surface_blue_noise_density(CtxEval const& context, GeometryObject const& object,
                                          GMathMatrix4x4<double> const& matrix,
                                          double const& density,
                                          CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
                                          double& spacing, unsigned int const& group) {
  return scatter_density(Noise::k_blue, context, object, matrix, density,
                         SurfaceOutputs{descriptors, nullptr, nullptr, nullptr}, spacing, group);
}

bool Sampling::surface_blue_noise_density(
    CtxEval const& context, GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
    double const& density, CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors,
    CoreArray<GMathVec3<double>>& positions, CoreArray<GMathVec3<double>>& surface_vectors_a,
    CoreArray<GMathVec3<double>>& surface_vectors_b, double& spacing, unsigned int const& group) {
  return scatter_density(
      Noise::k_blue, context, object, matrix, density,
      SurfaceOutputs{descriptors, &positions, &surface_vectors_a, &surface_vectors_b}, spacing,
      group);
}

bool Sampling::surface_uniform(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                               double const&, CoreArray<GeometryPrimitiveSampleDescriptor>&,
                               CoreArray<GMathVec3<double>>&, CoreArray<GMathVec3<double>>&,
                               CoreArray<GMathVec3<double>>&, double&, unsigned int const&,
                               bool const&) {
  return false;
}
