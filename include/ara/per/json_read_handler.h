#ifndef ARA_PER_JSON_READ_HANDLER_H_
#define ARA_PER_JSON_READ_HANDLER_H_

#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <string>

#include "ara/per/export.h"
#include "ara/per/internal_access.h"
#include "ara/per/kvs_type.h"

namespace ara::per {

class JsonParser;

/// Builds `KvsType` items from a stream of JSON events and appends each finished top-level item to
/// the caller's list.
///
/// The reader of database files uses a part of the events. A handler is for one pass on one
/// thread; an item that never reaches its `EndObject` is dropped with it.
class ARA_PER_EXPORT JsonReadHandler {
 public:
  enum class State : std::int32_t {
    kWaitItem = 0,  ///< between top-level items
    kInItem = 1,    ///< inside an item's object
    kInValue = 2,   ///< inside a value object, whose member names are type names
  };

  /// @param items  receives the finished items; must outlive the handler
  JsonReadHandler(const JsonParser& parser, std::list<std::unique_ptr<KvsType>>& items);
  JsonReadHandler(const JsonReadHandler&) = delete;
  JsonReadHandler& operator=(const JsonReadHandler&) = delete;
  ~JsonReadHandler();

  /// Opens an item, a value object or a child item, by the state.
  /// @return true
  /// @throws PhysicalStorageErrorException when the new item cannot be allocated
  bool StartObject();

  /// In an item, remembers which of "key", "checksum", "version" and "documentation" comes next;
  /// another name changes nothing. In a value object, takes the name as the item's type name, in
  /// which a "[]" marks an array.
  /// @return true; false when a value object has no item
  /// @throws std::logic_error when `name` is null
  bool Key(const char* name);

  /// Closes what `StartObject` opened. Intended: no checksum is compared; every item ends with
  /// `kSuccess`.
  /// @return false when there is no item to close; else true
  /// @throws PhysicalStorageErrorException when nothing is open
  /// @throws std::logic_error when the parent of a child item holds values of another kind
  bool EndObject();

  /// Add a value to the item, whatever the state and the member name before. `KObject` takes the
  /// content of its argument.
  /// @return whether there is an item
  /// @throws std::logic_error when the item holds values of another kind
  bool Bool(bool value);
  bool Int(int value);
  bool Uint(unsigned int value);
  bool Int64(long value);
  bool Uint64(unsigned long value);
  bool Double(double value);
  bool KObject(KvsType& value);

  /// Takes a text as the item's key or documentation, when the member name said so; else adds it
  /// to an item of type `kString` or `kBinary`, and drops it for an item of another type.
  /// @return whether there is an item
  /// @throws std::logic_error when `text` is null and there is an item
  bool String(const char* text);

  /// Does nothing. @return whether there is an item
  bool Null();
  /// Does nothing. @return false
  bool RawNumber(const char* text);
  /// Do nothing: all elements go to the same item. @return true
  bool StartArray();
  bool EndArray();

  /// Sets the item's declared type by its name and gives it in `type`; an unknown name gives
  /// `kNotSupported`. These three set a field of the item.
  /// @return true; false when there is no item
  bool setValueType(std::string name, KvsType::Type& type);
  bool setParseAsArray(bool flag);
  bool setCheckSum(unsigned int checksum);

  /// Replaces the item by a new one inside a value object.
  void setNewItem();
  /// @return the item, which the handler has no longer; may be null
  std::unique_ptr<KvsType> getNewItem();

  /// Intended: compares nothing and sets `kSuccess`.
  void CompareCrcAndUpdateStatus(KvsType& item);

 private:
  // Which member name was seen last. Intended: no event but a key's or a documentation's text
  // resets it. The values for "checksum" and "version" are set and never asked for.
  enum class KeyKind : std::int32_t {
    kNoKey = 0,
    kItemKey = 1,
    kChecksumKey = 3,
    kDocumentationKey = 4,
    kVersionKey = 5,
  };

  template <class Value>
  ARA_PER_LOCAL bool addValue(const Value& value);
  ARA_PER_LOCAL void beginItem(bool asChild, int line);
  ARA_PER_LOCAL bool endItem();
  ARA_PER_LOCAL void takeTypeName(const std::string& name);

  State m_state = State::kWaitItem;
  KeyKind m_keyKind = KeyKind::kNoKey;
  std::unique_ptr<KvsType> m_current;  // null between items
  std::list<std::unique_ptr<KvsType>>& m_items;
  std::deque<std::unique_ptr<KvsType>> m_itemStack;  // the open parents of m_current
  std::deque<State> m_stateStack;                    // m_state as each parent was pushed
  [[maybe_unused]] const JsonParser& m_parser;       // Intended: kept and not used
  std::unique_ptr<InternalAccess> m_access;
  bool m_checksumFailed = false;  // an item or a child of it came out with kCheckSumError
};

}  // namespace ara::per

#endif  // ARA_PER_JSON_READ_HANDLER_H_
