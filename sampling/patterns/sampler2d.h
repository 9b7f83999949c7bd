#pragma once

#include "platform/math/gmath_vec2.h"
#include "sampling/sampling_export.h"

// Base record of every sample pattern: three callbacks and the two counts.
//
// A sampler hands out N points of the closed unit square [0,1]^2, one by
// index, all at once, or packet by packet together with the packet's box
// corner0 = (umin, vmin), corner1 = (umax, vmax). Concrete samplers are
// records that begin with these five fields; they choose their behaviour by
// storing callbacks (private static functions of the concrete class), so a
// query is one indirect call and no virtual table is involved. Records are
// copied by plain assignment and own nothing.
class SAMPLING_API Sampler2d {
 public:
  typedef void (*GetSampleCallback)(Sampler2d&, unsigned int const&, GMathVec2<double>&);
  typedef void (*GetAllSamplesCallback)(Sampler2d&, GMathVec2<double>*);
  typedef unsigned int (*GetPacketSamplesCallback)(Sampler2d&, unsigned int const&,
                                                   GMathVec2<double>*, GMathVec2<double>&,
                                                   GMathVec2<double>&);

  // Writes sample number `index` (index below get_sample_count()).
  void get_sample(unsigned int const& index, GMathVec2<double>& sample) {
    m_get_sample_callback(*this, index, sample);
  }

  // Writes samples 0 to N-1 into samples[0..N-1]; the array must hold N.
  void get_all_samples(GMathVec2<double>* samples) { m_get_all_samples_callback(*this, samples); }

  // Writes the samples of packet `packet` (below get_packet_count()) at the
  // front of `samples` and the packet's box; returns how many were written.
  // The array must hold the largest packet of the sampler.
  unsigned int get_packet_samples(unsigned int const& packet, GMathVec2<double>* samples,
                                  GMathVec2<double>& corner0, GMathVec2<double>& corner1) {
    return m_get_packet_samples_callback(*this, packet, samples, corner0, corner1);
  }

  // N, the number of samples of the pattern.
  unsigned int const& get_sample_count() const { return m_sample_count; }
  // P, the number of packets.
  unsigned int const& get_packet_count() const { return m_packet_count; }

  // Copies the five base fields.
  Sampler2d& operator=(Sampler2d const& other) = default;

 protected:
  // Sets nothing: a concrete sampler stores its callbacks itself.
  Sampler2d() {}
  Sampler2d(Sampler2d const& other) = default;

  void init(unsigned int const& sample_count, unsigned int const& packet_count) {
    m_sample_count = sample_count;
    m_packet_count = packet_count;
  }

  void set_callbacks(GetSampleCallback sample_callback, GetAllSamplesCallback all_samples_callback,
                     GetPacketSamplesCallback packet_samples_callback) {
    m_get_sample_callback = sample_callback;
    m_get_all_samples_callback = all_samples_callback;
    m_get_packet_samples_callback = packet_samples_callback;
  }

  // Stores callbacks written against the concrete record type S. Each is
  // reached through a small thunk that restores the concrete type with a
  // static_cast (the callee is inlined into it), so no call goes through a
  // function pointer of the wrong type.
  template <typename S, void (*GetSample)(S&, unsigned int const&, GMathVec2<double>&),
            void (*GetAllSamples)(S&, GMathVec2<double>*),
            unsigned int (*GetPacketSamples)(S&, unsigned int const&, GMathVec2<double>*,
                                             GMathVec2<double>&, GMathVec2<double>&)>
  void set_callbacks() {
    set_callbacks(&get_sample_thunk<S, GetSample>, &get_all_samples_thunk<S, GetAllSamples>,
                  &get_packet_samples_thunk<S, GetPacketSamples>);
  }

  GetSampleCallback m_get_sample_callback;
  GetAllSamplesCallback m_get_all_samples_callback;
  GetPacketSamplesCallback m_get_packet_samples_callback;
  unsigned int m_sample_count;
  unsigned int m_packet_count;

 private:
  template <typename S, void (*F)(S&, unsigned int const&, GMathVec2<double>&)>
  static void get_sample_thunk(Sampler2d& s, unsigned int const& i, GMathVec2<double>& out) {
    F(static_cast<S&>(s), i, out);
  }
  template <typename S, void (*F)(S&, GMathVec2<double>*)>
  static void get_all_samples_thunk(Sampler2d& s, GMathVec2<double>* out) {
    F(static_cast<S&>(s), out);
  }
  template <typename S, unsigned int (*F)(S&, unsigned int const&, GMathVec2<double>*,
                                          GMathVec2<double>&, GMathVec2<double>&)>
  static unsigned int get_packet_samples_thunk(Sampler2d& s, unsigned int const& p,
                                               GMathVec2<double>* out, GMathVec2<double>& c0,
                                               GMathVec2<double>& c1) {
    return F(static_cast<S&>(s), p, out, c0, c1);
  }
};

static_assert(sizeof(Sampler2d) == 32, "Sampler2d: three callbacks and two 32-bit counts");
