// The samplers as Python classes. Every sampler answers through the
// Sampler2d base: one sample, all samples as an (N, 2) array, one packet with
// its box, and the boxes of all packets as a (P, 2, 2) array. init methods
// take keywords and return the sampler, so a pattern is one expression:
//   sampling.HaltonSampler2d().init(count_x=16, count_y=16).get_all_samples()
//
// Their queries keep the interpreter's lock: a sampler serves one thread at
// a time (the stratified one advances its generator), and the lock is what
// keeps two Python threads apart on one.

#include <string>

#include "platform/random/grandom_mt.h"
#include "python/src/arrays.h"
#include "python/src/module.h"
#include "sampling/samplers.h"

namespace sampling_python {
namespace {

// The stratified sampler draws from a generator that the Python object owns,
// seeded by init.
struct PyStratifiedSampler2d : StratifiedSampler2d {
  GRandomMt random;
};

void check_index(unsigned int const& index, unsigned int const& count, char const* what) {
  if (index >= count)
    fail(std::string(what) + " " + std::to_string(index) + " is outside [0, " +
         std::to_string(count) + ")");
}

py::array_t<double> get_sample(Sampler2d& s, py::handle index_value) {
  unsigned int const index = to_u32(index_value, "index");
  check_index(index, s.get_sample_count(), "index");
  GMathVec2<double> p;
  s.get_sample(index, p);
  py::array_t<double> out = new_doubles({2});
  *as_records<GMathVec2<double>>(out) = p;
  return out;
}

py::array_t<double> get_all_samples(Sampler2d& s) {
  py::array_t<double> out = new_doubles({s.get_sample_count(), 2});
  GMathVec2<double>* p = as_records<GMathVec2<double>>(out);
  s.get_all_samples(p);
  return out;
}

// Room for the largest packet: N for the stratified and single-packet
// samplers, and at most ceil((N / Py + 1) / Px) <= N + 1 for Hammersley
// packet grids.
py::ssize_t packet_room(Sampler2d const& s) {
  return py::ssize_t(s.get_sample_count()) + 2;
}

py::tuple get_packet_samples(Sampler2d& s, py::handle packet_value) {
  unsigned int const packet = to_u32(packet_value, "packet");
  check_index(packet, s.get_packet_count(), "packet");
  py::array_t<double> samples = new_doubles({packet_room(s), 2});
  py::array_t<double> corner0 = new_doubles({2});
  py::array_t<double> corner1 = new_doubles({2});
  unsigned int const n = s.get_packet_samples(packet, as_records<GMathVec2<double>>(samples),
                                              *as_records<GMathVec2<double>>(corner0),
                                              *as_records<GMathVec2<double>>(corner1));
  samples.resize({py::ssize_t(n), py::ssize_t(2)});
  return py::make_tuple(samples, corner0, corner1);
}

py::array_t<double> packet_boxes(Sampler2d& s) {
  unsigned int const count = s.get_packet_count();
  py::array_t<double> boxes = new_doubles({count, 2, 2});
  GMathVec2<double>* b = as_records<GMathVec2<double>>(boxes);
  std::vector<GMathVec2<double>> scratch(packet_room(s));
  for (unsigned int p = 0; p < count; ++p)
    s.get_packet_samples(p, scratch.data(), b[2 * p], b[2 * p + 1]);
  return boxes;
}

// Samples times 2 must fit an array and the library's 32-bit count.
unsigned int pattern_size(py::handle a, py::handle b, char const* a_name, char const* b_name,
                          char const* what) {
  return checked_product(to_u32(a, a_name), to_u32(b, b_name), what);
}

template <typename S>
using Class = py::class_<S, Sampler2d>;
auto const self = py::return_value_policy::reference;

void bind_stratified(py::module_& m) {
  Class<PyStratifiedSampler2d>(m, "StratifiedSampler2d",
                               "Jittered grid of count_x by count_y strata; a stream: every query "
                               "draws from the sampler's own Mersenne Twister.")
      .def(py::init<>())
      .def(
          "init",
          [](PyStratifiedSampler2d& s, py::handle count_x, py::handle count_y,
             py::handle packet_size_x, py::handle packet_size_y, double jitter_x, double jitter_y,
             py::handle seed) -> PyStratifiedSampler2d& {
            pattern_size(count_x, count_y, "count_x", "count_y", "count_x * count_y");
            unsigned int const px = to_u32(packet_size_x, "packet_size_x");
            unsigned int const py_ = to_u32(packet_size_y, "packet_size_y");
            if (px < 1 || py_ < 1)
              fail("packet sizes must be at least 1");
            check_range(jitter_x, 0.0, 1.0, "jitter_x");
            check_range(jitter_y, 0.0, 1.0, "jitter_y");
            s.random.seed(to_u32(seed, "seed"));
            s.init(s.random, to_u32(count_x, "count_x"), to_u32(count_y, "count_y"), px, py_,
                   jitter_x, jitter_y);
            return s;
          },
          self, py::kw_only(), py::arg("count_x"), py::arg("count_y"), py::arg("packet_size_x") = 1,
          py::arg("packet_size_y") = 1, py::arg("jitter_x") = 1.0, py::arg("jitter_y") = 1.0,
          py::arg("seed") = 5489,
          "Sets up the grid and seeds the sampler's generator (5489, the Mersenne Twister "
          "default, unless given). Returns the sampler.")
      // The boxes without advancing the stream: the generator is restored.
      .def("packet_boxes", [](PyStratifiedSampler2d& s) {
        GRandomMt const saved = s.random;
        py::array_t<double> boxes = packet_boxes(s);
        s.random = saved;
        return boxes;
      });
}

void bind_hammersley(py::module_& m) {
  Class<HammersleySampler2d>(m, "HammersleySampler2d",
                             "Two-dimensional Hammersley set of count_x * count_y points, one "
                             "packet, a packet grid or one of several disjoint sub-sets.")
      .def(py::init<>())
      .def(
          "init",
          [](HammersleySampler2d& s, py::handle count_x, py::handle count_y, py::handle seed,
             py::object packet_size_x, py::object packet_size_y) -> HammersleySampler2d& {
            pattern_size(count_x, count_y, "count_x", "count_y", "count_x * count_y");
            if (packet_size_x.is_none() != packet_size_y.is_none())
              fail("give both packet sizes or neither");
            if (packet_size_x.is_none())
              s.init(to_u32(seed, "seed"), to_u32(count_x, "count_x"), to_u32(count_y, "count_y"));
            else
              s.init(to_u32(seed, "seed"), to_u32(count_x, "count_x"), to_u32(count_y, "count_y"),
                     to_u32(packet_size_x, "packet_size_x"),
                     to_u32(packet_size_y, "packet_size_y"));
            return s;
          },
          self, py::kw_only(), py::arg("count_x"), py::arg("count_y") = 1, py::arg("seed") = 0,
          py::arg("packet_size_x") = py::none(), py::arg("packet_size_y") = py::none(),
          "One packet, or a packet grid when both packet sizes are given. Returns the sampler.")
      .def(
          "init_random",
          [](HammersleySampler2d& s, py::handle random_seed, py::handle count_x, py::handle count_y,
             py::handle packet_size_x, py::handle packet_size_y) -> HammersleySampler2d& {
            pattern_size(count_x, count_y, "count_x", "count_y", "count_x * count_y");
            GRandomMt random(to_u32(random_seed, "random_seed"));
            s.init(random, to_u32(count_x, "count_x"), to_u32(count_y, "count_y"),
                   to_u32(packet_size_x, "packet_size_x"), to_u32(packet_size_y, "packet_size_y"));
            return s;
          },
          self, py::kw_only(), py::arg("random_seed"), py::arg("count_x"), py::arg("count_y"),
          py::arg("packet_size_x"), py::arg("packet_size_y"),
          "Packet grid with the seed drawn from a Mersenne Twister seeded with random_seed.")
      .def(
          "init_sub",
          [](HammersleySampler2d& s, py::handle subset_count, py::handle subset_index,
             py::handle count, py::handle seed) -> HammersleySampler2d& {
            unsigned int const sets = to_u32(subset_count, "subset_count");
            unsigned int const set = to_u32(subset_index, "subset_index");
            check_index(set, sets, "subset_index");
            checked_product(sets, to_u32(count, "count"), "subset_count * count");
            s.init_sub(to_u32(seed, "seed"), sets, set, to_u32(count, "count"));
            return s;
          },
          self, py::kw_only(), py::arg("subset_count"), py::arg("subset_index"), py::arg("count"),
          py::arg("seed") = 0,
          "Set subset_index of subset_count disjoint sets of `count` points of one Hammersley "
          "set. Returns the sampler.")
      .def(
          "set_seed",
          [](HammersleySampler2d& s, py::handle seed) -> HammersleySampler2d& {
            s.set_seed(to_u32(seed, "seed"));
            return s;
          },
          self, py::arg("seed"), "Replaces the seed (mod 65536) and nothing else.")
      .def_property_readonly("packet_count_x", &HammersleySampler2d::get_packet_count_x)
      .def_property_readonly("packet_count_y", &HammersleySampler2d::get_packet_count_y);
}

void bind_halton(py::module_& m) {
  Class<HaltonSampler2d>(m, "HaltonSampler2d",
                         "count_x * count_y consecutive points of the Halton sequence in bases 2 "
                         "and `base`, from element `seed`; one packet.")
      .def(py::init<>())
      .def(
          "init",
          [](HaltonSampler2d& s, py::handle count_x, py::handle count_y, py::handle seed,
             py::handle base) -> HaltonSampler2d& {
            pattern_size(count_x, count_y, "count_x", "count_y", "count_x * count_y");
            unsigned int const b = to_u32(base, "base");
            if (b < 2)
              fail("base must be at least 2");
            s.init(to_u32(seed, "seed"), to_u32(count_x, "count_x"), to_u32(count_y, "count_y"), b);
            return s;
          },
          self, py::kw_only(), py::arg("count_x"), py::arg("count_y") = 1, py::arg("seed") = 0,
          py::arg("base") = 3, "Returns the sampler.");
}

void bind_hierarchical(py::module_& m) {
  Class<HierarchicalSampler2d> c(m, "HierarchicalSampler2d",
                                 "Set `set_index` of a pattern of count * set_count points split "
                                 "into set_count sets of `count`: the sets never repeat a point "
                                 "and together make up the pattern.");
  py::enum_<HierarchicalSampler2d::Mode>(c, "Mode")
      .value("RANDOM", HierarchicalSampler2d::RANDOM)
      .value("HAMMERSLEY", HierarchicalSampler2d::HAMMERSLEY)
      .value("HALTON", HierarchicalSampler2d::HALTON)
      .value("SOBOL", HierarchicalSampler2d::SOBOL)
      .export_values();
  c.def(py::init<HierarchicalSampler2d::Mode const&>(), py::kw_only(),
        py::arg("mode") = HierarchicalSampler2d::HAMMERSLEY)
      .def(
          "init",
          [](HierarchicalSampler2d& s, py::handle count, py::handle set_count, py::handle set_index,
             py::handle seed) -> HierarchicalSampler2d& {
            unsigned int const sets = to_u32(set_count, "set_count");
            unsigned int const set = to_u32(set_index, "set_index");
            check_index(set, sets, "set_index");
            checked_product(to_u32(count, "count"), sets, "count * set_count");
            s.init(to_u32(seed, "seed"), to_u32(count, "count"), sets, set);
            return s;
          },
          self, py::kw_only(), py::arg("count"), py::arg("set_count") = 1, py::arg("set_index") = 0,
          py::arg("seed") = 0, "Returns the sampler.")
      .def_property("mode", &HierarchicalSampler2d::get_mode, &HierarchicalSampler2d::set_mode,
                    "The mode of the next init.");
}

}  // namespace

void bind_samplers(py::module_& m) {
  py::class_<Sampler2d>(m, "Sampler2d", "What every sampler answers.")
      .def_property_readonly("sample_count", &Sampler2d::get_sample_count, "N")
      .def_property_readonly("packet_count", &Sampler2d::get_packet_count, "P")
      .def("get_sample", &get_sample, py::arg("index"), "Sample `index` (below N), shape (2,).")
      .def("get_all_samples", &get_all_samples, "All N samples, (N, 2).")
      .def("get_packet_samples", &get_packet_samples, py::arg("packet"),
           "(samples (n, 2), corner0 (2,), corner1 (2,)) of packet `packet` (below P).")
      .def("packet_boxes", &packet_boxes,
           "Boxes of all P packets, (P, 2, 2): [p, 0] is corner0, [p, 1] corner1.");
  bind_stratified(m);
  bind_hammersley(m);
  bind_halton(m);
  bind_hierarchical(m);
}

}  // namespace sampling_python
