#ifndef ARA_PER_KEY_VALUE_STORAGE_H_
#define ARA_PER_KEY_VALUE_STORAGE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ara/per/export.h"
#include "ara/per/kvs_type.h"

namespace ara::per {

/// An in-process database of typed values under text keys, kept whole in memory and in one JSON
/// file.
///
/// Every change is made in memory. It reaches the file through `SyncToStorage`, or `updateTime`
/// milliseconds after the first of a burst of changes; the end of the object writes nothing.
/// `updateTime`, the size limit and the redundancy come from "/PersistencyConfig.json" under the
/// working directory of the process, read when a database is opened.
///
/// Threads: the object takes no lock. One thread may use it at a time, and the delayed write runs
/// on a thread of its own beside it. Only the writing itself is guarded: of all databases of the
/// process one at a time, unless another one is opened meanwhile. The free functions may be called
/// from any thread.
///
/// A moved-from object may be destroyed and assigned to, and `RemoveKey`, `RemoveAllKeys` and
/// `SyncToStorage` do nothing on it; `HasKey`, `GetAllKeys`, `GetValue` and `SetValue` throw
/// `LogicErrorException`.
class ARA_PER_EXPORT KeyValueStorage {
 public:
  /// Runs parallel to `KvsType::Status`; do not renumber.
  enum class Status : std::uint8_t {
    kSuccess = 0,
    kNotFound = 1,       ///< only from a value stored with this status; not for a missing key
    kCheckSumError = 2,  ///< only from a value stored with this status
    kGeneralError = 3,   ///< a wrong type, an empty vector or a malformed byte string
  };

  /// Opens a database and loads its file.
  ///
  /// A file that is missing, unreadable or malformed gives an open, empty database; the log tells.
  /// Intended: it lets the next database be written, even while one is being written.
  /// @param database  path of the file, used as it stands and, when the file is missing at a save,
  ///     also in a shell command: it must come from a trusted source
  explicit KeyValueStorage(const std::string& database);
  KeyValueStorage(const KeyValueStorage&) = delete;
  KeyValueStorage& operator=(const KeyValueStorage&) = delete;
  KeyValueStorage(KeyValueStorage&& other) noexcept;
  /// Intended: unlike the destructor it leaves the delayed writes of the process alone; the
  /// database that was held before is dropped without being written, unless a delayed write of it
  /// has begun.
  KeyValueStorage& operator=(KeyValueStorage&& other) noexcept;

  /// Intended: changes that were not synchronised are lost, and every delayed write that is
  /// pending in the process is silenced, also those of other databases.
  virtual ~KeyValueStorage();

  /// @return all keys in the order in which they were first stored
  std::vector<std::string> GetAllKeys() const;

  /// @return whether something is stored under `key`
  bool HasKey(const std::string& key) const;

  /// Removes a key from memory; a missing one is only logged. Intended: it starts the delay all the
  /// same, and when that ends with nothing changed, no later change starts one until
  /// `SyncToStorage` has written.
  /// @throws std::system_error when the thread of the delayed write cannot be started; the change
  ///     has been made by then
  void RemoveKey(const std::string& key);

  /// Removes all keys from memory. It throws as `RemoveKey` does, and, when there were none, starts
  /// the delay as that does for a missing one.
  void RemoveAllKeys();

  /// Intended: does nothing.
  void setLogLevel(int level);

  /// Reads the value under `key` as `T`.
  ///
  /// `T` is `signed char`, `short`, `int`, `long`, their unsigned forms, `float`, `double`, `bool`,
  /// `std::string`, a `std::vector` of one of these, or `KvsType`. A narrower integer gets the low
  /// bits; other groups of types are not converted. What is stored as a plain value reads as a
  /// vector of one element. A vector of `unsigned char` is a text of hexadecimal digits.
  ///
  /// Intended: a vector (except one of bytes) and a `KvsType` of a missing key give `kSuccess` and
  /// are empty; ask `HasKey`. An array of numbers or flags with a multiple of 256 elements reads as
  /// an empty vector and prints "0" and a line end on standard output for each of them. `KvsType`
  /// is a copy made through the text of a database file, with its losses; `value` is written
  /// whatever the status.
  /// @param value  receives the value; untouched unless the result is `kSuccess`, but see above
  /// @return `kGeneralError` for a wrong type, for a byte string of odd length and, but see above,
  ///     for a missing key; otherwise the stored value's status, `kSuccess` as a rule
  /// @throws LogicErrorException when a vector's element is of another group; `value` is untouched
  template <class T>
  Status GetValue(const std::string& key, T& value) const;

  /// Stores a copy of `value` under `key`, in memory. The types are those of `GetValue`. A key that
  /// exists keeps its place in the order of keys. A vector of numbers or flags prints the line of
  /// `SaveArray`.
  ///
  /// Intended: a file does not hold all that memory does. It keeps the low half of a plain 64-bit
  /// number and six decimals, no `kBinary`, and no array of numbers or flags with a multiple of 256
  /// elements; a quote, a backslash or a control character in a key or a text, infinity and
  /// not-a-number make the file unreadable, or the text comes back changed.
  /// @return `kGeneralError` for an empty vector, which leaves the key as it was; else `kSuccess`
  /// @throws LogicErrorException for a moved-from `KvsType`; the key is as it was
  /// @throws std::system_error as `RemoveKey` does
  template <class T>
  Status SetValue(const std::string& key, const T& value);

  /// Writes the whole database to its file now, when it was changed, and waits for the disk.
  ///
  /// Intended: with a change it silences all delays that are pending in the process, also those of
  /// other databases and of accessors; as a rule these start none until they are synchronised. No
  /// failure is reported. With redundancy configured, a file that is not smaller than `maxSize`
  /// bytes refuses the write, and the changes stay in memory until a later change.
  /// @throws LogicErrorException when an item inside a stored object was moved from, which only
  ///     `InternalAccess` can bring about; nothing is written, and no database of the process can
  ///     be written after that until another one is opened
  void SyncToStorage() const;

  /// Maps a value's status and ignores `key`. The one instance has `T` = `KvsType::Status`.
  template <class T>
  Status GetKvsTypeStatus(const std::string& key, T status) const;

 private:
  class ARA_PER_LOCAL Impl;

  ARA_PER_LOCAL Impl& engine() const;

  // Null only in a moved-from object. Shared with nobody but a delayed write that has begun.
  std::shared_ptr<Impl> pimpl_;
};

/// Opens a database as the constructor of `KeyValueStorage` does. @return never null
ARA_PER_EXPORT std::unique_ptr<KeyValueStorage> CreateKeyValueStorage(const std::string& database);

/// Intended: does nothing.
ARA_PER_EXPORT void RecoverKeyValueStorage(const std::string& database);

/// Intended: does nothing.
ARA_PER_EXPORT void ResetKeyValueStorage(const std::string& database);

/// @return the status of the same number; `kGeneralError` for a number above 3
ARA_PER_EXPORT KeyValueStorage::Status ConvertKvsTypeStatus(const KvsType::Status& status);

/// Makes a value of a vector: the first element, and the others as its array items. It prints
/// "SaveArray size=", the number of elements and a line end on standard output.
///
/// `T` is a `std::vector` of an integer type but `unsigned char`, of `bool`, `float` or `double`.
/// @throws std::exception when `value` is empty
template <class T>
ARA_PER_EXPORT KvsType SaveArray(const T& value);

}  // namespace ara::per

#endif  // ARA_PER_KEY_VALUE_STORAGE_H_
