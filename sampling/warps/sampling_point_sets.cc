// Fixed point sets of Sampling: rings on the unit disk and a regular grid.

#include <cmath>

#include "sampling/sampling.h"

void Sampling::disk_uniform(CoreArray<GMathVec2<double>>& points, unsigned int const& n) {
  if (n == 0) {
    points.resize(0);
    return;
  }
  unsigned int const total = n * n;
  points.resize(total);
  unsigned int const rings = n / 2;
  unsigned int m = 4 * n - 4;
  double r;
  double dr;
  if (n & 1u) {
    r = 1.0;
    dr = 2.0 / static_cast<double>(n - 1);
  } else {
    r = static_cast<double>(n - 1) / static_cast<double>(n);
    dr = 2.0 / static_cast<double>(n);
  }
  // Ring radii and angles are accumulated, not recomputed from the index.
  unsigned int written = 0;
  for (unsigned int ring = 0; ring < rings; ++ring) {
    double const dphi = k_sampling_two_pi / static_cast<double>(m);
    double phi = 0.0;
    for (unsigned int j = 0; j < m; ++j) {
      points[written++] = GMathVec2<double>(std::cos(phi) * r, std::sin(phi) * r);
      phi += dphi;
    }
    m -= 8;
    r -= dr;
  }
  if (written < total)
    points[written] = GMathVec2<double>(0.0, 0.0);
}

void Sampling::grid_uniform(CoreArray<GMathVec2<double>>& points, unsigned int const& n,
                            GMathVec2<double> const& minimum, GMathVec2<double> const& maximum) {
  if (n == 0) {
    points.resize(0);
    return;
  }
  points.resize(n * n);
  double const step = n > 1 ? 1.0 / static_cast<double>(n - 1) : 0.0;
  double const dx = (maximum.x - minimum.x) * step;
  double const dy = (maximum.y - minimum.y) * step;
  GMathVec2<double>* out = points.data();
  double y = minimum.y;
  for (unsigned int row = 0; row < n; ++row) {
    double x = minimum.x;
    for (unsigned int col = 0; col < n; ++col) {
      *out++ = GMathVec2<double>(x, y);
      x += dx;
    }
    y += dy;
  }
}
