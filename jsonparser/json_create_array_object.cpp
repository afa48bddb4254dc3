#include "ara/per/json_create_array_object.h"

#include "ara/per/json_create_object.h"
#include "jsonparser/json_text.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;

}  // namespace

JsonArray::JsonArray()
    : m_length(2), m_text("[]"), m_log(LogExtend::getLogExtenObject("PersistencyService")) {}

JsonArray* JsonArray::startArray() { return new JsonArray(); }

template <class... Parts>
bool JsonArray::addElement(Parts... parts) {
  const auto logPiece = [this](const char* piece) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "add value=%s to array", piece);
  };
  return AddPiece(m_text, m_length, logPiece, parts...);
}

bool JsonArray::addIntToArray(int value) { return addElement(value); }
bool JsonArray::addUint32ToArray(unsigned int value) { return addElement(value); }
bool JsonArray::addInt64ToArray(long value) { return addElement(value); }
bool JsonArray::addUint64ToArray(unsigned long value) { return addElement(value); }
bool JsonArray::addfloatToArray(float value) { return addElement(static_cast<double>(value)); }
bool JsonArray::addDoubleToArray(double value) { return addElement(value); }

bool JsonArray::addStringToArray(std::string value) {
  return addElement('"', std::string_view(value), '"');
}

bool JsonArray::addObjectToArray(JsonObject* object) {
  if (object == nullptr) {
    m_log->logPrint(LogLevel::kError, ARA_PER_LINE(" the object is invalid"));
    return false;
  }
  return addElement(std::string_view(object->m_text));
}

bool JsonArray::addArrayToArray(JsonArray* array) {
  if (array == nullptr) {
    m_log->logPrint(LogLevel::kError, ARA_PER_LINE(" the array object is invalid"));
    return false;
  }
  if (array == this) {
    return addElement(std::string_view(std::string(m_text)));
  }
  return addElement(std::string_view(array->m_text));
}

std::string JsonArray::getSerializationForObject() { return m_text; }

int JsonArray::saveArrayObject(std::string path) {
  constexpr unsigned int kPause = 300;  // us. Intended: differs from an object's
  return SaveText(path, m_text, m_length, kPause, *m_log, ARA_PER_HERE, [this](ssize_t) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "write size =%d", m_length);
  });
}

}  // namespace ara::per
