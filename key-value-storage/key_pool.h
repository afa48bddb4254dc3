#ifndef KEY_VALUE_STORAGE_KEY_POOL_H_
#define KEY_VALUE_STORAGE_KEY_POOL_H_

#include <array>
#include <cstddef>
#include <memory_resource>
#include <vector>

namespace ara::per {

/// Memory for the nodes and texts of one search tree, packed in the order in which they come as
/// long as nothing is given back. A search then meets a node and its text side by side and among
/// other nodes, not strewn over the heap between the values, and not in separate pools by size, as
/// those of `std::pmr`. Larger chunks also ask for huge pages, so that a step of the search seldom
/// waits for the page table. What is given back is used again for pieces of the same size; the
/// system gets it when the pool ends.
class KeyPool : public std::pmr::memory_resource {
 public:
  KeyPool() = default;
  KeyPool(const KeyPool&) = delete;
  KeyPool& operator=(const KeyPool&) = delete;
  ~KeyPool() override;

 private:
  struct Chunk {
    void* start;
    std::size_t size;
  };
  struct FreePiece {
    FreePiece* next;
  };

  static constexpr std::size_t kGrain = alignof(FreePiece);
  static constexpr std::size_t kLargestPiece = 512;  // bytes; what is larger goes to the heap

  static std::size_t grains(std::size_t bytes);
  static bool isPooled(std::size_t bytes, std::size_t alignment);
  void addChunk();

  void* do_allocate(std::size_t bytes, std::size_t alignment) override;
  void do_deallocate(void* piece, std::size_t bytes, std::size_t alignment) override;
  bool do_is_equal(const memory_resource& other) const noexcept override;

  std::vector<Chunk> chunks_;
  void* fresh_ = nullptr;  // what the last chunk has not handed out yet
  std::size_t fresh_size_ = 0;
  std::array<FreePiece*, kLargestPiece / kGrain + 1> free_{};  // by the size in grains
};

}  // namespace ara::per

#endif  // KEY_VALUE_STORAGE_KEY_POOL_H_
