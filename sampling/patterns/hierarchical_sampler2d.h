#pragma once

#include "platform/core/core_atomic64.h"
#include "sampling/patterns/sampler2d.h"
#include "sampling/patterns/single_packet_callbacks.h"

// One set of a hierarchical pattern: a pattern of M = count * set_count
// points split into set_count sets of count samples, of which init selects
// set number set_index. Samplers initialised with the same seed and mode and
// the set indices 0, 1, 2, ... never repeat a point and together make up the
// whole pattern. All samples form one packet (box (0,0) to (1,1)).
//
// Modes (the pattern of the next init):
//  - RANDOM: pairs of entries of the platform's precomputed Mersenne Twister
//    table, each mapped by unit_from_u32; [0,1]^2, edges reachable. Set c
//    reads the pairs count * c, count * c + 1, ... after the seed's starting
//    entry. Any value other than the four below behaves as RANDOM.
//  - HAMMERSLEY (default): the M-point Hammersley set u = radical_inverse_2(
//    j + seed mod 65536), v = (j + radical_inverse_3(seed)) / M, walked in a
//    shared order in which consecutive points lie far apart; set c reads
//    count consecutive positions of that order, starting count * c after
//    the seed's own position. [0,1)^2. Needs 1 <= M <= 2048 and the shared
//    table of Sampling::init; otherwise it serves the HALTON pattern of the
//    same seed and set, while get_mode() still reports HAMMERSLEY.
//  - HALTON: consecutive Halton points in bases 2 and 3 from element
//    seed mod 65536 + count * set_index; [0,1)^2.
//  - SOBOL: consecutive elements of the first two Sobol components from
//    element seed mod 65536 + count * set_index + 1, each XOR-scrambled by
//    masks drawn from the platform table with the full seed; [0,1]^2.
//
// Records are plain and copied by assignment; in the HAMMERSLEY mode a copy
// shares the address of the permutation, which Sampling::destroy frees.
class SAMPLING_API HierarchicalSampler2d : public Sampler2d {
 public:
  enum Mode : unsigned int { RANDOM = 0, HAMMERSLEY = 1, HALTON = 2, SOBOL = 3 };

  // Stores the mode only: init() must run before the first query.
  explicit HierarchicalSampler2d(Mode const& mode = HAMMERSLEY) : m_mode(mode) {}
  HierarchicalSampler2d(HierarchicalSampler2d const& other) = default;

  // Sets up set `set_index` of the pattern of M = count * set_count points
  // (modulo 2^32) for the current mode and stores that mode's callbacks:
  // N = count samples, one packet. Seeds that differ by a multiple of 65536
  // give the same RANDOM and HALTON patterns; the SOBOL scramble and the
  // HAMMERSLEY start and v offset use all 32 bits of the seed.
  // set_index is meant to be below set_count (a larger one continues the
  // pattern past its end). Caller guarantees: in the HAMMERSLEY mode,
  // Sampling::init has run. In that mode the first init for a given M builds
  // the shared permutation (the only allocation); many threads may run init
  // at once, each on its own sampler, and all get the same permutation.
  void init(unsigned int const& seed, unsigned int const& count, unsigned int const& set_count,
            unsigned int const& set_index);

  // The mode of the next init; changes nothing until then.
  void set_mode(Mode const& mode) { m_mode = mode; }
  Mode const& get_mode() const { return m_mode; }

  HierarchicalSampler2d& operator=(HierarchicalSampler2d const& other) = default;

  // Creates the process-wide permutation table (2048 empty slots) unless it
  // exists. Reached through Sampling::init; not synchronised: call it before
  // any other thread uses the library.
  static void init();
  // Frees every permutation and the table; nothing without a table. Reached
  // through Sampling::destroy, after all threads have stopped using the
  // library; samplers still holding a permutation must not be used after it.
  static void destroy();

 private:
  // The point function of each mode: (u, v) of sample `index`.
  SAMPLING_LOCAL void get_random_sample(unsigned int const& index, double& u, double& v) const;
  SAMPLING_LOCAL void get_hammersley_sample(unsigned int const& index, double& u, double& v) const;
  SAMPLING_LOCAL void get_halton_sample(unsigned int const& index, double& u, double& v) const;
  SAMPLING_LOCAL void get_sobol_sample(unsigned int const& index, double& u, double& v) const;
  // Coordinates of Halton element n and of Sobol element n + 1.
  SAMPLING_LOCAL void get_halton_sample_u(unsigned int const& n, double& u) const;
  SAMPLING_LOCAL void get_halton_sample_v(unsigned int const& n, double& v) const;
  SAMPLING_LOCAL void get_sobol_sample_u(unsigned int const& n, double& u) const;
  SAMPLING_LOCAL void get_sobol_sample_v(unsigned int const& n, double& v) const;

  typedef SinglePacketCallbacks<HierarchicalSampler2d, &HierarchicalSampler2d::get_random_sample>
      RandomCallbacks;
  typedef SinglePacketCallbacks<HierarchicalSampler2d,
                                &HierarchicalSampler2d::get_hammersley_sample>
      HammersleyCallbacks;
  typedef SinglePacketCallbacks<HierarchicalSampler2d, &HierarchicalSampler2d::get_halton_sample>
      HaltonCallbacks;
  typedef SinglePacketCallbacks<HierarchicalSampler2d, &HierarchicalSampler2d::get_sobol_sample>
      SobolCallbacks;

  // The permutation of 0..count-1 shared by all Hammersley-mode samplers of
  // M = count, built on first demand and published lock-free: a thread that
  // finds the slot empty builds its own array and publishes it by one
  // compare-and-swap; a thread that loses the race frees its array and
  // returns the winner's. Any number of threads may call it at once.
  // Returns null for count 0 or above m_table_size, and also (so that the
  // sampler falls back to its Halton pattern) when the table is missing or
  // the array cannot be allocated. A missing table is a caller error that
  // checked builds report.
  SAMPLING_LOCAL static unsigned int* get_indices(unsigned int const& count);

  SAMPLING_LOCAL static void get_all_samples_random_callback(HierarchicalSampler2d& sampler,
                                                             GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_packet_samples_random_callback(
      HierarchicalSampler2d& sampler, unsigned int const& packet, GMathVec2<double>* samples,
      GMathVec2<double>& corner0, GMathVec2<double>& corner1);
  SAMPLING_LOCAL static void get_all_samples_hammersley_callback(HierarchicalSampler2d& sampler,
                                                                 GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_packet_samples_hammersley_callback(
      HierarchicalSampler2d& sampler, unsigned int const& packet, GMathVec2<double>* samples,
      GMathVec2<double>& corner0, GMathVec2<double>& corner1);
  SAMPLING_LOCAL static void get_all_samples_sobol_callback(HierarchicalSampler2d& sampler,
                                                            GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_packet_samples_sobol_callback(
      HierarchicalSampler2d& sampler, unsigned int const& packet, GMathVec2<double>* samples,
      GMathVec2<double>& corner0, GMathVec2<double>& corner1);

  Mode m_mode;
  unsigned int const* m_indices;
  unsigned int m_set_count;
  unsigned int m_set_index;
  unsigned int m_point_count;
  unsigned int m_seed;
  unsigned int m_offset;
  unsigned int m_scramble_u;
  unsigned int m_scramble_v;
  double m_scale;
  double m_v_offset;

  // Slot M - 1 holds 0 or the address of the permutation for M. Null before
  // Sampling::init and after Sampling::destroy.
  SAMPLING_LOCAL static CoreAtomic64* m_table;
  SAMPLING_LOCAL static unsigned int const m_table_size;

  friend struct HierarchicalSampler2dAccess;
};

static_assert(sizeof(HierarchicalSampler2d::Mode) == 4, "HierarchicalSampler2d::Mode is 32-bit");
static_assert(sizeof(HierarchicalSampler2d) == 32 + 8 + 8 + 28 + 4 + 16,
              "HierarchicalSampler2d layout");
