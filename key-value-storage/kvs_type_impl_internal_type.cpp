#include "ara/per/kvs_type_impl_internal_type.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace ara::per {
namespace {

template <class Scalar>
std::uint64_t ToCell(Scalar value) {
  std::uint64_t cell = 0;
  static_assert(sizeof value == sizeof cell);
  std::memcpy(&cell, &value, sizeof value);
  return cell;
}

std::uint64_t ToCell(bool value) { return value ? 1 : 0; }

/// What a read of `list` at `cursor` would throw with; the end of the list rewinds.
template <class List>
const char* EndOf(bool empty, List& list, typename List::iterator& cursor, bool& restart) {
  if (empty) {
    return "0";
  }
  if (cursor == list.end()) {
    restart = true;
    cursor = list.begin();
    return "1";
  }
  return nullptr;
}

/// The element to read now; the cursor goes on to the one behind it.
template <class List>
typename List::value_type& Step(List& list, typename List::iterator& cursor, bool& restart) {
  if (restart) {
    cursor = list.begin();
    restart = false;
  }
  return *cursor++;
}

template <class List>
typename List::iterator SamePlace(const List& source, typename List::const_iterator cursor,
                                  List& target) {
  return std::next(target.begin(), std::distance(source.begin(), cursor));
}

/// Assigns element by element if their number is the same, and else all at once: a delayed write
/// may be reading one. @return the place of `cursor` in `target`
template <class List>
typename List::iterator AssignElements(List& source, typename List::iterator cursor, List& target) {
  const auto place = std::distance(source.begin(), cursor);
  if (target.size() == source.size()) {
    std::copy(source.begin(), source.end(), target.begin());
  } else {
    target.swap(source);
  }
  return std::next(target.begin(), place);
}

}  // namespace

template <class Scalar>
Scalar KvsTypeInternalType::fromCell(std::uint64_t cell) {
  Scalar value;
  std::memcpy(&value, &cell, sizeof value);
  return value;
}

template <>
bool KvsTypeInternalType::fromCell<bool>(std::uint64_t cell) {
  return static_cast<unsigned char>(cell) != 0;
}

template double KvsTypeInternalType::fromCell<double>(std::uint64_t cell);
template std::int64_t KvsTypeInternalType::fromCell<std::int64_t>(std::uint64_t cell);
template std::uint64_t KvsTypeInternalType::fromCell<std::uint64_t>(std::uint64_t cell);

KvsTypeInternalType::KvsTypeInternalType() = default;
KvsTypeInternalType::KvsTypeInternalType(double value) { Add(value); }
KvsTypeInternalType::KvsTypeInternalType(long value) { Add(value); }
KvsTypeInternalType::KvsTypeInternalType(unsigned long value) { Add(value); }
KvsTypeInternalType::KvsTypeInternalType(bool value) { Add(value); }
KvsTypeInternalType::KvsTypeInternalType(const std::string& value) { Add(value); }
KvsTypeInternalType::~KvsTypeInternalType() = default;

KvsTypeInternalType::KvsTypeInternalType(const KvsTypeInternalType& other)
    : kind_(other.kind_),
      scalar_list_(other.scalar_list_),
      object_list_(other.object_list_),
      string_list_(other.string_list_),
      parsed_as_array_(other.parsed_as_array_),
      restart_pending_(other.restart_pending_),
      second_flag_(other.second_flag_) {
  scalar_cursor_ = SamePlace(other.scalar_list_, other.scalar_cursor_, scalar_list_);
  object_cursor_ = SamePlace(other.object_list_, other.object_cursor_, object_list_);
  string_cursor_ = SamePlace(other.string_list_, other.string_cursor_, string_list_);
}

KvsTypeInternalType& KvsTypeInternalType::operator=(const KvsTypeInternalType& other) {
  if (this == &other) {
    return *this;
  }
  KvsTypeInternalType copy(other);  // which may be inside one of our objects
  scalar_cursor_ = AssignElements(copy.scalar_list_, copy.scalar_cursor_, scalar_list_);
  object_cursor_ = AssignElements(copy.object_list_, copy.object_cursor_, object_list_);
  string_cursor_ = AssignElements(copy.string_list_, copy.string_cursor_, string_list_);
  kind_ = copy.kind_;
  parsed_as_array_ = copy.parsed_as_array_;
  restart_pending_ = copy.restart_pending_;
  second_flag_ = copy.second_flag_;
  return *this;
}

void KvsTypeInternalType::demandKind(Kind kind, const char* mismatch) const {
  if (kind_ != kind) {
    throw std::logic_error(mismatch);
  }
}

void KvsTypeInternalType::settleKind(Kind kind, const char* mismatch) {
  if (kind_ == Kind::kNone) {
    kind_ = kind;
  }
  demandKind(kind, mismatch);
}

template <class Scalar>
void KvsTypeInternalType::addScalar(Kind kind, const char* mismatch, Scalar value) {
  settleKind(kind, mismatch);
  scalar_list_.push_back(ToCell(value));
  resetGetter();
}

void KvsTypeInternalType::Add(double value) {
  // Intended: the text names bool.
  addScalar(Kind::kDouble, "KvsTypeInternalType::Add(bool)() Internal type is not a double", value);
}

void KvsTypeInternalType::Add(long value) {
  addScalar(Kind::kInt, "KvsTypeInternalType::Add(int64_t)() Internal type is not an int", value);
}

void KvsTypeInternalType::Add(unsigned long value) {
  addScalar(Kind::kUint, "KvsTypeInternalType::Add(uint64_t)() Internal type is not an u-int",
            value);
}

void KvsTypeInternalType::Add(bool value) {
  addScalar(Kind::kBool, "KvsTypeInternalType::Add(bool)() Internal type is not a bool", value);
}

void KvsTypeInternalType::Add(const std::string& value) {
  settleKind(Kind::kString, "KvsTypeInternalType::Add(string)() Internal type is not a string");
  string_list_.push_back(value);
  resetGetter();
}

void KvsTypeInternalType::Add(const KvsType& value) {
  settleKind(Kind::kObject,
             "KvsTypeInternalType::Add(const KvsType& aKvsObj Internal type is not an object");
  // Intended: the const is cast away; every caller builds the item for this call.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
  object_list_.push_back(std::move(const_cast<KvsType&>(value)));
  resetGetter();
}

bool KvsTypeInternalType::GetBool() const {
  return !scalar_list_.empty() && fromCell<bool>(scalar_list_.front());
}

double KvsTypeInternalType::GetDouble() const {
  return scalar_list_.empty() ? 0.0 : fromCell<double>(scalar_list_.front());
}

std::int64_t KvsTypeInternalType::GetInt() const {
  return scalar_list_.empty() ? 0 : fromCell<std::int64_t>(scalar_list_.front());
}

std::uint64_t KvsTypeInternalType::GetUint() const {
  return scalar_list_.empty() ? 0 : scalar_list_.front();
}

KvsType KvsTypeInternalType::GetKvsType() const {
  return object_list_.empty() ? KvsType() : object_list_.front();
}

std::string KvsTypeInternalType::GetString() const {
  return string_list_.empty() ? std::string() : string_list_.front();
}

std::size_t KvsTypeInternalType::GetSize() const {
  switch (kind_) {
    case Kind::kObject:
      return object_list_.size();
    case Kind::kString:
      return string_list_.size();
    default:
      return scalar_list_.size();
  }
}

KvsTypeInternalType::Kind KvsTypeInternalType::GetType() const { return kind_; }

void KvsTypeInternalType::resetGetter() {
  scalar_cursor_ = scalar_list_.begin();
  object_cursor_ = object_list_.begin();
  string_cursor_ = string_list_.begin();
}

void KvsTypeInternalType::SetParsedAsArray(bool flag) { parsed_as_array_ = flag; }

bool KvsTypeInternalType::GetParsedAsArray() const { return parsed_as_array_; }

const char* KvsTypeInternalType::endOfSequence(Kind kind) {
  if (kind != kind_) {
    return nullptr;
  }
  switch (kind) {
    case Kind::kObject:
      return EndOf(object_list_.empty(), object_list_, object_cursor_, restart_pending_);
    case Kind::kString:
      return EndOf(string_list_.empty(), string_list_, string_cursor_, restart_pending_);
    default:
      return endOfScalars();
  }
}

bool KvsTypeInternalType::scalarsCountAsNone() const {
  // Intended: only the low byte of the count is tested; 256 scalars count as none.
  return static_cast<unsigned char>(scalar_list_.size()) == 0;
}

const char* KvsTypeInternalType::endOfScalars() {
  return EndOf(scalarsCountAsNone(), scalar_list_, scalar_cursor_, restart_pending_);
}

std::uint64_t KvsTypeInternalType::getNext() {
  if (const char* const end = endOfScalars()) {
    throw std::logic_error(end);
  }
  return Step(scalar_list_, scalar_cursor_, restart_pending_);
}

bool KvsTypeInternalType::GetBoolNext() {
  // Intended: the text names GetUint.
  demandKind(Kind::kBool, "KvsTypeInternalType::GetUint() Internal type is not a boolean");
  return fromCell<bool>(getNext());
}

double KvsTypeInternalType::GetDoubleNext() {
  demandKind(Kind::kDouble, "KvsTypeInternalType::GetDoubleNext() Internal type is not a double");
  return fromCell<double>(getNext());
}

std::int64_t KvsTypeInternalType::GetIntNext() {
  demandKind(Kind::kInt, "KvsTypeInternalType::GetIntNext() Internal type is not an integer");
  return fromCell<std::int64_t>(getNext());
}

std::uint64_t KvsTypeInternalType::GetUintNext() {
  demandKind(Kind::kUint, "KvsTypeInternalType::GetUintNext() Internal type is not an uint");
  return getNext();
}

void KvsTypeInternalType::demandNext(Kind kind) {
  if (const char* const end = endOfSequence(kind)) {
    throw std::logic_error(end);
  }
}

std::string KvsTypeInternalType::GetStringNext() {
  demandKind(Kind::kString, "-1");
  demandNext(Kind::kString);
  return Step(string_list_, string_cursor_, restart_pending_);
}

KvsType KvsTypeInternalType::GetKvsTypeNext() {
  switch (kind_) {
    case Kind::kObject:
      demandNext(Kind::kObject);
      return Step(object_list_, object_cursor_, restart_pending_);
    case Kind::kDouble:
      return KvsType(GetDoubleNext());
    case Kind::kInt:
      return KvsType(GetIntNext());
    case Kind::kUint:
      return KvsType(GetUintNext());
    case Kind::kBool:
      return KvsType(GetBoolNext());
    case Kind::kString:
      return KvsType(GetStringNext());
    default:
      throw std::logic_error("getKvsTypeNext() wrong type asked");
  }
}

}  // namespace ara::per
