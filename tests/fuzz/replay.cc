// Runs one fuzz harness without libFuzzer, as a test: first every input of
// its seed corpus, then a fixed stream of pseudo-random inputs of varied
// length. A broken invariant aborts, which fails the test.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

int main(int argc, char** argv) {
  if (argc > 1 && std::filesystem::is_directory(argv[1]))
    for (auto const& entry : std::filesystem::directory_iterator(argv[1])) {
      std::ifstream file(entry.path(), std::ios::binary);
      std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
      LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
    }
  unsigned long const runs = argc > 2 ? std::stoul(argv[2]) : 1000;
  std::uint64_t state = 0x9E3779B97F4A7C15u;
  std::vector<std::uint8_t> input;
  for (unsigned long run = 0; run < runs; ++run) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    input.resize(static_cast<std::size_t>(state >> 33) % 640);
    for (std::uint8_t& byte : input) {
      state = state * 6364136223846793005u + 1442695040888963407u;
      byte = static_cast<std::uint8_t>(state >> 56);
    }
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  return 0;
}
