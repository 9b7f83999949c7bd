#include "sampling/surface/area_table.h"

#include <algorithm>
#include <cstddef>

#include "platform/geometry/geometry_intersection.h"
#include "sampling/checks.h"

namespace {

void fill_entry(CtxEval const& context, GeometryObject const& object,
                GMathMatrix4x4<double> const& matrix, unsigned int const& primitive,
                PrimitiveArea& entry, double& total) {
  entry.m_primitive = primitive;
  entry.m_vertex_count = object.get_primitive_vertex_count(primitive);
  entry.m_area = object.get_primitive_area(context, primitive, matrix);
  total = total + entry.m_area;
}

// Pending range [m_begin, m_end) of the quicksort.
struct SortRange {
  std::ptrdiff_t m_begin;
  std::ptrdiff_t m_end;
};

constexpr int k_sort_stack_size = 256;

}  // namespace

void build_area_table(CtxEval const& context, GeometryObject const& object,
                      GMathMatrix4x4<double> const& matrix, unsigned int const& group,
                      CoreArray<PrimitiveArea>& table, double& total) {
  total = 0.0;
  unsigned int const n = object.get_primitive_count();
  if (group == k_all_groups) {
    table.resize(n);
    for (unsigned int i = 0; i < n; ++i)
      fill_entry(context, object, matrix, i, table[i], total);
  } else {
    unsigned int selected = 0;
    for (unsigned int i = 0; i < n; ++i) {
      if (object.get_primitive_group(i) == group)
        ++selected;
    }
    table.resize(selected);
    unsigned int k = 0;
    for (unsigned int i = 0; i < n; ++i) {
      if (object.get_primitive_group(i) == group) {
        fill_entry(context, object, matrix, i, table[k++], total);
      }
    }
  }
  sort_by_area(table);
}

void sort_by_area(CoreArray<PrimitiveArea>& table) {
  PrimitiveArea* const begin = table.begin();
  PrimitiveArea* const end = table.end();
  for (std::size_t i = 0; i < table.count(); ++i) {
    bool const in_order = i == 0 || table[i - 1].m_primitive < table[i].m_primitive;
    if (!in_order || table[i].m_area != table[i].m_area) {
      sort_by_area_quicksort(table);
      return;
    }
  }
  std::sort(begin, end,
            [](PrimitiveArea const& a, PrimitiveArea const& b) { return a.m_area > b.m_area; });
  auto const tie = std::adjacent_find(
      begin, end,
      [](PrimitiveArea const& a, PrimitiveArea const& b) { return a.m_area == b.m_area; });
  if (tie == end)
    return;
  std::sort(begin, end, [](PrimitiveArea const& a, PrimitiveArea const& b) {
    return a.m_primitive < b.m_primitive;
  });
  sort_by_area_quicksort(table);
}

void sort_by_area_quicksort(CoreArray<PrimitiveArea>& table) {
  SortRange stack[k_sort_stack_size];
  int top = 0;
  stack[top++] = SortRange{0, static_cast<std::ptrdiff_t>(table.count())};
  while (top > 0) {
    std::ptrdiff_t const begin = stack[top - 1].m_begin;
    std::ptrdiff_t const end = stack[top - 1].m_end;
    std::ptrdiff_t left = begin;
    std::ptrdiff_t right = end - 1;
    if (left >= right) {
      --top;
      continue;
    }
    PrimitiveArea const pivot = table[left];
    while (left < right) {
      while (table[right].m_area < pivot.m_area && left < right)
        --right;
      if (left < right)
        table[left++] = table[right];
      while (table[left].m_area > pivot.m_area && left < right)
        ++left;
      if (left < right)
        table[right--] = table[left];
    }
    table[left] = pivot;
    // The shorter side goes on top, so the stack depth stays logarithmic.
    SAMPLING_CHECK(top < k_sort_stack_size, "sort_by_area_quicksort: range stack overflow");
    stack[top - 1] = SortRange{begin, left};
    stack[top] = SortRange{left + 1, end};
    if (stack[top].m_end - stack[top].m_begin > stack[top - 1].m_end - stack[top - 1].m_begin) {
      SortRange const longer = stack[top];
      stack[top] = stack[top - 1];
      stack[top - 1] = longer;
    }
    ++top;
  }
}

void prepare_sample_record(GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
                           GeometryFragment& record) {
  record.m_object = &object;
  record.m_root_object = &object;
  record.m_sample_scalar = object.get_sample_scalar();
  record.m_matrix = matrix;
}

void compute_world_samples(CtxEval const& context, GeometryObject const& object,
                           GMathMatrix4x4<double> const& matrix,
                           CoreArray<GeometryPrimitiveSampleDescriptor> const& descriptors,
                           CoreArray<GMathVec3<double>>& positions,
                           CoreArray<GMathVec3<double>>& surface_vectors_a,
                           CoreArray<GMathVec3<double>>& surface_vectors_b) {
  std::size_t const n = descriptors.count();
  positions.resize(n);
  surface_vectors_a.resize(n);
  surface_vectors_b.resize(n);
  GeometryIntersection record;
  GeometryFragment& fragment = record;
  prepare_sample_record(object, matrix, fragment);
  for (std::size_t k = 0; k < n; ++k) {
    fragment.m_primitive = descriptors[k].m_primitive;
    fragment.m_uvw = GMathVec3<double>(descriptors[k].m_u, descriptors[k].m_v, 0.0);
    fragment.compute_world_sample(context);
    positions[k] = fragment.m_world_position;
    surface_vectors_a[k] = fragment.m_world_normal;
    surface_vectors_b[k] = fragment.m_world_dpdu;
  }
}
