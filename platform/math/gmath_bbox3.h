#pragma once

#include <algorithm>
#include <limits>

#include "platform/math/gmath_vec3.h"

// Axis-aligned box given by its minimum and maximum corners. A default box is
// empty (minimum above maximum) so that growing it by a first point yields
// that point.
template <typename T>
struct GMathBbox3 {
  GMathVec3<T> m_min;
  GMathVec3<T> m_max;

  GMathBbox3()
      : m_min(std::numeric_limits<T>::max(), std::numeric_limits<T>::max(),
              std::numeric_limits<T>::max()),
        m_max(std::numeric_limits<T>::lowest(), std::numeric_limits<T>::lowest(),
              std::numeric_limits<T>::lowest()) {}
  GMathBbox3(GMathVec3<T> const& mn, GMathVec3<T> const& mx) : m_min(mn), m_max(mx) {}

  bool is_empty() const { return m_min.x > m_max.x || m_min.y > m_max.y || m_min.z > m_max.z; }

  void add(GMathVec3<T> const& p) {
    for (int i = 0; i < 3; ++i) {
      m_min[i] = std::min(m_min[i], p[i]);
      m_max[i] = std::max(m_max[i], p[i]);
    }
  }
  void add(GMathBbox3 const& b) {
    if (b.is_empty())
      return;
    add(b.m_min);
    add(b.m_max);
  }
  // Closed-box containment.
  bool contains(GMathVec3<T> const& p) const {
    return p.x >= m_min.x && p.x <= m_max.x && p.y >= m_min.y && p.y <= m_max.y && p.z >= m_min.z &&
           p.z <= m_max.z;
  }
};
