#include "sampling/patterns/hierarchical_sampler2d.h"
#include "sampling/sampling.h"

// The library's only process-wide state is the hierarchical sampler's
// permutation table; starting and ending the library is creating and freeing
// it.

void Sampling::init() {
  HierarchicalSampler2d::init();
}

void Sampling::destroy() {
  HierarchicalSampler2d::destroy();
}
