#ifndef ARA_PER_INTERNAL_ACCESS_H_
#define ARA_PER_INTERNAL_ACCESS_H_

#include <cstdint>
#include <string>

#include "ara/per/export.h"
#include "ara/per/kvs_type.h"
#include "ara/per/kvs_type_impl_internal_type.h"

namespace ara::per {

/// The friend of `KvsType` through which the code that reads and writes files reaches what the
/// public interface hides. An application has no use for it.
///
/// Intended: every operation takes the value as const, also those that change it, since the change
/// goes through the value's own pointer. References stay valid as long as the value keeps its
/// content. A value that was moved from makes an operation that looks at it throw
/// `LogicErrorException`. Nothing is guarded against another thread on the same value.
class ARA_PER_EXPORT InternalAccess {
 public:
  std::uint32_t& GetChecksum(const KvsType& value);
  void SetChecksum(const KvsType& value, unsigned int checksum);
  std::string& GetDocumentation(const KvsType& value);
  void SetDocumentation(const KvsType& value, std::string documentation);
  KvsType::Type& GetInternalType(const KvsType& value);
  /// Does not look at the store, so that type and content can disagree.
  void SetInternalType(const KvsType& value, KvsType::Type type);
  KvsTypeInternalType& GetInternalValue(const KvsType& value);
  /// Copies the whole store, cursors and flags with it.
  void SetInternalValue(const KvsType& value, const KvsTypeInternalType& store);
  std::string& GetKey(const KvsType& value);
  void SetKey(const KvsType& value, std::string key);
  KvsType::Status& GetStatus(const KvsType& value);
  void SetStatus(const KvsType& value, KvsType::Status status);
  KvsType::Type GetType(const KvsType& value);
  /// @return the name of `type` ("sint8", ...), or "getKvsTypeAsString_not_found"; `value` is not
  ///     looked at
  std::string getKvsTypeAsString(const KvsType& value, const KvsType::Type& type);
  /// @return the type of that name, or `kNotSupported`; `value` is not looked at
  KvsType::Type getKvsTypeFromString(const KvsType& value, const std::string& name);

  /// `AddArrayItem` of an integer or a flag on a plain value, without making a value of the item.
  /// For the library: it is not exported.
  template <class Item>
  ARA_PER_LOCAL void addPlainItem(const KvsType& array, Item item);
};

}  // namespace ara::per

#endif  // ARA_PER_INTERNAL_ACCESS_H_
