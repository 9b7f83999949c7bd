#pragma once

#include <atomic>
#include <cstdint>

// A 64-bit cell with an atomic read and a full-barrier compare-and-swap.
// Zero-initialisable by memset or calloc (the cell holds a lock-free 64-bit
// std::atomic, which is a plain 8-byte word on every target we build for).
class CoreAtomic64 {
 public:
  CoreAtomic64() : m_value(0) {}
  explicit CoreAtomic64(std::uint64_t const& v) : m_value(v) {}
  CoreAtomic64(CoreAtomic64 const&) = delete;
  CoreAtomic64& operator=(CoreAtomic64 const&) = delete;

  // Atomic read with acquire ordering: what was written before the value was
  // published is visible after reading it.
  std::uint64_t get() const { return m_value.load(std::memory_order_acquire); }

  // If the cell holds `expected`, replaces it by `desired`. Returns the value
  // found in the cell before the operation (equal to `expected` on success).
  // Full barrier in both outcomes.
  std::uint64_t compare_and_swap(std::uint64_t const& expected, std::uint64_t const& desired) {
    std::uint64_t found = expected;
    m_value.compare_exchange_strong(found, desired, std::memory_order_seq_cst,
                                    std::memory_order_seq_cst);
    return found;
  }

 private:
  std::atomic<std::uint64_t> m_value;
};

static_assert(sizeof(CoreAtomic64) == 8, "CoreAtomic64 is one 64-bit word");
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "64-bit atomics must be lock-free");
