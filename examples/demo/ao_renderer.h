#pragma once

#include <embree3/rtcore.h>

#include <cstdint>
#include <string>
#include <vector>

#include "examples/demo/scene.h"

// Ambient-occlusion renderer over Embree. Each pixel takes spp camera
// samples; each camera ray that hits the scene sends occlusion_count
// cosine-weighted occlusion rays (less those clipped below the geometric
// normal, which count as blocked) up to max_distance, and the pixel's value is
// the fraction of occlusion samples that escape, averaged over its camera
// samples. Camera rays that miss see a light sky.
class AoRenderer {
 public:
  struct Settings {
    unsigned int width = 640;
    unsigned int height = 480;
    unsigned int samples_per_pixel = 16;
    unsigned int occlusion_count = 8;
    double max_distance = 1.5;  // scene units; scaled with the scene by the caller
    unsigned int threads = 2;
    unsigned int seed = 1;
  };

  // Ray counts, and thread time summed over the render threads, split into
  // generation (samples and rays, the library's part) and tracing (Embree).
  struct Stats {
    std::uint64_t camera_rays = 0;
    std::uint64_t occlusion_rays = 0;
    std::uint64_t occlusion_samples = 0;  // traced plus clipped
    double generate_seconds = 0.0;
    double trace_seconds = 0.0;
    double wall_seconds = 0.0;
  };

  AoRenderer();
  ~AoRenderer();
  AoRenderer(AoRenderer const&) = delete;
  AoRenderer& operator=(AoRenderer const&) = delete;

  // Builds the Embree scene from `scene` (which must outlive the renderer).
  // Returns false with a message when Embree fails.
  bool build(Scene const& scene, std::string& error);

  // Renders into `image` (width x height grey pixels, rows from the top,
  // the occlusion fraction stored linearly).
  void render(Settings const& settings, std::vector<std::uint8_t>& image, Stats& stats) const;

 private:
  struct Tile;
  struct ThreadState;
  void render_tile(Settings const& settings, Tile const& tile, ThreadState& state,
                   std::vector<std::uint8_t>& image) const;

  Scene const* m_scene = nullptr;
  RTCDevice m_device = nullptr;
  RTCScene m_rtc_scene = nullptr;
  double m_ray_offset = 1e-4;
  std::string m_embree_error;  // first message of Embree's error callback
};
