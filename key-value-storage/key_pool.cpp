#include "key-value-storage/key_pool.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace ara::per {
namespace {

// Bytes. Each further chunk is twice as large, up to a huge page.
constexpr std::size_t kFirstChunk = 4096;
constexpr std::size_t kHugePage = std::size_t{2} << 20;

std::pmr::memory_resource& Heap() { return *std::pmr::new_delete_resource(); }

}  // namespace

KeyPool::~KeyPool() {
  for (const Chunk& chunk : chunks_) {
    Heap().deallocate(chunk.start, chunk.size, chunk.size);
  }
}

std::size_t KeyPool::grains(std::size_t bytes) { return (bytes + kGrain - 1) / kGrain; }

bool KeyPool::isPooled(std::size_t bytes, std::size_t alignment) {
  return bytes != 0 && bytes <= kLargestPiece && alignment <= kGrain;
}

void KeyPool::addChunk() {
  const std::size_t size =
      chunks_.empty() ? kFirstChunk : std::min(2 * chunks_.back().size, kHugePage);
  chunks_.reserve(chunks_.size() + 1);
  fresh_ = Heap().allocate(size, size);  // a huge page begins at a multiple of its size
  fresh_size_ = size;
  chunks_.push_back({fresh_, size});
  if (size == kHugePage) {
    static_cast<void>(::madvise(fresh_, size, MADV_HUGEPAGE));  // small pages do as well
  }
}

void* KeyPool::do_allocate(std::size_t bytes, std::size_t alignment) {
  if (!isPooled(bytes, alignment)) {
    return Heap().allocate(bytes, alignment);
  }
  FreePiece*& pieces = free_[grains(bytes)];
  if (FreePiece* const piece = pieces) {
    pieces = piece->next;
    return piece;
  }
  const std::size_t size = grains(bytes) * kGrain;
  if (fresh_size_ < size) {
    addChunk();
  }
  void* const piece = fresh_;
  fresh_ = static_cast<std::byte*>(fresh_) + size;
  fresh_size_ -= size;
  return piece;
}

void KeyPool::do_deallocate(void* piece, std::size_t bytes, std::size_t alignment) {
  if (!isPooled(bytes, alignment)) {
    Heap().deallocate(piece, bytes, alignment);
    return;
  }
  FreePiece*& pieces = free_[grains(bytes)];
  pieces = new (piece) FreePiece{pieces};
}

bool KeyPool::do_is_equal(const memory_resource& other) const noexcept { return this == &other; }

}  // namespace ara::per
