#ifndef ARA_PER_JSON_CREATE_OBJECT_H_
#define ARA_PER_JSON_CREATE_OBJECT_H_

#include <string>

#include "ara/per/export.h"
#include "ara/per/log_extend.h"

namespace ara::per {

class JsonArray;

/// Composes the text of one JSON object (RFC 8259), piece by piece, without white space. The text
/// is complete at every moment.
///
/// Intended: nothing is escaped. A quote, backslash or control character in a name or a text goes
/// into the result as it is, which then is no valid JSON.
///
/// An object is for one thread.
class ARA_PER_EXPORT JsonObject {
 public:
  /// @return a new builder of `{}`, which the caller owns and deletes
  static JsonObject* StartObject();

  /// Append a member. Floating numbers get six decimals; nested builders are copied and stay the
  /// caller's.
  /// @return Intended: true for the first member alone, and false for the later ones, though they
  ///     are added, too. A null builder adds nothing and gives false.
  bool addIntToObject(std::string name, int value);
  bool addUint32ToObject(std::string name, unsigned int value);
  bool addInt64ToObject(std::string name, long value);
  bool addUint64ToObject(std::string name, unsigned long value);
  bool addFloatToObject(std::string name, float value);
  bool addDoubleToObject(std::string name, double value);
  bool addStringToObject(std::string name, std::string value);
  bool addArrayToObject(std::string name, JsonArray* array);
  bool addObjectToObject(std::string name, JsonObject* object);

  /// @return the text so far
  std::string getSerializationForObject();

  /// Overwrites the file at `path` in place with the text and flushes its file system. A missing
  /// file is also created by a shell command in the background, with `path` unquoted.
  /// @return 0, also when the write falls short; -1 when the file cannot be opened, the file being
  ///     as it was
  int saveObject(std::string path);

 private:
  friend class JsonArray;

  JsonObject();

  template <class... Parts>
  ARA_PER_LOCAL bool addMember(const std::string& name, Parts... parts);

  int m_length;
  std::string m_text;
  LogExtend* m_log;
};

}  // namespace ara::per

#endif  // ARA_PER_JSON_CREATE_OBJECT_H_
