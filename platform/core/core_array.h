#pragma once

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

// A growable array that owns one heap buffer, with value semantics.
//
// Zeroing rules: every element a resize creates is value-initialised, so
// numbers and the math records come out as zeros. resize() discards the old
// contents (frees the old buffer first, then allocates); resize_keep() keeps
// the first min(old, new) elements. A size of 0 leaves no buffer at all.
template <typename T>
class CoreArray {
 public:
  CoreArray() : m_data(nullptr), m_count(0) {}
  explicit CoreArray(std::size_t const& n) : m_data(nullptr), m_count(0) { resize(n); }
  CoreArray(CoreArray const& o) : m_data(nullptr), m_count(0) {
    resize(o.m_count);
    std::copy(o.m_data, o.m_data + o.m_count, m_data);
  }
  CoreArray(CoreArray&& o) noexcept : m_data(o.m_data), m_count(o.m_count) {
    o.m_data = nullptr;
    o.m_count = 0;
  }
  CoreArray& operator=(CoreArray const& o) {
    if (this != &o) {
      resize(o.m_count);
      std::copy(o.m_data, o.m_data + o.m_count, m_data);
    }
    return *this;
  }
  CoreArray& operator=(CoreArray&& o) noexcept {
    std::swap(m_data, o.m_data);
    std::swap(m_count, o.m_count);
    return *this;
  }
  ~CoreArray() { clear(); }

  // Replaces the contents by n value-initialised elements.
  void resize(std::size_t const& n) {
    clear();
    if (n != 0) {
      m_data = new T[n]();
      m_count = n;
    }
  }

  // Changes the size to n, keeping the first min(count(), n) elements; new
  // elements are value-initialised.
  void resize_keep(std::size_t const& n) {
    if (n == m_count)
      return;
    if (n == 0) {
      clear();
      return;
    }
    T* fresh = new T[n]();
    std::size_t const keep = std::min(n, m_count);
    for (std::size_t i = 0; i < keep; ++i)
      fresh[i] = std::move(m_data[i]);
    delete[] m_data;
    m_data = fresh;
    m_count = n;
  }

  // Frees the buffer; the array becomes empty.
  void clear() {
    delete[] m_data;
    m_data = nullptr;
    m_count = 0;
  }

  std::size_t count() const { return m_count; }
  bool empty() const { return m_count == 0; }
  T* data() { return m_data; }
  T const* data() const { return m_data; }
  T& operator[](std::size_t const& i) { return m_data[i]; }
  T const& operator[](std::size_t const& i) const { return m_data[i]; }
  T* begin() { return m_data; }
  T* end() { return m_data + m_count; }
  T const* begin() const { return m_data; }
  T const* end() const { return m_data + m_count; }

 private:
  T* m_data;
  std::size_t m_count;
};
