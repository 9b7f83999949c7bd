#include "examples/demo/ao_renderer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

#include "examples/demo/occlusion_rays.h"
#include "examples/demo/pixel_sample_sets.h"

namespace {

constexpr unsigned int k_tile_size = 32;
constexpr double k_sky = 0.85;
constexpr double k_pi = 3.14159265358979323846;

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point const& start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Pinhole camera: a pixel position (x, y) in pixels, y down, to a unit
// direction.
struct Camera {
  GMathVec3<double> eye, forward, right, up;
  double scale_x = 1.0, scale_y = 1.0;  // tan(fov / 2) times the aspect ratio, and alone
  double inv_width = 1.0, inv_height = 1.0;

  Camera(Scene const& scene, unsigned int width, unsigned int height) {
    eye = scene.m_eye;
    forward = normalized(scene.m_target - scene.m_eye);
    right = normalized(cross(forward, GMathVec3<double>(0.0, 1.0, 0.0)));
    up = cross(right, forward);
    scale_y = std::tan(0.5 * scene.m_vertical_fov_degrees * k_pi / 180.0);
    scale_x = scale_y * width / height;
    inv_width = 1.0 / width;
    inv_height = 1.0 / height;
  }

  GMathVec3<double> direction(double x, double y) const {
    double const sx = (2.0 * x * inv_width - 1.0) * scale_x;
    double const sy = (1.0 - 2.0 * y * inv_height) * scale_y;
    return normalized(forward + right * sx + up * sy);
  }
};

void set_ray(RTCRay& ray, GMathVec3<double> const& origin, GMathVec3<double> const& direction,
             float tfar) {
  ray.org_x = static_cast<float>(origin.x);
  ray.org_y = static_cast<float>(origin.y);
  ray.org_z = static_cast<float>(origin.z);
  ray.tnear = 0.0f;
  ray.dir_x = static_cast<float>(direction.x);
  ray.dir_y = static_cast<float>(direction.y);
  ray.dir_z = static_cast<float>(direction.z);
  ray.time = 0.0f;
  ray.tfar = tfar;
  ray.mask = 0xFFFFFFFFu;
  ray.id = 0;
  ray.flags = 0;
}

GMathVec3<double> vertex_normal(Scene const& scene, unsigned int vertex) {
  float const* n = &scene.m_normals[3 * vertex];
  return GMathVec3<double>(n[0], n[1], n[2]);
}

void on_embree_error(void* user, RTCError, char const* message) {
  std::string* error = static_cast<std::string*>(user);
  if (error->empty())
    *error = message ? message : "unknown Embree error";
}

// The render is linear (the unoccluded fraction); the PNG is encoded with the
// sRGB transfer curve, as image viewers expect, so mid greys read as they are.
std::uint8_t to_byte(double value) {
  double const v = std::min(std::max(value, 0.0), 1.0);
  double const encoded = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(encoded * 255.0 + 0.5);
}

}  // namespace

struct AoRenderer::Tile {
  unsigned int x0, y0, x1, y1;
};

// Everything one render thread touches, sized once before its first pixel;
// aligned to a cache line so the threads' counters and samplers, written per
// pixel, never share one.
struct alignas(64) AoRenderer::ThreadState {
  PixelSampleSets sets;
  CosineWeightedHemisphereRayGenerator generator;
  std::vector<GMathVec2<double>> camera_samples;
  std::vector<GMathVec2<double>> occlusion_samples;
  std::vector<GMathRay> rays;
  std::vector<RTCRayHit> camera_rays;
  std::vector<RTCRay> occlusion_rays;
  std::vector<GMathVec3<double>> origins, shading_normals, geometric_normals;
  std::vector<unsigned int> first_ray, ray_count;
  Stats stats;

  explicit ThreadState(Settings const& s)
      : camera_samples(s.samples_per_pixel),
        occlusion_samples(static_cast<std::size_t>(s.samples_per_pixel) * s.occlusion_count),
        rays(s.occlusion_count),
        camera_rays(s.samples_per_pixel),
        occlusion_rays(static_cast<std::size_t>(s.samples_per_pixel) * s.occlusion_count),
        origins(s.samples_per_pixel),
        shading_normals(s.samples_per_pixel),
        geometric_normals(s.samples_per_pixel),
        first_ray(s.samples_per_pixel),
        ray_count(s.samples_per_pixel) {
    sets.init(s.seed, s.samples_per_pixel, s.occlusion_count);
  }
};

AoRenderer::AoRenderer() {}

AoRenderer::~AoRenderer() {
  if (m_rtc_scene)
    rtcReleaseScene(m_rtc_scene);
  if (m_device)
    rtcReleaseDevice(m_device);
}

bool AoRenderer::build(Scene const& scene, std::string& error) {
  m_embree_error.clear();
  m_scene = &scene;
  m_device = rtcNewDevice(nullptr);
  if (!m_device) {
    error = "Embree could not start: " + std::to_string(rtcGetDeviceError(nullptr));
    return false;
  }
  rtcSetDeviceErrorFunction(m_device, on_embree_error, &m_embree_error);

  RTCGeometry mesh = rtcNewGeometry(m_device, RTC_GEOMETRY_TYPE_TRIANGLE);
  void* vertices = rtcSetNewGeometryBuffer(mesh, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                           3 * sizeof(float), scene.vertex_count());
  void* indices = rtcSetNewGeometryBuffer(mesh, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                          3 * sizeof(unsigned int), scene.triangle_count());
  if (vertices && indices) {
    std::memcpy(vertices, scene.m_positions.data(), scene.m_positions.size() * sizeof(float));
    std::memcpy(indices, scene.m_indices.data(), scene.m_indices.size() * sizeof(unsigned int));
  }
  rtcCommitGeometry(mesh);
  m_rtc_scene = rtcNewScene(m_device);
  rtcAttachGeometry(m_rtc_scene, mesh);
  rtcReleaseGeometry(mesh);
  rtcCommitScene(m_rtc_scene);
  if (!m_embree_error.empty()) {
    error = "Embree: " + m_embree_error;
    return false;
  }

  // Occlusion rays start a little off the surface, along the geometric
  // normal, so that they do not hit the triangle they leave (rounding of the
  // float hit point would otherwise speckle the image).
  GMathVec3<double> low, high;
  scene.bounds(low, high);
  m_ray_offset = 2e-5 * std::max((high - low).length(), 1e-3);
  return true;
}

void AoRenderer::render(Settings const& settings, std::vector<std::uint8_t>& image,
                        Stats& stats) const {
  image.assign(static_cast<std::size_t>(settings.width) * settings.height, 0);
  std::vector<Tile> tiles;
  for (unsigned int y = 0; y < settings.height; y += k_tile_size) {
    for (unsigned int x = 0; x < settings.width; x += k_tile_size) {
      tiles.push_back(Tile{x, y, std::min(x + k_tile_size, settings.width),
                           std::min(y + k_tile_size, settings.height)});
    }
  }

  unsigned int const thread_count = std::max(1u, settings.threads);
  std::vector<ThreadState> states(thread_count, ThreadState(settings));
  std::atomic<std::size_t> next_tile(0);
  Clock::time_point const start = Clock::now();
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < thread_count; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t i = next_tile++; i < tiles.size(); i = next_tile++) {
        render_tile(settings, tiles[i], states[t], image);
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();

  stats = Stats();
  stats.wall_seconds = seconds_since(start);
  for (ThreadState const& s : states) {
    stats.camera_rays += s.stats.camera_rays;
    stats.occlusion_rays += s.stats.occlusion_rays;
    stats.occlusion_samples += s.stats.occlusion_samples;
    stats.generate_seconds += s.stats.generate_seconds;
    stats.trace_seconds += s.stats.trace_seconds;
  }
}

void AoRenderer::render_tile(Settings const& settings, Tile const& tile, ThreadState& state,
                             std::vector<std::uint8_t>& image) const {
  Camera const camera(*m_scene, settings.width, settings.height);
  unsigned int const spp = settings.samples_per_pixel;
  unsigned int const count = settings.occlusion_count;
  float const max_distance = static_cast<float>(settings.max_distance);
  float const infinity = std::numeric_limits<float>::infinity();
  RTCIntersectContext coherent, incoherent;
  rtcInitIntersectContext(&coherent);
  coherent.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
  rtcInitIntersectContext(&incoherent);

  for (unsigned int y = tile.y0; y < tile.y1; ++y) {
    for (unsigned int x = tile.x0; x < tile.x1; ++x) {
      unsigned int const pixel = y * settings.width + x;

      // Generation: the pixel's camera samples and rays.
      Clock::time_point t0 = Clock::now();
      state.sets.camera_samples(pixel, state.camera_samples.data());
      for (unsigned int s = 0; s < spp; ++s) {
        GMathVec2<double> const& p = state.camera_samples[s];
        RTCRayHit& rh = state.camera_rays[s];
        set_ray(rh.ray, camera.eye, camera.direction(x + p.x, y + p.y), infinity);
        rh.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        rh.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
      }
      Clock::time_point t1 = Clock::now();
      rtcIntersect1M(m_rtc_scene, &coherent, state.camera_rays.data(), spp, sizeof(RTCRayHit));
      Clock::time_point t2 = Clock::now();
      state.stats.generate_seconds += std::chrono::duration<double>(t1 - t0).count();
      state.stats.trace_seconds += std::chrono::duration<double>(t2 - t1).count();
      state.stats.camera_rays += spp;

      // Shading frames of the hits (neither generation nor tracing).
      for (unsigned int s = 0; s < spp; ++s) {
        RTCRayHit const& rh = state.camera_rays[s];
        if (rh.hit.geomID == RTC_INVALID_GEOMETRY_ID)
          continue;
        GMathVec3<double> const dir(rh.ray.dir_x, rh.ray.dir_y, rh.ray.dir_z);
        GMathVec3<double> ng = normalized(GMathVec3<double>(rh.hit.Ng_x, rh.hit.Ng_y, rh.hit.Ng_z));
        if (dot(ng, dir) > 0.0)
          ng = -ng;
        unsigned int const* v = &m_scene->m_indices[3 * rh.hit.primID];
        double const bu = rh.hit.u, bv = rh.hit.v;
        GMathVec3<double> ns = vertex_normal(*m_scene, v[0]) * (1.0 - bu - bv) +
                               vertex_normal(*m_scene, v[1]) * bu +
                               vertex_normal(*m_scene, v[2]) * bv;
        double const length = ns.length();
        ns = length > 0.0 ? ns / length : ng;
        if (dot(ns, ng) < 0.0)
          ns = -ns;
        state.origins[s] = camera.eye + dir * static_cast<double>(rh.ray.tfar) + ng * m_ray_offset;
        state.shading_normals[s] = ns;
        state.geometric_normals[s] = ng;
      }

      // Generation: the occlusion samples and rays of every hit.
      t0 = Clock::now();
      state.sets.occlusion_samples(pixel, state.occlusion_samples.data());
      unsigned int total = 0;
      for (unsigned int s = 0; s < spp; ++s) {
        state.first_ray[s] = total;
        state.ray_count[s] = 0;
        if (state.camera_rays[s].hit.geomID == RTC_INVALID_GEOMETRY_ID)
          continue;
        unsigned int const n = occlusion_rays(
            state.generator, state.origins[s], state.shading_normals[s], state.geometric_normals[s],
            &state.occlusion_samples[s * count], count, state.rays.data());
        for (unsigned int k = 0; k < n; ++k) {
          set_ray(state.occlusion_rays[total + k], state.rays[k].m_origin,
                  state.rays[k].m_direction, max_distance);
        }
        state.ray_count[s] = n;
        total += n;
        state.stats.occlusion_samples += count;
      }
      t1 = Clock::now();
      rtcOccluded1M(m_rtc_scene, &incoherent, state.occlusion_rays.data(), total, sizeof(RTCRay));
      t2 = Clock::now();
      state.stats.generate_seconds += std::chrono::duration<double>(t1 - t0).count();
      state.stats.trace_seconds += std::chrono::duration<double>(t2 - t1).count();
      state.stats.occlusion_rays += total;

      // An occluded ray comes back with tfar = -inf; clipped samples count
      // as blocked.
      double sum = 0.0;
      for (unsigned int s = 0; s < spp; ++s) {
        if (state.camera_rays[s].hit.geomID == RTC_INVALID_GEOMETRY_ID) {
          sum += k_sky;
          continue;
        }
        unsigned int open = 0;
        for (unsigned int k = 0; k < state.ray_count[s]; ++k) {
          open += state.occlusion_rays[state.first_ray[s] + k].tfar >= 0.0f;
        }
        sum += static_cast<double>(open) / count;
      }
      image[pixel] = to_byte(sum / spp);
    }
  }
}
