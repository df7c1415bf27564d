// An allocator for large, mostly unused buffers of trivial values: memory comes zeroed from the
// operating system (untouched pages are never mapped), and value-initialisation writes nothing.
// The pattern store reserves room for 20000 points in every slot, its undo copy and its axis
// tables; with this allocator a session only pays for the pages its patterns really use.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace quarvel {

// Zeroed memory of `bytes` (throws std::bad_alloc), and its release.
void* allocateZeroedPages(std::size_t bytes);
void releaseZeroedPages(void* p, std::size_t bytes) noexcept;

template <class T>
struct ZeroedAllocator {
  static_assert(std::is_trivially_copyable_v<T>, "zeroed storage is for trivial values");
  using value_type = T;

  ZeroedAllocator() = default;
  template <class U>
  ZeroedAllocator(const ZeroedAllocator<U>&) noexcept {}

  T* allocate(std::size_t n) { return static_cast<T*>(allocateZeroedPages(n * sizeof(T))); }
  void deallocate(T* p, std::size_t n) noexcept { releaseZeroedPages(p, n * sizeof(T)); }

  // Value-initialisation leaves calloc's zeros in place; other constructions run as usual.
  template <class U>
  void construct(U*) noexcept {}
  template <class U, class... Args>
  void construct(U* p, Args&&... args) {
    ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
  }

  template <class U>
  bool operator==(const ZeroedAllocator<U>&) const noexcept { return true; }
};

}  // namespace quarvel
