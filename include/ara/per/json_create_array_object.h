#ifndef ARA_PER_JSON_CREATE_ARRAY_OBJECT_H_
#define ARA_PER_JSON_CREATE_ARRAY_OBJECT_H_

#include <string>

#include "ara/per/export.h"
#include "ara/per/log_extend.h"

namespace ara::per {

class JsonObject;

/// Composes the text of one JSON array. All that is said of `JsonObject` holds here, too; mind the
/// spelling of `startArray` and `addfloatToArray`.
class ARA_PER_EXPORT JsonArray {
 public:
  /// @return a new builder of `[]`, which the caller owns and deletes
  static JsonArray* startArray();

  /// Append an element, as the additions of `JsonObject` append a member.
  bool addIntToArray(int value);
  bool addUint32ToArray(unsigned int value);
  bool addInt64ToArray(long value);
  bool addUint64ToArray(unsigned long value);
  bool addfloatToArray(float value);
  bool addDoubleToArray(double value);
  bool addStringToArray(std::string value);
  bool addObjectToArray(JsonObject* object);
  bool addArrayToArray(JsonArray* array);

  /// @return the text so far
  std::string getSerializationForObject();

  /// As `JsonObject::saveObject`, with a longer pause before the file is opened.
  int saveArrayObject(std::string path);

 private:
  friend class JsonObject;

  JsonArray();

  template <class... Parts>
  ARA_PER_LOCAL bool addElement(Parts... parts);

  int m_length;
  std::string m_text;
  LogExtend* m_log;
};

}  // namespace ara::per

#endif  // ARA_PER_JSON_CREATE_ARRAY_OBJECT_H_
