#include "examples/demo/obj_loader.h"

#include <sys/stat.h>
#include <tiny_obj_loader.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {

// Far more than the demo needs, and small enough that the scene's buffers
// cannot exhaust memory on a small machine.
constexpr std::size_t k_max_triangles = std::size_t(1) << 25;
// Coordinates beyond this leave no room in single precision for the ground
// plane and the camera placed around the mesh.
constexpr double k_max_coordinate = 1e15;

// The reader keeps at most this many corners per face (it counts them in a
// byte), and its triangulation of a face takes time quadratic in its corners:
// larger polygons are refused, to be split before they reach the demo.
constexpr std::size_t k_max_face_corners = 255;
// Files larger than this take over a second to read: say so first.
constexpr std::streamoff k_announced_file_size = std::streamoff(32) << 20;

// One pass over the text for what the reader lets through silently: a vertex
// coordinate that is not a finite number ("nan", "inf", a word), which it
// reads as 0, and a face with more corners than it keeps.
bool check_obj_text(std::string const& path, std::string& error) {
  std::ifstream in(path);
  std::string line;
  for (std::size_t number = 1; std::getline(in, line); ++number) {
    std::istringstream words(line);
    std::string keyword, word;
    words >> keyword;
    std::string const where = "'" + path + "' line " + std::to_string(number) + ": ";
    if (keyword == "v") {
      for (int axis = 0; axis < 3 && words >> word; ++axis) {
        char* end = nullptr;
        double const value = std::strtod(word.c_str(), &end);
        if (*end != '\0' || !std::isfinite(value)) {
          error = where + "vertex coordinate '" + word + "' is not a finite number";
          return false;
        }
      }
    } else if (keyword == "f") {
      std::size_t corners = 0;
      while (words >> word)
        ++corners;
      if (corners > k_max_face_corners) {
        error = where + "a face of " + std::to_string(corners) + " corners; faces of at most " +
                std::to_string(k_max_face_corners) + " are read (split larger polygons)";
        return false;
      }
    }
  }
  return true;
}

std::string shape_label(tinyobj::shape_t const& shape) {
  return shape.name.empty() ? std::string("a face") : "a face of '" + shape.name + "'";
}

}  // namespace

bool load_obj(std::string const& path, Scene& scene, std::string& error) {
  // The parser reports a missing file in its own words; say it plainly first.
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    error = "cannot open '" + path + "': " + std::strerror(errno);
    return false;
  }
  if (!S_ISREG(info.st_mode)) {
    error = "'" + path + "' is not a file";
    return false;
  }
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    error = "cannot open '" + path + "': " + std::strerror(errno);
    return false;
  }
  std::fclose(file);
  std::streamoff const size = std::ifstream(path, std::ios::ate | std::ios::binary).tellg();
  if (size > k_announced_file_size)
    std::printf("reading '%s' (%lld MB)...\n", path.c_str(), static_cast<long long>(size >> 20));
  std::fflush(stdout);
  if (!check_obj_text(path, error))
    return false;

  tinyobj::ObjReaderConfig config;
  config.triangulate = true;
  config.vertex_color = false;
  tinyobj::ObjReader reader;
  if (!reader.ParseFromFile(path, config)) {
    error = "'" + path + "' is not a readable OBJ file: " + reader.Error();
    while (!error.empty() && (error.back() == '\n' || error.back() == ' '))
      error.pop_back();
    return false;
  }

  std::vector<tinyobj::real_t> const& vertices = reader.GetAttrib().vertices;
  std::size_t const vertex_count = vertices.size() / 3;
  for (tinyobj::real_t const x : vertices) {
    if (!(std::fabs(x) <= k_max_coordinate)) {
      error = "'" + path + "' has a vertex coordinate that is not a finite number of at most 1e15";
      return false;
    }
  }

  Scene mesh;
  mesh.m_positions.assign(vertices.begin(), vertices.begin() + 3 * vertex_count);
  for (tinyobj::shape_t const& shape : reader.GetShapes()) {
    std::vector<tinyobj::index_t> const& indices = shape.mesh.indices;
    std::size_t offset = 0;
    for (unsigned char const corners : shape.mesh.num_face_vertices) {
      if (offset + corners > indices.size()) {
        error = "'" + path + "': the face list of " + shape_label(shape) + " is truncated";
        return false;
      }
      for (std::size_t k = 0; k < corners; ++k) {
        int const v = indices[offset + k].vertex_index;
        if (v < 0 || static_cast<std::size_t>(v) >= vertex_count) {
          error = "'" + path + "': " + shape_label(shape) +
                  " refers to a vertex the file does not have (it has " +
                  std::to_string(vertex_count) + ")";
          return false;
        }
      }
      // Triangulated by the reader; anything else (lines, points) is skipped.
      if (corners == 3) {
        for (std::size_t k = 0; k < 3; ++k) {
          mesh.m_indices.push_back(static_cast<unsigned int>(indices[offset + k].vertex_index));
        }
      }
      offset += corners;
      if (mesh.m_indices.size() / 3 > k_max_triangles) {
        error = "'" + path + "' has more than " + std::to_string(k_max_triangles) + " triangles";
        return false;
      }
    }
  }
  if (mesh.m_indices.empty()) {
    error = "'" + path + "' has no triangles (is it an OBJ file?)";
    return false;
  }
  GMathVec3<double> low, high;
  mesh.bounds(low, high);
  if (!((high - low).length() > 0.0)) {
    error = "'" + path + "': all its triangles collapse to one point";
    return false;
  }

  mesh.compute_vertex_normals();
  unsigned int const first = scene.vertex_count();
  scene.m_positions.insert(scene.m_positions.end(), mesh.m_positions.begin(),
                           mesh.m_positions.end());
  scene.m_normals.insert(scene.m_normals.end(), mesh.m_normals.begin(), mesh.m_normals.end());
  for (unsigned int const index : mesh.m_indices)
    scene.m_indices.push_back(first + index);
  return true;
}
