#ifndef ARA_PER_KVS_TYPE_IMPL_INTERNAL_TYPE_H_
#define ARA_PER_KVS_TYPE_IMPL_INTERNAL_TYPE_H_

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

#include "ara/per/export.h"
#include "ara/per/kvs_type.h"

namespace ara::per {

/// The raw store inside a `KvsType`: one value or an ordered sequence of values of one kind, with
/// a cursor for reading them one by one. It knows no key, no type name and no declared width, and
/// all its failures are `std::logic_error`.
///
/// Reading moves the cursor, so that not even two reads may run at once.
class ARA_PER_EXPORT KvsTypeInternalType {
 public:
  /// What a store holds. It changes only once, from `kNone`, with the first `Add`.
  enum class Kind : std::int32_t {
    kNone = 0,
    kDouble = 1,
    kInt = 2,
    kUint = 3,
    kBool = 4,
    kObject = 5,
    kString = 6,
  };

  KvsTypeInternalType();
  explicit KvsTypeInternalType(double value);
  explicit KvsTypeInternalType(long value);
  explicit KvsTypeInternalType(unsigned long value);
  explicit KvsTypeInternalType(bool value);
  explicit KvsTypeInternalType(const std::string& value);

  /// A deep copy. The cursors and the flags are taken as they stand: a copy made in the middle of
  /// a pass goes on from there in its own items.
  KvsTypeInternalType(const KvsTypeInternalType& other);
  KvsTypeInternalType& operator=(const KvsTypeInternalType& other);
  ~KvsTypeInternalType();

  /// Append at the end and rewind the cursor.
  /// @throws std::logic_error when the store is of another kind; it is unchanged then
  void Add(double value);
  void Add(long value);
  void Add(unsigned long value);
  void Add(bool value);
  void Add(const std::string& value);
  /// Intended: takes the argument's content in spite of the const; the caller's value is moved
  /// from.
  void Add(const KvsType& value);

  /// Give the first element. The scalar readers reinterpret its bits and do not look at the kind;
  /// a list without elements reads as 0, false, an empty text or a default value.
  bool GetBool() const;
  double GetDouble() const;
  std::int64_t GetInt() const;
  std::uint64_t GetUint() const;
  KvsType GetKvsType() const;
  std::string GetString() const;

  /// @return the number of elements
  std::size_t GetSize() const;
  Kind GetType() const;
  /// Moves the cursor to the first element.
  void resetGetter();
  /// Marks the value as an array, also with fewer than two elements.
  void SetParsedAsArray(bool flag);
  bool GetParsedAsArray() const;

  /// Give the next element. Behind the last one they throw with the text "1", and the call after
  /// that starts again at the first element.
  ///
  /// Intended: of the number of scalars only the low byte is tested, so that a store of 256 of
  /// them, or any multiple, counts as empty here and nowhere else.
  /// @throws std::logic_error with the text "1" at the end; "0" when the scalars count as none, for
  ///     `getNext` also when there are none; "-1" when `GetStringNext` meets another kind, `kNone`
  ///     too, or a sentence when another operation does
  std::uint64_t getNext();
  bool GetBoolNext();
  double GetDoubleNext();
  std::int64_t GetIntNext();
  std::uint64_t GetUintNext();
  std::string GetStringNext();
  /// The next element of any kind as a value of type `kDouble`, `kSInt64`, `kUInt64`, `kBoolean`
  /// or `kString`, or as the object that it is. The element stays in the store.
  KvsType GetKvsTypeNext();

  /// The end test of the reads above without the cost of an exception.
  /// @param kind  the kind that the next read demands
  /// @return null when that read gives an element or meets another kind; else the text that it
  ///     would throw with, the store having been rewound as by that read
  const char* endOfSequence(Kind kind);

  /// All scalars as the raw bits that `getNext` gives, without moving the cursor.
  const std::list<std::uint64_t>& scalars() const { return scalar_list_; }
  /// Whether the reads above take the scalars for none.
  bool scalarsCountAsNone() const;

  /// The raw bits of a scalar as the scalar itself. For the library: it is not exported.
  template <class Scalar>
  ARA_PER_LOCAL static Scalar fromCell(std::uint64_t cell);

 private:
  template <class Scalar>
  ARA_PER_LOCAL void addScalar(Kind kind, const char* mismatch, Scalar value);
  ARA_PER_LOCAL void settleKind(Kind kind, const char* mismatch);
  ARA_PER_LOCAL void demandKind(Kind kind, const char* mismatch) const;
  ARA_PER_LOCAL void demandNext(Kind kind);
  ARA_PER_LOCAL const char* endOfScalars();

  Kind kind_ = Kind::kNone;
  std::list<std::uint64_t> scalar_list_;  // a double, int64_t, uint64_t or bool in eight bytes
  std::list<std::uint64_t>::iterator scalar_cursor_ = scalar_list_.begin();
  std::list<KvsType> object_list_;
  std::list<KvsType>::iterator object_cursor_ = object_list_.begin();
  std::list<std::string> string_list_;
  std::list<std::string>::iterator string_cursor_ = string_list_.begin();
  bool parsed_as_array_ = false;
  bool restart_pending_ = true;  // the next read starts at the front; one flag for all cursors
  [[maybe_unused]] bool second_flag_ = true;  // Intended: copied along and read by nothing
};

template <>
ARA_PER_LOCAL bool KvsTypeInternalType::fromCell<bool>(std::uint64_t cell);

}  // namespace ara::per

#endif  // ARA_PER_KVS_TYPE_IMPL_INTERNAL_TYPE_H_
