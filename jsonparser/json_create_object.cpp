#include "ara/per/json_create_object.h"

#include "ara/per/json_create_array_object.h"
#include "jsonparser/json_text.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;

}  // namespace

JsonObject::JsonObject()
    : m_length(2), m_text("{}"), m_log(LogExtend::getLogExtenObject("PersistencyService")) {}

JsonObject* JsonObject::StartObject() { return new JsonObject(); }

template <class... Parts>
bool JsonObject::addMember(const std::string& name, Parts... parts) {
  const auto logPiece = [this](const char* piece) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "add (%s) to Object", piece);
  };
  return AddPiece(m_text, m_length, logPiece, '"', std::string_view(name), "\":", parts...);
}

bool JsonObject::addIntToObject(std::string name, int value) { return addMember(name, value); }

bool JsonObject::addUint32ToObject(std::string name, unsigned int value) {
  return addMember(name, value);
}

bool JsonObject::addInt64ToObject(std::string name, long value) { return addMember(name, value); }

bool JsonObject::addUint64ToObject(std::string name, unsigned long value) {
  return addMember(name, value);
}

bool JsonObject::addFloatToObject(std::string name, float value) {
  return addMember(name, static_cast<double>(value));
}

bool JsonObject::addDoubleToObject(std::string name, double value) {
  return addMember(name, value);
}

bool JsonObject::addStringToObject(std::string name, std::string value) {
  return addMember(name, '"', std::string_view(value), '"');
}

// Intended: unlike an array, an object logs nothing when it refuses a null builder.
bool JsonObject::addArrayToObject(std::string name, JsonArray* array) {
  return array != nullptr && addMember(name, std::string_view(array->m_text));
}

bool JsonObject::addObjectToObject(std::string name, JsonObject* object) {
  if (object == this) {
    return addMember(name, std::string_view(std::string(m_text)));
  }
  return object != nullptr && addMember(name, std::string_view(object->m_text));
}

std::string JsonObject::getSerializationForObject() { return m_text; }

int JsonObject::saveObject(std::string path) {
  constexpr unsigned int kPause = 30;  // us. Intended: differs from an array's
  return SaveText(path, m_text, m_length, kPause, *m_log, ARA_PER_HERE, [this](ssize_t written) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "write size=%d, oringe size=%d",
                    static_cast<int>(written), m_length);
  });
}

}  // namespace ara::per
