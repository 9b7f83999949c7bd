#pragma once

#include "sampling/patterns/hierarchical_sampler2d.h"
#include "sampling/sampling.h"

// Reaches the private shared table of HierarchicalSampler2d for the tests.
struct HierarchicalSampler2dAccess {
  static unsigned int* get_indices(unsigned int const& count) {
    return HierarchicalSampler2d::get_indices(count);
  }
  static CoreAtomic64* table() { return HierarchicalSampler2d::m_table; }
  static unsigned int table_size() { return HierarchicalSampler2d::m_table_size; }
  static unsigned int const* indices(HierarchicalSampler2d const& sampler) {
    return sampler.m_indices;
  }
};

// Holds the library started for the length of a test, so that every test
// ends with the table freed (the leak checker of the sanitizer build sees
// any permutation left behind).
struct LibraryScope {
  LibraryScope() { Sampling::init(); }
  ~LibraryScope() { Sampling::destroy(); }
};
