// Containers, atomics, math records and the Mersenne Twister of the platform
// layer, as the sampling code relies on them.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <utility>

#include "platform/core/core_array.h"
#include "platform/core/core_atomic64.h"
#include "platform/math/gmath_bbox3.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "platform/random/grandom_fast_mt.h"
#include "platform/random/grandom_mt.h"
#include "tests/support/placement.h"

TEST(CoreArray, ResizeZeroesResizeKeepKeepsCopiesAreDeep) {
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
  EXPECT_TRUE(a.count() == 5 && a[2] == V(3, -1) && a[3] == V() && a[4] == V());
  a.resize_keep(2);
  EXPECT_TRUE(a.count() == 2 && a[1] == V(2, -1));
  CoreArray<V> b(a), c;
  c = a;
  a[1] = V(9, 9);
  EXPECT_TRUE(b[1] == V(2, -1) && c[1] == V(2, -1) && b.data() != a.data());
  c = c;
  EXPECT_TRUE(c.count() == 2 && c[0] == V(1, -1));
  CoreArray<V> d(std::move(a));
  EXPECT_TRUE(a.empty() && a.data() == nullptr && d[1] == V(9, 9));
  // Size 0 leaves no buffer, whichever way it is reached.
  d.resize(0);
  EXPECT_TRUE(d.empty() && d.data() == nullptr);
  d.resize(4);
  d.resize_keep(0);
  EXPECT_TRUE(d.empty() && d.data() == nullptr);
  b.clear();
  EXPECT_TRUE(b.empty() && b.data() == nullptr);
}

TEST(CoreAtomic64, CompareAndSwapReturnsTheValueFoundOverAll64Bits) {
  CoreAtomic64 cell;
  std::uint64_t const big = 0x123456789ABCDEF0ull;
  EXPECT_EQ(cell.compare_and_swap(0, big), 0u);
  EXPECT_EQ(cell.compare_and_swap(0, 5), big);
  EXPECT_EQ(cell.compare_and_swap(big & 0xFFFFFFFFull, 5), big);
  EXPECT_EQ(cell.compare_and_swap(big, ~0ull), big);
  EXPECT_EQ(cell.get(), ~0ull);
}

TEST(GMathRecords, RowMajorMatricesReciprocalDivisionAndBoxes) {
  GMathMatrix3x3<double> m3(1, 2, 3, 4, 5, 6, 7, 8, 9);
  EXPECT_EQ(m3.column(2), GMathVec3<double>(3, 6, 9));
  // The 4x4 translation sits in the fourth column; the fourth row is never read.
  GMathMatrix4x4<double> m4 = scaled_and_moved(1, 1, 1, 1, 2, 3);
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
  for (GMathVec3<double> const q :
       {GMathVec3<double>(0, 2, 3), GMathVec3<double>(1, 1, 3), GMathVec3<double>(1, 2, 2)})
    EXPECT_TRUE(GMathBbox3<double>(p, q).is_empty());
  EXPECT_EQ(cross(GMathVec3<double>(1, 0, 0), GMathVec3<double>(0, 1, 0)),
            GMathVec3<double>(0, 0, 1));
}

// A ray starts with no differentials and every auxiliary value 0: tracers
// accumulate into m_aux_cleared from there.
TEST(GRandomMt, MatchesStdMt19937AndTheFastTableIsTheDefaultStream) {
  for (unsigned int seed : {0u, 1u, 5489u, 4294967295u}) {
    GRandomMt mt(seed);
    std::mt19937 reference(seed);
    for (int i = 0; i < 2000; ++i)
      ASSERT_EQ(mt.genrand_int32(), reference()) << "seed " << seed << " output " << i;
    mt.seed(seed);  // reseeding restarts the stream
    reference.seed(seed);
    EXPECT_EQ(mt.genrand_int32(), reference()) << "seed " << seed;
  }
  std::mt19937 reference(5489u);
  for (unsigned int j = 0; j < GRandomFastMt::m_table_size; ++j)
    ASSERT_EQ(GRandomFastMt::m_table[j], reference()) << "entry " << j;
  EXPECT_EQ(GRandomFastMt::m_table_size, 65536u);
  EXPECT_EQ(GRandomMt().genrand_int32(), 3499211612u);  // the default seed, 5489
}
