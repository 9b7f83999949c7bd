#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/core/core_array.h"
#include "platform/core/core_atomic64.h"
#include "platform/math/gmath_bbox3.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"

TEST(CoreArray, ResizeZeroesResizeKeepKeepsClearFrees) {
  using V = GMathVec2<double>;
  CoreArray<V> a(3);
  auto const fill = [&a] {
    for (std::size_t i = 0; i < a.count(); ++i)
      a[i] = V(i + 1.0, -1.0);
  };
  fill();
  a.resize(3);  // discards: the same size comes back zeroed
  EXPECT_TRUE(a[0] == V() && a[1] == V() && a[2] == V());
  fill();
  a.resize_keep(5);
  ASSERT_EQ(a.count(), 5u);
  EXPECT_TRUE(a[2] == V(3, -1) && a[3] == V() && a[4] == V());
  a.resize_keep(2);
  ASSERT_EQ(a.count(), 2u);
  EXPECT_EQ(a[1], V(2, -1));
  // Size 0 leaves no buffer, whichever way it is reached.
  a.resize(0);
  EXPECT_TRUE(a.empty() && a.data() == nullptr);
  a.resize(4);
  a.resize_keep(0);
  EXPECT_TRUE(a.empty() && a.data() == nullptr);
  a.resize(2);
  a.clear();
  EXPECT_TRUE(a.empty() && a.data() == nullptr);
}

TEST(CoreArray, CopiesAreDeepAndMovesEmptyTheSource) {
  CoreArray<double> a(4);
  for (std::size_t i = 0; i < 4; ++i)
    a[i] = 0.5 * i;
  CoreArray<double> b(a), c;
  c = a;
  a[1] = 9.0;
  EXPECT_TRUE(b[1] == 0.5 && c[1] == 0.5 && b.data() != a.data());
  c = c;
  EXPECT_TRUE(c.count() == 4 && c[3] == 1.5);
  CoreArray<double> d(std::move(a));
  EXPECT_TRUE(a.empty() && a.data() == nullptr && d[1] == 9.0);
}

TEST(CoreAtomic64, CompareAndSwapReturnsTheValueFound) {
  CoreAtomic64 cell;
  EXPECT_EQ(cell.get(), 0u);
  std::uint64_t const big = 0x123456789ABCDEF0ull;
  EXPECT_EQ(cell.compare_and_swap(0, big), 0u);  // success returns expected
  EXPECT_EQ(cell.get(), big);
  EXPECT_EQ(cell.compare_and_swap(0, 5), big);  // failure returns what is there
  EXPECT_EQ(cell.get(), big);
  // All 64 bits take part in the comparison.
  EXPECT_EQ(cell.compare_and_swap(big & 0xFFFFFFFFull, 5), big);
  EXPECT_EQ(cell.compare_and_swap(big, ~0ull), big);
  EXPECT_EQ(cell.get(), ~0ull);
}

TEST(GMathRecords, MatricesAreRowMajorWithTheTranslationInTheFourthColumn) {
  // Row-major matrices; the 4x4 translation sits in the fourth column and the
  // fourth row is never read.
  GMathMatrix3x3<double> m3(1, 2, 3, 4, 5, 6, 7, 8, 9);
  EXPECT_EQ(m3(1, 2), 6.0);
  EXPECT_EQ(m3.column(2), GMathVec3<double>(3, 6, 9));
  GMathMatrix4x4<double> m4 = GMathMatrix4x4<double>::translation(1, 2, 3);
  EXPECT_EQ(m4[3], 1.0);
  EXPECT_EQ(m4[7], 2.0);
  EXPECT_EQ(m4[11], 3.0);
  m4[12] = m4[13] = m4[14] = m4[15] = 1e300;
  EXPECT_EQ(m4.transform_point(GMathVec3<double>(1, 1, 1)), GMathVec3<double>(2, 3, 4));
  EXPECT_EQ(m4.transform_vector(GMathVec3<double>(1, 1, 1)), GMathVec3<double>(1, 1, 1));
  // Division by a scalar is a product by its reciprocal: 5 * (1/3) is one
  // unit in the last place below 5 / 3.
  EXPECT_EQ((GMathVec3<double>(5, 7, 10) / 3.0).x, 5.0 * (1.0 / 3.0));
  EXPECT_NE((GMathVec3<double>(5, 7, 10) / 3.0).x, 5.0 / 3.0);
  // A box is empty when inverted along any axis; a flat one is not.
  GMathVec3<double> const p(1, 2, 3);
  EXPECT_FALSE(GMathBbox3<double>(p, p).is_empty());
  EXPECT_TRUE(GMathBbox3<double>(p, GMathVec3<double>(2, 1, 4)).is_empty());
  EXPECT_EQ(cross(GMathVec3<double>(1, 0, 0), GMathVec3<double>(0, 1, 0)),
            GMathVec3<double>(0, 0, 1));
}
