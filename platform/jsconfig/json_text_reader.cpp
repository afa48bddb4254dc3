#include "json_text_reader.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <variant>
#include <vector>

#include <simdjson.h>

#include "byte_carrier.h"
#include "file_descriptor.h"

namespace jsconfig {
namespace {

namespace dom = simdjson::dom;

constexpr std::size_t kMaxDepth = 1000;

// The parser does not count an empty innermost array or object. It gets a little room, and the
// builder, which sees every level, counts exactly.
constexpr std::size_t kParserDepth = kMaxDepth + 2;

std::size_t CountElements(dom::array array) {
  constexpr std::size_t kSaturated = 0xFFFFFF;  // of the parser's own count
  if (array.size() < kSaturated) {
    return array.size();
  }
  std::size_t count = 0;
  for (auto element = array.begin(); element != array.end(); ++element) {
    ++count;
  }
  return count;
}

/// The bytes of a text with as much room behind them as the parser reads beyond the end.
struct PaddedText {
  explicit PaddedText(std::size_t capacity)
      : bytes(new char[capacity + simdjson::SIMDJSON_PADDING]), size(capacity) {}
  explicit PaddedText(std::string_view text) : PaddedText(text.size()) {
    std::memcpy(bytes.get(), text.data(), text.size());
  }

  std::string_view View() const { return {bytes.get(), size}; }

  std::unique_ptr<char[]> bytes;
  std::size_t size;
};

/// Copies a parsed document into a tree, level by level on a stack of its own.
class TreeBuilder {
 public:
  /// @param restore  whether strings hold carriers of bytes that are not valid UTF-8
  TreeBuilder(Tree& tree, bool restore) : tree_(tree), restore_(restore) {}

  /// @return false if the document nests too deep
  bool Build(dom::element root) {
    Fill(tree_.root, root);
    while (!open_.empty()) {
      if (open_.size() > kMaxDepth) {
        return false;
      }
      const auto resume = [this](auto& level) { return FillUntilNextLevel(level); };
      if (!std::visit(resume, open_.back())) {
        open_.pop_back();
      }
    }
    return true;
  }

 private:
  struct OpenArray {
    dom::array::iterator next;
    dom::array::iterator end;
    Node* target;  // for the next element
  };
  struct OpenObject {
    dom::object::iterator next;
    dom::object::iterator end;
    Node** link;  // to the next member
  };

  /// Goes on with an open array or object. Opening a level makes the reference to it invalid.
  /// @return true when it has opened a further level, false when it is done
  bool FillUntilNextLevel(OpenArray& level) {
    while (level.next != level.end) {
      const dom::element element = *level.next;
      ++level.next;
      if (Fill(*level.target++, element)) {
        return true;
      }
    }
    return false;
  }

  bool FillUntilNextLevel(OpenObject& level) {
    while (level.next != level.end) {
      Node& member = *tree_.NewNodes(1);
      std::size_t nameSize = 0;
      member.name = NewText(level.next.key(), nameSize);
      member.nameSize = static_cast<std::uint32_t>(nameSize);
      *level.link = &member;
      level.link = &member.next;
      const dom::element element = level.next.value();
      ++level.next;
      if (Fill(member, element)) {
        return true;
      }
    }
    return false;
  }

  /// @return whether the token has opened a level
  bool Fill(Node& node, dom::element element) {
    switch (element.type()) {
      case dom::element_type::ARRAY:
        OpenLevel(node, element.get_array().value_unsafe());
        return true;
      case dom::element_type::OBJECT:
        OpenLevel(node, element.get_object().value_unsafe());
        return true;
      case dom::element_type::INT64: {
        const std::int64_t value = element.get_int64().value_unsafe();
        node.kind = value < 0 ? Kind::kNegative : Kind::kUnsigned;
        node.integer = static_cast<std::uint64_t>(value);
        return false;
      }
      case dom::element_type::UINT64:
        node.kind = Kind::kUnsigned;
        node.integer = element.get_uint64().value_unsafe();
        return false;
      case dom::element_type::DOUBLE:
        node.kind = Kind::kDouble;
        node.real = element.get_double().value_unsafe();
        return false;
      case dom::element_type::STRING:
        node.kind = Kind::kString;
        node.text = NewText(element.get_string().value_unsafe(), node.size);
        return false;
      case dom::element_type::BOOL:
        node.kind = Kind::kBool;
        node.integer = element.get_bool().value_unsafe() ? 1 : 0;
        return false;
      case dom::element_type::NULL_VALUE:
        node.kind = Kind::kNull;
        return false;
    }
    return false;
  }

  void OpenLevel(Node& node, dom::array array) {
    node.kind = Kind::kArray;
    node.size = CountElements(array);
    node.elements = tree_.NewNodes(node.size);
    open_.emplace_back(OpenArray{array.begin(), array.end(), node.elements});
  }

  void OpenLevel(Node& node, dom::object object) {
    node.kind = Kind::kObject;
    node.members = nullptr;
    node.tree = &tree_;
    open_.emplace_back(OpenObject{object.begin(), object.end(), &node.members});
  }

  const char* NewText(std::string_view text, std::size_t& size) {
    char* const copy = tree_.NewText(text.size());
    size = text.size();
    if (restore_) {
      size = RestoreBytes(text, copy);
    } else {
      std::memcpy(copy, text.data(), size);
    }
    return copy;
  }

  Tree& tree_;
  const bool restore_;
  std::vector<std::variant<OpenArray, OpenObject>> open_;
};

std::unique_ptr<Tree> ReadPadded(const PaddedText& text, bool restore, std::string& error) {
  dom::parser parser;
  simdjson::error_code code = parser.allocate(text.size, kParserDepth);
  dom::element root;
  if (code == simdjson::SUCCESS) {
    code = parser.parse(text.bytes.get(), text.size, false).get(root);
  }
  if (code == simdjson::SUCCESS) {
    // Tokens take about four times the room of a usual text.
    auto tree = std::make_unique<Tree>(4 * text.size);
    if (TreeBuilder(*tree, restore).Build(root)) {
      return tree;
    }
    code = simdjson::DEPTH_ERROR;
  }
  error = simdjson::error_message(code);
  return nullptr;
}

std::unique_ptr<Tree> ReadOwned(PaddedText text, std::string& error) {
  const bool carry = !simdjson::validate_utf8(text.bytes.get(), text.size);
  if (carry) {
    text = PaddedText(CarryBytes(text.View()));
  }
  return ReadPadded(text, carry, error);
}

/// Reads up to `text.size` bytes; if the file has become shorter, `text.size` becomes so too.
bool ReadWhole(int fd, PaddedText& text) {
  std::size_t done = 0;
  while (done < text.size) {
    const ssize_t got = ::read(fd, text.bytes.get() + done, text.size - done);
    if (got == 0) {
      break;
    }
    if (got < 0 && errno != EINTR) {
      return false;
    }
    if (got > 0) {
      done += static_cast<std::size_t>(got);
    }
  }
  text.size = done;
  return true;
}

}  // namespace

std::unique_ptr<Tree> ReadJsonFile(const std::string& path, std::string& error) {
  const FileDescriptor file(path, O_RDONLY);
  struct stat status = {};
  if (file.Get() == -1 || ::fstat(file.Get(), &status) != 0) {
    error = DescribeSystemError("cannot open", path);
    return nullptr;
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > simdjson::SIMDJSON_MAXSIZE_BYTES) {
    error = simdjson::error_message(simdjson::CAPACITY);
    return nullptr;
  }
  PaddedText text(size);
  if (!ReadWhole(file.Get(), text)) {
    error = DescribeSystemError("cannot read", path);
    return nullptr;
  }
  return ReadOwned(std::move(text), error);
}

std::unique_ptr<Tree> ReadJsonText(std::string_view text, std::string& error) {
  return ReadOwned(PaddedText(text), error);
}

}  // namespace jsconfig
