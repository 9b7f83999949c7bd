#pragma once

#include <cstring>

#include "platform/math/gmath_ray.h"

// True when every field of the two rays has the same bits (the padding of
// the record is not compared): the check of the fast-path tests.
inline bool same_ray_bits(GMathRay const& a, GMathRay const& b) {
  auto same = [](void const* x, void const* y, std::size_t n) { return std::memcmp(x, y, n) == 0; };
  return same(&a.m_origin, &b.m_origin, sizeof a.m_origin) &&
         same(&a.m_direction, &b.m_direction, sizeof a.m_direction) &&
         same(&a.m_inverse_direction, &b.m_inverse_direction, sizeof a.m_inverse_direction) &&
         same(a.m_sign, b.m_sign, sizeof a.m_sign) && a.m_major_axis == b.m_major_axis &&
         a.m_has_differentials == b.m_has_differentials &&
         same(&a.m_differential, &b.m_differential, sizeof a.m_differential) &&
         same(&a.m_time, &b.m_time, sizeof a.m_time) && same(a.m_aux, b.m_aux, sizeof a.m_aux) &&
         same(a.m_aux_cleared, b.m_aux_cleared, sizeof a.m_aux_cleared) && a.m_type == b.m_type;
}
