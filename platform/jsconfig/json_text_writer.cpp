#include "json_text_writer.h"

#include <charconv>
#include <utility>
#include <vector>

namespace jsconfig {
namespace {

constexpr std::size_t kLongestNumber = 32;

template <class T>
std::string_view Digits(T value, char (&buffer)[kLongestNumber]) {
  const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return {buffer, static_cast<std::size_t>(end.ptr - buffer)};
}

void AppendString(std::string& target, std::string_view text) {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  static constexpr std::string_view kShortEscapes = "\"\"\\\\\bb\ff\nn\rr\tt";  // pairs
  target += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && c != '"' && c != '\\') {
      target += c;
      continue;
    }
    target += '\\';
    std::size_t pair = 0;
    while (pair < kShortEscapes.size() && kShortEscapes[pair] != c) {
      pair += 2;
    }
    if (pair < kShortEscapes.size()) {
      target += kShortEscapes[pair + 1];
    } else {
      target += "u00";
      target += kHexDigits[byte >> 4];
      target += kHexDigits[byte & 0x0F];
    }
  }
  target += '"';
}

/// Writes tokens level by level on a stack of its own.
class TreeWriter {
 public:
  std::string Write(const Node& root) {
    Append(root);
    while (!open_.empty()) {
      Level& level = open_.back();
      if (level.next == level.end) {
        text_ += level.isObject ? '}' : ']';
        open_.pop_back();
        continue;
      }
      const Node& child = *level.next;
      level.next = level.isObject ? child.next : level.next + 1;
      if (child.kind == Kind::kAbsent) {
        continue;
      }
      if (text_.back() != '[' && text_.back() != '{') {
        text_ += ',';
      }
      if (level.isObject) {
        AppendString(text_, child.Name());
        text_ += ':';
      }
      Append(child);
    }
    return std::move(text_);
  }

 private:
  struct Level {
    const Node* next;
    const Node* end;
    bool isObject;
  };

  /// Of an array or an object only the beginning: the rest is left to the new level.
  void Append(const Node& node) {
    switch (node.kind) {
      case Kind::kArray:
        text_ += '[';
        open_.push_back({node.elements, node.elements + node.size, false});
        return;
      case Kind::kObject:
        text_ += '{';
        open_.push_back({node.members, nullptr, true});
        return;
      case Kind::kString:
        return AppendString(text_, node.Text());
      case Kind::kNull:
        text_ += "null";
        return;
      default:
        return AppendScalar(text_, node);
    }
  }

  std::string text_;
  std::vector<Level> open_;
};

}  // namespace

void AppendScalar(std::string& target, const Node& node) {
  char buffer[kLongestNumber];
  if (node.kind == Kind::kBool) {
    target += node.integer != 0 ? "true" : "false";
  } else if (node.kind == Kind::kUnsigned) {
    target += Digits(node.integer, buffer);
  } else if (node.kind == Kind::kNegative) {
    target += Digits(static_cast<std::int64_t>(node.integer), buffer);
  } else if (node.kind == Kind::kDouble) {
    const std::string_view digits = Digits(node.real, buffer);
    target += digits;
    // Without either, an integer would be read.
    if (digits.find_first_of(".e") == std::string_view::npos) {
      target += ".0";
    }
  }
}

std::string WriteJsonText(const Node& root) { return TreeWriter().Write(root); }

}  // namespace jsconfig
