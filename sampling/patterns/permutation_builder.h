#pragma once

// Builder of the shared index permutations of the hierarchical sampler's
// Hammersley mode. Internal: not exported from the library.

// Reorders indices[0..count-1], which must hold 0 to count-1, into the order
// in which the hierarchical sampler walks the Hammersley set of `count`
// points q(k) = (radical_inverse_2(k), k / count).
//
// A greedy walk: the first point is drawn from the platform random table;
// each following one is the best of K candidates drawn from the points not
// placed yet (K = (points left) / 4, clamped to 1..16), the best being the
// one whose squared distance to the point placed last is closest to 0.8, so
// consecutive points lie about 0.89 apart. Candidates read consecutive
// entries of GRandomFastMt's table, so the result depends only on `count`
// and that table: every run and every thread builds the same permutation.
// Caller guarantees: count >= 1.
void build_indices(unsigned int* indices, unsigned int const& count);
