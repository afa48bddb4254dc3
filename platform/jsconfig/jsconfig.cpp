#include "jsconfig/jsconfig.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "file_descriptor.h"
#include "json_text_reader.h"
#include "json_text_writer.h"
#include "json_tree.h"

namespace jsconfig {
namespace {

/// What a handle on no token refers to: class 2 for good. Never destroyed, since handles may live
/// on while the process ends.
Node& NoToken() {
  static Node& node = *new Node;
  return node;
}

Node& ElementOf(const Node& node, int index) {
  const auto position = static_cast<std::size_t>(index);  // a negative index is beyond any size
  return node.kind == Kind::kArray && position < node.size ? node.elements[position] : NoToken();
}

Node& MemberOf(Node& node, const char* name) {
  if (node.kind != Kind::kObject || name == nullptr) {
    return NoToken();
  }
  const std::string_view wanted(name);
  Node* found = nullptr;
  Node** link = &node.members;
  for (; *link != nullptr; link = &(*link)->next) {
    if ((*link)->Name() == wanted) {
      found = *link;
    }
  }
  if (found != nullptr) {
    return *found;
  }

  char* const copy = node.tree->NewText(wanted.size());
  std::memcpy(copy, wanted.data(), wanted.size());
  Node& absent = *node.tree->NewNodes(1);
  absent.name = copy;
  absent.nameSize = static_cast<std::uint32_t>(wanted.size());
  *link = &absent;
  return absent;
}

bool IsInteger(const Node& node) {
  return node.kind == Kind::kUnsigned || node.kind == Kind::kNegative;
}

void Report(bool* ok, bool value) {
  if (ok != nullptr) {
    *ok = value;
  }
}

double RealOf(const Node& node) {
  switch (node.kind) {
    case Kind::kBool:
    case Kind::kUnsigned:
      return static_cast<double>(node.integer);
    case Kind::kNegative:
      return static_cast<double>(static_cast<std::int64_t>(node.integer));
    case Kind::kDouble:
      return node.real;
    default:
      return 0.0;
  }
}

/// `value` cut toward zero and held to the range of `T`. The limits are compared as powers of two,
/// which a double holds exactly, while it rounds the largest 64-bit integers up.
template <class T>
T CutToInteger(double value) {
  const double beyond = std::ldexp(1.0, std::numeric_limits<T>::digits);
  const double lowest = std::is_signed_v<T> ? -beyond : 0.0;
  if (value >= beyond) {
    return std::numeric_limits<T>::max();
  }
  if (value <= lowest) {
    return std::numeric_limits<T>::min();
  }
  return static_cast<T>(value);
}

template <class T>
T IntegerOf(const CObject& object, bool* ok) {
  const Node& node = Node::Of(object);
  Report(ok, IsInteger(node));
  if (IsInteger(node) || node.kind == Kind::kBool) {
    return static_cast<T>(node.integer);
  }
  return CutToInteger<T>(RealOf(node));
}

/// @return what went wrong; empty if every byte was written
std::string WriteFile(const std::string& path, std::string_view text) {
  FileDescriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (file.Get() == -1) {
    return DescribeSystemError("cannot open", path);
  }
  while (!text.empty()) {
    const ssize_t written = ::write(file.Get(), text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      return DescribeSystemError("cannot write", path);
    }
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  return file.Close() ? std::string() : DescribeSystemError("cannot write", path);
}

}  // namespace

CObjectArray::CObjectArray() : node_(&NoToken()) {}
CObjectArray::CObjectArray(const CObjectArray& other) = default;
CObjectArray& CObjectArray::operator=(const CObjectArray& other) = default;
CObjectArray::~CObjectArray() = default;

int CObjectArray::countObject() const {
  return node_->kind == Kind::kArray ? static_cast<int>(node_->size) : 0;
}

CObject& CObjectArray::operator[](int index) { return ElementOf(*node_, index).self; }
const CObject& CObjectArray::operator[](int index) const { return ElementOf(*node_, index).self; }

CObject::CObject() = default;
CObject::CObject(const CObject& other) = default;
CObject::~CObject() = default;

CObject& CObject::operator=(const CObject& other) {
  // A node's own handle keeps referring to it, or later look-ups would be led astray.
  if (this != &Node::Of(*this).self) {
    handle_ = other.handle_;
  }
  return *this;
}

int CObject::getType() const { return static_cast<int>(Node::Of(*this).kind); }

CObject& CObject::operator[](const char* name) { return MemberOf(Node::Of(*this), name).self; }

const CObject& CObject::operator[](const char* name) const {
  return MemberOf(Node::Of(*this), name).self;
}

const CObject& CObject::operator[](int index) const { return handle_[index]; }

CObjectArray CObject::toArray(bool* ok) { return std::as_const(*this).toArray(ok); }

const CObjectArray& CObject::toArray(bool* ok) const {
  Report(ok, Node::Of(*this).kind == Kind::kArray);
  return handle_;
}

bool CObject::toBool(bool* ok) const {
  const Node& node = Node::Of(*this);
  Report(ok, node.kind == Kind::kBool);
  return RealOf(node) != 0.0;
}

std::int32_t CObject::toInt32(bool* ok) const { return IntegerOf<std::int32_t>(*this, ok); }
std::uint32_t CObject::toUInt32(bool* ok) const { return IntegerOf<std::uint32_t>(*this, ok); }
std::int64_t CObject::toInt64(bool* ok) const { return IntegerOf<std::int64_t>(*this, ok); }
std::uint64_t CObject::toUInt64(bool* ok) const { return IntegerOf<std::uint64_t>(*this, ok); }

double CObject::toDouble(bool* ok) const {
  const Node& node = Node::Of(*this);
  Report(ok, IsInteger(node) || node.kind == Kind::kDouble);
  return RealOf(node);
}

std::string CObject::toString(bool* ok) const {
  const Node& node = Node::Of(*this);
  const bool isString = node.kind == Kind::kString;
  Report(ok, isString);
  std::string text;
  if (isString) {
    text = node.Text();
  } else {
    AppendScalar(text, node);
  }
  return text;
}

void CObject::setValue(unsigned int value) {
  Node& node = Node::Of(*this);
  if (&node == &NoToken()) {
    return;
  }
  node.kind = Kind::kUnsigned;
  node.integer = value;
}

CObjectDocument::CObjectDocument() = default;
CObjectDocument::~CObjectDocument() = default;

bool CObjectDocument::parse(std::string path) {
  tree_.reset();
  error_.clear();
  tree_ = ReadJsonFile(path, error_);
  return tree_ != nullptr;
}

bool CObjectDocument::parseString(const std::string& text) {
  tree_.reset();
  error_.clear();
  tree_ = ReadJsonText(text, error_);
  return tree_ != nullptr;
}

CObject* CObjectDocument::root() { return tree_ == nullptr ? nullptr : &tree_->root.self; }

std::string CObjectDocument::errorString() { return error_; }

bool CObjectDocument::save(std::string path) {
  error_ = tree_ == nullptr ? "the document is empty" : WriteFile(path, WriteJsonText(tree_->root));
  return error_.empty();
}

}  // namespace jsconfig
