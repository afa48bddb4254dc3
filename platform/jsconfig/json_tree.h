#ifndef PLATFORM_JSCONFIG_JSON_TREE_H_
#define PLATFORM_JSCONFIG_JSON_TREE_H_

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <string_view>

#include "jsconfig/jsconfig.h"

namespace jsconfig {

/// What `CObject::getType` reports: do not renumber.
enum class Kind : std::uint8_t {
  kNull = 0,
  kBool = 1,
  kAbsent = 2,
  kUnsigned = 3,
  kNegative = 4,
  kDouble = 5,
  kString = 6,
  kArray = 7,
  kObject = 8,
};

/// One token. Nodes live in the arena of their tree and are never destroyed one by one.
struct Node {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): one member of each union has a value
  Node() noexcept : self(this) {}
  ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  /// The node behind a handle.
  static Node& Of(const CObject& object) noexcept { return *object.handle_.node_; }

  std::string_view Name() const noexcept { return {name, nameSize}; }
  std::string_view Text() const noexcept { return {text, size}; }

  CObject self;           // what the references of operator[] refer to
  Node* next = nullptr;   // next member of the same object
  const char* name = "";  // of a member
  std::uint32_t nameSize = 0;
  Kind kind = Kind::kAbsent;
  union {
    std::uint64_t integer = 0;  // kBool: 0 or 1; kUnsigned; kNegative: two's complement
    double real;                // kDouble
    const char* text;           // kString
    Node* elements;             // kArray: one behind the other
    Node* members;              // kObject: a list in the order of the text, absent ones that were
                                // looked for at its end
  };
  union {
    std::size_t size = 0;  // kString: bytes; kArray: elements
    Tree* tree;            // kObject: where a member that is looked for in vain is made
  };
};

// The memory of an open document is mostly nodes.
static_assert(sizeof(Node) == 48);

/// Memory in large blocks, in huge pages where the system has them: the first touch of every small
/// page of a large tree costs more time than reading the text.
class LargeBlocks final : public std::pmr::memory_resource {
 private:
  static constexpr std::size_t kHugePage = std::size_t{2} << 20;

  static std::size_t Alignment(std::size_t bytes, std::size_t wanted) {
    return bytes < kHugePage ? wanted : kHugePage;
  }

  void* do_allocate(std::size_t bytes, std::size_t alignment) override {
    void* const block =
        std::pmr::new_delete_resource()->allocate(bytes, Alignment(bytes, alignment));
    // Only a hint: without it the block is as good, but slower.
    if (bytes >= kHugePage) {
      static_cast<void>(::madvise(block, bytes, MADV_HUGEPAGE));
    }
    return block;
  }

  void do_deallocate(void* block, std::size_t bytes, std::size_t alignment) override {
    std::pmr::new_delete_resource()->deallocate(block, bytes, Alignment(bytes, alignment));
  }

  bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
    return this == &other;
  }
};

/// The tokens of a document and the arena that they and their texts live in.
struct Tree {
  explicit Tree(std::size_t expectedBytes) : arena(expectedBytes, &blocks) {}

  Node* NewNodes(std::size_t count) {
    auto* const nodes = static_cast<Node*>(arena.allocate(count * sizeof(Node), alignof(Node)));
    std::uninitialized_default_construct_n(nodes, count);
    return nodes;
  }

  char* NewText(std::size_t size) { return static_cast<char*>(arena.allocate(size, 1)); }

  LargeBlocks blocks;
  std::pmr::monotonic_buffer_resource arena;
  Node root;
};

}  // namespace jsconfig

#endif  // PLATFORM_JSCONFIG_JSON_TREE_H_
