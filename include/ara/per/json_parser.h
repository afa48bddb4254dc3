#ifndef ARA_PER_JSON_PARSER_H_
#define ARA_PER_JSON_PARSER_H_

#include <list>
#include <map>
#include <memory>
#include <string>

#include "ara/per/export.h"
#include "ara/per/internal_access.h"
#include "ara/per/json_create_object.h"
#include "ara/per/json_read_handler.h"
#include "ara/per/kvs_type.h"
#include "ara/per/log_extend.h"

namespace jsconfig {
class CObject;
class CObjectArray;
}  // namespace jsconfig

namespace ara::per {

/// Reads and writes database files: one JSON array (RFC 8259) with an object for each item, whose
/// members are "key", "type" and "value". What is written and what is read differ in many places;
/// docs/quirks.md lists them.
///
/// A parser serves one operation on one thread. A bad file or text is no exception; what gets out
/// is what the handler and the values raise, and the lack of memory.
class ARA_PER_EXPORT JsonParser {
 public:
  /// @param fileName  the file to read or write; may be empty when only texts are used
  explicit JsonParser(const std::string& fileName);
  virtual ~JsonParser();

  /// @return the file's items in its order; empty when the file is missing, malformed or holds no
  ///     item, which only the log tells apart
  std::list<std::unique_ptr<KvsType>> parseKvsJson();

  /// @param initMode  true: "initValue" and "valueDataType" stand for "value" and "type"
  /// @return the first item of a text in the form of a database file; null when there is none
  std::unique_ptr<KvsType> parseKvsTypeFromString(const std::string& text, bool initMode);

  /// The steps of reading. They give false when an element, a type or a value is missing or null;
  /// "the json type is invalid" on standard output tells so.
  bool parseJsonArrayObject(const jsconfig::CObjectArray& items, JsonReadHandler& handler,
                            bool initMode);
  /// The elements of a top-level "object" value.
  bool parseArrayObj(JsonReadHandler& handler, const jsconfig::CObject& value, bool initMode);
  /// The elements of a nested "object" value, into `parent`.
  bool parseArrayObjInner(const jsconfig::CObject& value, KvsType& parent, bool initMode);
  /// A top-level array of scalars, by the declared type.
  void parseArrayValue(JsonReadHandler& handler, const jsconfig::CObject& value,
                       KvsType::Type type);
  /// A nested array of scalars, by the class of its type name.
  /// @param item  the whole item and not its value
  KvsType parseArrayValueInner(const jsconfig::CObject& item, bool initMode);
  /// A top-level scalar, by the declared type.
  void parseSingleValue(JsonReadHandler& handler, const jsconfig::CObject& value,
                        KvsType::Type type);
  /// A nested scalar, by the JSON token alone.
  KvsType parseSingleValueInner(const jsconfig::CObject& value);
  /// @return the JSON class of a type name: 1 flag, 3 unsigned, 4 signed, 5 floating, 6 text, 8
  ///     object. Intended: "double" and every unknown name are 3.
  int SwitchTypeInner(std::string& typeName);

  /// Overwrites the file with the items in their order and waits for the disk.
  /// @return true, also when the file cannot be opened or written. Intended: an item that a file
  ///     does not take (`kBinary`, `kNotSupported`, or an object with such an item) is left out;
  ///     the next writing of the object begins behind the item that was refused.
  /// @throws LogicErrorException when a value was moved from; nothing is written then
  bool writeKvsJson(const std::list<std::shared_ptr<KvsType>>& items);

  /// Composes the text of a file of one item. It moves the value's cursors.
  /// @param out  receives the text; untouched when the result is false
  /// @return false when a file does not take the value
  /// @throws LogicErrorException when the value or an item in it was moved from
  bool serializeKvsJson(KvsType& value, std::string& out);

  /// The steps of writing: fill an item's object. They give false when a file does not take the
  /// value or a pointer is null, and throw as `serializeKvsJson` does.
  bool writeKvsJsonInner(JsonObject* object, KvsType* value);
  bool writeSingleValueToObject(JsonObject* object, KvsType* value);
  bool writeArrayToObject(JsonObject* object, KvsType* value);

  /// Overwrites the file with an array of objects with the members "key" and "checksum".
  /// @return true
  bool updateCrcFile(const std::map<std::string, unsigned int>& checksums);

  /// Intended: looks at nothing. @return 0
  unsigned int calculateChecksum(KvsType& value);

 private:
  ARA_PER_LOCAL bool parseNestedItem(const jsconfig::CObject& item, const jsconfig::CObject& inner,
                                     std::string& typeName, bool initMode, bool isFirstLevel,
                                     KvsType& result);
  ARA_PER_LOCAL bool addNestedItems(JsonArray& array, KvsTypeInternalType& store, std::string& end);

  std::string strFileName;
  LogExtend* m_log;
  std::shared_ptr<InternalAccess> m_access;
};

}  // namespace ara::per

#endif  // ARA_PER_JSON_PARSER_H_
