#pragma once

#include <cstdio>
#include <string>
#include <vector>

class Gallery;

// Direct lighting from a disk light, three ways: the error of the estimate of
// the light reflected by a white Lambertian point (albedo 1, radiance 1 on the
// light) as a function of the ray count N, for
//  - cosine: CosineWeightedHemisphereRayGenerator about the normal, each ray
//    scored f / pdf when it meets the light;
//  - light: DiskRayGenerator towards uniform points of the light, scored
//    f / pdf with the disk's density per unit solid angle;
//  - MIS: N/2 rays of each, combined by the balance heuristic, each scored
//    f / (n_c pdf_c + n_l pdf_l) with both generators' own pdf().
// The light is close and tilted, so each single strategy has a region where
// its density is far from the integrand: near the light's low rim the disk's
// density t^2 / |cos| per solid angle is small while the cosine lobe is
// large, and most cosine rays miss the light altogether. The balance
// heuristic leans on whichever density is larger, so it beats both at every
// N (the demo prints the table). The exact value comes from quadrature over
// the light's area.
class MisStudy {
 public:
  static constexpr unsigned int k_trials = 256;
  static constexpr unsigned int k_min_count = 16;
  static constexpr unsigned int k_max_count = 4096;

  MisStudy();

  // Runs the three estimators for every N and trial.
  void run();
  // mis.csv: strategy, count, rmse.
  bool write_csv(std::string const& path) const;
  // mis_direct_lighting.svg, listed in the gallery.
  bool write_plot(Gallery& gallery) const;
  // The study's first line, printed before run() (which takes about a
  // second) so that the wait has a name.
  static void print_heading(std::FILE* out);
  // The exact value and the RMSE table, one row per N, under the heading.
  void print_table(std::FILE* out) const;

  static char const* const k_strategies[3];

 private:
  double m_exact;
  std::vector<unsigned int> m_counts;
  // m_rmse[strategy * counts + count].
  std::vector<double> m_rmse;
};
