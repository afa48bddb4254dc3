#ifndef ARA_PER_KVS_TYPE_H_
#define ARA_PER_KVS_TYPE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "ara/per/export.h"

namespace ara::per {

class InternalAccess;

/// The typed value that a key of a `KeyValueStorage` holds: a number, a flag, a text, a byte
/// string, or an array or nested object of further values.
///
/// Getters never convert across the groups signed integer, unsigned integer, floating number, flag
/// and text; inside a group the stored width does not matter. A read as another group throws
/// `LogicErrorException`.
///
/// A value that was moved from, or that `AddArrayItem` took, may be destroyed, copied, assigned and
/// assigned from; every other operation on it throws `LogicErrorException`.
///
/// No operation is safe against another thread on the same value; reading array items moves a
/// cursor, so that even it changes the value.
class ARA_PER_EXPORT KvsType {
 public:
  /// What a value claims to be. The numbers are printed in log lines; do not renumber.
  enum class Type : std::uint8_t {
    kNotSupported = 0,  ///< an unknown type name in a file
    kFloat = 1,
    kDouble = 2,
    kSInt8 = 3,
    kSInt16 = 4,
    kSInt32 = 5,
    kSInt64 = 6,
    kUInt8 = 7,
    kUInt16 = 8,
    kUInt32 = 9,
    kUInt64 = 10,
    kString = 11,
    kBinary = 12,
    kBoolean = 13,
    kObject = 14,  ///< a container of whole values, each with its own key and type
  };

  /// The state that travels with a value. The numbers run parallel to `KeyValueStorage::Status`;
  /// do not renumber.
  enum class Status : std::uint8_t {
    kSuccess = 0,
    kNotFound = 1,       ///< never set by the library; for applications
    kCheckSumError = 2,  ///< never set by the library; for applications
    kGeneralError = 3,   ///< the value was made from a text that holds none
  };

  /// An empty container of type `kObject`.
  KvsType();
  explicit KvsType(bool value);
  explicit KvsType(signed char value);
  explicit KvsType(short value);
  explicit KvsType(int value);
  explicit KvsType(long value);
  explicit KvsType(unsigned char value);
  explicit KvsType(unsigned short value);
  explicit KvsType(unsigned int value);
  explicit KvsType(unsigned long value);
  explicit KvsType(float value);
  explicit KvsType(double value);
  explicit KvsType(const std::string& value);
  /// @throws std::logic_error when `value` is null
  explicit KvsType(const char* value);
  /// A byte string, kept as hexadecimal text. Intended: such a value is never written to a file.
  /// @param data  first byte; null makes an empty byte string
  /// @param len  bytes
  KvsType(void* data, std::size_t len);

  /// A deep copy, also of the place of the array cursor.
  KvsType(const KvsType& other);
  KvsType& operator=(const KvsType& other);
  KvsType(KvsType&& other) noexcept;
  /// Moving a value onto itself keeps it.
  KvsType& operator=(KvsType&& other) noexcept;
  virtual ~KvsType();

  /// The typed getters give the value, or the first item of an array that began as a plain value.
  /// `GetSInt` and `GetUInt` keep the low 32 bits of a wider value, `GetFloat` narrows a double.
  /// @throws LogicErrorException when the value is of another group
  bool GetBool() const;
  std::int32_t GetSInt() const;
  std::int64_t GetSInt64() const;
  std::uint32_t GetUInt() const;
  std::uint64_t GetUInt64() const;
  float GetFloat() const;
  double GetDouble() const;
  std::string GetString() const;

  /// Copies a byte string out.
  /// @param data  room for `len` bytes, not null
  /// @param len  exactly the stored number of bytes, not 0
  /// @throws LogicErrorException when the value is no byte string, `data` is null, `len` is 0 or
  ///     not the stored number; nothing is written then
  void GetBinary(void* data, std::size_t len);

  /// Appends an item to an array and rewinds the array's cursor.
  ///
  /// On a container (`kObject`) the item is kept whole. Intended: `kvs` is then moved from, in
  /// spite of the const, so that a container that is added to itself is lost. On any other value
  /// the item is kept beside the value itself, in 64 bits and without its key, and `kvs` stays.
  /// @throws LogicErrorException when a plain value is given an item of type `kBinary`, `kObject`
  ///     or `kNotSupported`
  /// @throws std::logic_error when the item is of another group than the plain value
  void AddArrayItem(const KvsType& kvs);

  std::string GetKey() const;
  /// Intended: a key that is set here is overwritten when the value is stored under a key.
  void SetKey(const std::string& key);

  Status GetStatus() const;
  void SetStatus(const Status& status);

  Type GetType() const;
  /// @return whether the type is `kSInt8` to `kSInt64`
  bool IsSignedInteger() const;
  /// @return whether the type is `kUInt8` to `kUInt64`
  bool IsUnsignedInteger() const;

  /// Logs what the value holds, at debug level.
  void LogState() const;

  /// Gives the next item at the cursor. An item of a plain value's array comes as `kDouble`,
  /// `kSInt64`, `kUInt64`, `kBoolean` or `kString`, whatever the declared width.
  /// @throws std::logic_error with the text "1" behind the last item; the next call starts again
  ///     at the first one. With the text "0" for an array of numbers or flags with a multiple of
  ///     256 items, which, intended, counts as one without items here. With a sentence for a value
  ///     that never had any.
  KvsType GetNextArrayItem();
  /// @return the number of items; 1 for a plain value, and 0 for one without content
  std::size_t GetNumberOfArrayItems();
  /// Moves the cursor to the first item.
  void ResetArrayItemGetter();

  /// Gives the value as the text of a database file of one item, with every loss of such a file.
  /// It moves the cursor. A value that a file does not take (`kBinary`) gives an empty text.
  std::string SerializeKvsData();

  /// Reads the first item of a text in the form of a database file.
  /// @param flag  true: "initValue" and "valueDataType" stand for "value" and "type"
  /// @return the item; a default value with status `kGeneralError` when the text is empty, no such
  ///     text or without an item
  static KvsType DeSerializeKvsData(const std::string& data, bool flag);

 private:
  friend class InternalAccess;

  class ARA_PER_LOCAL Impl;

  ARA_PER_LOCAL Impl& impl() const;

  std::unique_ptr<Impl> impl_;  // null only in a value that was moved from or copied from such
};

}  // namespace ara::per

#endif  // ARA_PER_KVS_TYPE_H_
