#include "ara/per/json_parser.h"

#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "ara/per/json_create_array_object.h"
#include "ara/per/logic_error_exception.h"
#include "jsconfig/jsconfig.h"
#include "support/json_value_class.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;
using jsconfig::CObject;
using jsconfig::CObjectArray;
using Kind = KvsTypeInternalType::Kind;
using Type = KvsType::Type;

const char* TypeName(bool initMode) { return initMode ? "valueDataType" : "type"; }
const char* ValueName(bool initMode) { return initMode ? "initValue" : "value"; }

bool IsRefused(const CObject& token) { return RefusesJsonClass(token.getType()); }

/// Sends a scalar, or one element of an array of scalars, as the event of its declared type; a type
/// without scalars sends nothing. A text ends at its first zero byte.
void SendValue(JsonReadHandler& handler, const CObject& value, Type type) {
  switch (type) {
    case Type::kSInt64:
      handler.Int64(value.toInt64(nullptr));
      break;
    case Type::kSInt8:
    case Type::kSInt16:
    case Type::kSInt32:  // Intended: not narrowed any further
      handler.Int(value.toInt32(nullptr));
      break;
    case Type::kFloat:  // Intended: keeps the whole double
    case Type::kDouble:
      handler.Double(value.toDouble(nullptr));
      break;
    case Type::kUInt64:
      handler.Uint64(value.toUInt64(nullptr));
      break;
    case Type::kUInt8:
    case Type::kUInt16:
    case Type::kUInt32:
      handler.Uint(value.toUInt32(nullptr));
      break;
    case Type::kBoolean:
      handler.Bool(value.toBool(nullptr));
      break;
    case Type::kString:
      handler.String(value.toString(nullptr).c_str());
      break;
    default:
      break;
  }
}

/// Builds a nested array: the first element makes the value, the others are added.
template <class Element, class Read>
KvsType BuildArray(const CObjectArray& array, const std::string& key, Read&& read) {
  KvsType result(Element{read(array[0])});
  InternalAccess access;
  access.SetKey(result, key);
  KvsTypeInternalType& store = access.GetInternalValue(result);
  store.SetParsedAsArray(true);
  for (int i = 1; i < array.countObject(); ++i) {
    store.Add(Element{read(array[i])});
  }
  return result;
}

/// Reads a store to its end, which is an exception and no fault.
/// @param kind  the kind that `addNext` reads
/// @return the text of the exception; the usual one is not thrown, since that is dear
template <class AddNext>
std::string ReadToEnd(KvsTypeInternalType& store, Kind kind, AddNext&& addNext) {
  try {
    while (true) {
      if (const char* const end = store.endOfSequence(kind)) {
        return end;
      }
      addNext();
    }
  } catch (const std::logic_error& end) {
    return end.what();
  }
}

/// Adds the elements of a typed array. @return the text with which the store ended
std::string AddElements(JsonArray& array, KvsTypeInternalType& store, Type type) {
  switch (type) {
    case Type::kFloat:
      return ReadToEnd(store, Kind::kDouble,
                       [&] { array.addfloatToArray(static_cast<float>(store.GetDoubleNext())); });
    case Type::kDouble:
      return ReadToEnd(store, Kind::kDouble,
                       [&] { array.addDoubleToArray(store.GetDoubleNext()); });
    case Type::kSInt8:
    case Type::kSInt16:
    case Type::kSInt32:
      return ReadToEnd(store, Kind::kInt,
                       [&] { array.addIntToArray(static_cast<int>(store.GetIntNext())); });
    case Type::kSInt64:
      return ReadToEnd(store, Kind::kInt, [&] { array.addInt64ToArray(store.GetIntNext()); });
    case Type::kUInt8:
    case Type::kUInt16:
    case Type::kUInt32:
      return ReadToEnd(store, Kind::kUint, [&] {
        array.addUint32ToArray(static_cast<unsigned int>(store.GetUintNext()));
      });
    case Type::kUInt64:
      return ReadToEnd(store, Kind::kUint, [&] { array.addUint64ToArray(store.GetUintNext()); });
    case Type::kString:
      return ReadToEnd(store, Kind::kString,
                       [&] { array.addStringToArray(store.GetStringNext()); });
    default:  // Intended: a flag is written as 1 or 0
      return ReadToEnd(store, Kind::kBool,
                       [&] { array.addIntToArray(static_cast<int>(store.GetBoolNext())); });
  }
}

void AddType(JsonObject& object, const KvsType& value) {
  object.addStringToObject("type", InternalAccess().getKvsTypeAsString(value, value.GetType()));
}

/// Adds the "value" member of a plain value.
void AddScalar(JsonObject& object, const KvsType& value) {
  switch (value.GetType()) {
    case Type::kFloat:
      object.addFloatToObject("value", value.GetFloat());
      break;
    case Type::kDouble:
      object.addDoubleToObject("value", value.GetDouble());
      break;
    case Type::kSInt8:
    case Type::kSInt16:
    case Type::kSInt32:
      object.addIntToObject("value", value.GetSInt());
      break;
    case Type::kSInt64:  // Intended: the low 32 bits alone
      object.addInt64ToObject("value", value.GetSInt());
      break;
    case Type::kUInt8:
    case Type::kUInt16:
    case Type::kUInt32:
      object.addUint32ToObject("value", value.GetUInt());
      break;
    case Type::kUInt64:  // Intended: the low 32 bits alone
      object.addUint64ToObject("value", value.GetUInt());
      break;
    case Type::kString:
      object.addStringToObject("value", value.GetString());
      break;
    default:  // Intended: a flag is written as 1 or 0
      object.addIntToObject("value", static_cast<int>(value.GetBool()));
      break;
  }
}

/// @return whether a file takes a plain value or a typed array of this type
bool IsWritable(Type type) {
  return Type::kFloat <= type && type <= Type::kBoolean && type != Type::kBinary;
}

}  // namespace

JsonParser::JsonParser(const std::string& fileName)
    : strFileName(fileName),
      m_log(LogExtend::getLogExtenObject("")),
      m_access(std::make_shared<InternalAccess>()) {}

JsonParser::~JsonParser() = default;

std::list<std::unique_ptr<KvsType>> JsonParser::parseKvsJson() {
  std::list<std::unique_ptr<KvsType>> items;
  JsonReadHandler handler(*this, items);
  if (::access(strFileName.c_str(), F_OK) != 0) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "strFileName(%s) is not exit",
                    strFileName.c_str());
    return items;
  }
  jsconfig::CObjectDocument document;
  if (!document.parse(strFileName)) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE,
                    "Parse strFileName(%s) to jsonObject is error()", strFileName.c_str());
    return items;
  }
  CObject* const root = document.root();
  if (root == nullptr) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "the Kvs format error is null=%d, %s", 1,
                    document.errorString().c_str());
    return items;
  }
  bool ok = true;
  const CObjectArray array = root->toArray(&ok);
  if (!ok) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "to arrayObject error(%s)",
                    document.errorString().c_str());
    return items;
  }
  if (!parseJsonArrayObject(array, handler, false)) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("parseJsonArrayObject"));
    items.clear();
  }
  return items;
}

std::unique_ptr<KvsType> JsonParser::parseKvsTypeFromString(const std::string& text,
                                                            bool initMode) {
  std::list<std::unique_ptr<KvsType>> items;
  jsconfig::CObjectDocument document;
  // Intended: written on every call, whatever the text says of an error.
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "parseKvsTypeFromString error=%s",
                  text.c_str());
  if (!document.parseString(text)) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "parseString error=%s",
                    document.errorString().c_str());
    return nullptr;
  }
  CObject* const root = document.root();
  JsonReadHandler handler(*this, items);
  if (root == nullptr || root->getType() != kJsonArray) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("the Kvs format error"));
    return nullptr;
  }
  bool ok = true;
  const CObjectArray array = root->toArray(&ok);
  if (!ok) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("parse Array error"));
    return nullptr;
  }
  if (!parseJsonArrayObject(array, handler, initMode)) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("parseJsonArrayObject error"));
    return nullptr;
  }
  return items.empty() ? nullptr : std::move(items.front());
}

bool JsonParser::parseJsonArrayObject(const CObjectArray& items, JsonReadHandler& handler,
                                      bool initMode) {
  const int count = items.countObject();
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "the arrary size=(%d)", count);
  for (int i = 0; i < count; ++i) {
    const CObject item = items[i];
    if (IsRefused(item)) {
      return false;
    }
    // Intended: a missing key is not refused; it reads as an empty text.
    const CObject keyObject = item["key"];
    handler.StartObject();
    handler.Key("key");
    handler.String(keyObject.toString(nullptr).c_str());

    const CObject typeObject = item[TypeName(initMode)];
    if (IsRefused(typeObject)) {
      return false;
    }
    std::string typeName = typeObject.toString(nullptr);
    Type type = Type::kNotSupported;
    handler.setValueType(typeName, type);

    const CObject valueObject = item[ValueName(initMode)];
    if (IsRefused(valueObject)) {
      return false;
    }
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "eObjType=(%d),eKvsType=%s",
                    valueObject.getType(), typeName.c_str());
    if (SwitchTypeInner(typeName) == kJsonObject) {
      if (!parseArrayObj(handler, valueObject, initMode)) {
        m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("parseArrayObj error"));
        return false;
      }
    } else if (valueObject.getType() == kJsonArray) {
      parseArrayValue(handler, valueObject, type);
    } else {
      parseSingleValue(handler, valueObject, type);
    }
    handler.EndObject();
  }
  return true;
}

void JsonParser::parseSingleValue(JsonReadHandler& handler, const CObject& value, Type type) {
  if (type == Type::kNotSupported) {
    handler.Null();
  } else {
    SendValue(handler, value, type);
  }
}

void JsonParser::parseArrayValue(JsonReadHandler& handler, const CObject& value, Type type) {
  const CObjectArray array = value.toArray(nullptr);
  const int count = array.countObject();
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "iAarraySize=%d", count);
  handler.setParseAsArray(true);
  for (int i = 0; i < count; ++i) {
    SendValue(handler, array[i], type);
  }
}

bool JsonParser::parseArrayObj(JsonReadHandler& handler, const CObject& value, bool initMode) {
  const int count = value.toArray(nullptr).countObject();
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "iAarraySize=%d", count);
  handler.setParseAsArray(true);
  for (int i = 0; i < count; ++i) {
    const CObject element = value[i];
    if (IsRefused(element)) {
      return false;
    }
    const CObject inner = element[ValueName(initMode)];
    if (IsRefused(inner)) {
      return false;
    }
    // Intended: on this level the name is "type" in init mode, too, and a missing one passes.
    std::string typeName = element["type"].toString(nullptr);
    KvsType kv;
    if (!parseNestedItem(element, inner, typeName, initMode, true, kv)) {
      return false;
    }
    handler.KObject(kv);
  }
  return true;
}

bool JsonParser::parseArrayObjInner(const CObject& value, KvsType& parent, bool initMode) {
  const int count = value.toArray(nullptr).countObject();
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "iAarraySize=%d", count);
  for (int i = 0; i < count; ++i) {
    const CObject element = value[i];
    if (IsRefused(element)) {
      return false;
    }
    const CObject inner = element[ValueName(initMode)];
    if (IsRefused(inner)) {
      return false;
    }
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "objValue:%s", inner.toString(nullptr).c_str());
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "eObjType=(%d)", inner.getType());
    const CObject typeObject = element[TypeName(initMode)];
    if (IsRefused(typeObject)) {
      return false;
    }
    std::string typeName = typeObject.toString(nullptr);
    KvsType kv;
    if (!parseNestedItem(element, inner, typeName, initMode, false, kv)) {
      return false;
    }
    parent.AddArrayItem(kv);
  }
  return true;
}

bool JsonParser::parseNestedItem(const CObject& item, const CObject& inner, std::string& typeName,
                                 bool initMode, bool isFirstLevel, KvsType& result) {
  const int innerClass = inner.getType();
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "tempString:%s", typeName.c_str());
  const int typeClass = SwitchTypeInner(typeName);
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "eKvsType:%d,eObjType:%d,objValueType:%s ",
                  typeClass, innerClass, typeName.c_str());
  if (innerClass == kJsonArray && typeClass != kJsonObject) {
    result = parseArrayValueInner(item, initMode);
    return true;
  }
  if (innerClass == kJsonObject && !isFirstLevel) {
    return true;  // Intended: an empty container without a key
  }
  const CObject keyObject = item["key"];
  if (IsRefused(keyObject)) {
    return false;
  }
  if (innerClass != kJsonArray) {
    result = parseSingleValueInner(inner);
    m_access->SetKey(result, keyObject.toString(nullptr));
    return true;
  }
  result.SetKey(keyObject.toString(nullptr));
  // Intended: below the first level a bad item ends its own list alone.
  if (!parseArrayObjInner(inner, result, initMode) && isFirstLevel) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("parseArrayObjInner error"));
    return false;
  }
  return true;
}

KvsType JsonParser::parseArrayValueInner(const CObject& item, bool initMode) {
  m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("parseArrayValueInner enter"));
  const CObject valueObject = item[ValueName(initMode)];
  const CObjectArray array = valueObject.toArray(nullptr);
  if (array.countObject() == 0) {
    return KvsType();  // Intended: an empty container without a key
  }
  const CObject keyObject = item["key"];
  const CObject typeObject = item[TypeName(initMode)];
  if (IsRefused(keyObject) || IsRefused(typeObject)) {
    return KvsType(false);  // Intended: stands in the item's place, and reading goes on
  }
  const std::string key = keyObject.toString(nullptr);
  std::string typeName = typeObject.toString(nullptr);
  switch (SwitchTypeInner(typeName)) {
    case kJsonSigned:
      return BuildArray<long>(array, key, [](const CObject& e) { return e.toInt64(nullptr); });
    case kJsonUnsigned:
      return BuildArray<unsigned long>(array, key,
                                       [](const CObject& e) { return e.toUInt64(nullptr); });
    case kJsonBoolean:
      return BuildArray<bool>(array, key, [](const CObject& e) { return e.toBool(nullptr); });
    case kJsonFloating:
      return BuildArray<double>(array, key, [](const CObject& e) { return e.toDouble(nullptr); });
    case kJsonText:
      return BuildArray<std::string>(array, key,
                                     [](const CObject& e) { return e.toString(nullptr); });
    default:
      return KvsType();
  }
}

KvsType JsonParser::parseSingleValueInner(const CObject& value) {
  // Intended: by the token alone; the declared type is lost.
  switch (value.getType()) {
    case kJsonSigned:
      return KvsType(long{value.toInt64(nullptr)});
    case kJsonUnsigned:
      return KvsType(static_cast<unsigned long>(value.toUInt64(nullptr)));
    case kJsonBoolean:
      return KvsType(value.toBool(nullptr));
    case kJsonFloating:
      return KvsType(value.toDouble(nullptr));
    case kJsonText:
      return KvsType(value.toString(nullptr));
    default:
      return KvsType();
  }
}

int JsonParser::SwitchTypeInner(std::string& typeName) {
  static const KvsType anyValue;  // not looked at
  switch (m_access->getKvsTypeFromString(anyValue, typeName)) {
    case Type::kSInt8:
    case Type::kSInt16:
    case Type::kSInt32:
    case Type::kSInt64:
      return kJsonSigned;
    case Type::kBoolean:
      return kJsonBoolean;
    case Type::kFloat:
      return kJsonFloating;
    case Type::kString:
      return kJsonText;
    case Type::kObject:
      return kJsonObject;
    default:  // Intended: "double", "binary" and unknown names, too
      return kJsonUnsigned;
  }
}

bool JsonParser::writeKvsJson(const std::list<std::shared_ptr<KvsType>>& items) {
  const std::unique_ptr<JsonArray> array(JsonArray::startArray());
  for (const std::shared_ptr<KvsType>& listed : items) {
    // Lives through its writing, also when it is removed meanwhile.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const std::shared_ptr<KvsType> item = listed;
    const std::unique_ptr<JsonObject> object(JsonObject::StartObject());
    if (writeKvsJsonInner(object.get(), item.get())) {
      array->addObjectToArray(object.get());
    }
  }
  array->saveArrayObject(strFileName);
  return true;  // Intended: whatever became of the file
}

bool JsonParser::serializeKvsJson(KvsType& value, std::string& out) {
  const std::unique_ptr<JsonArray> array(JsonArray::startArray());
  const std::unique_ptr<JsonObject> object(JsonObject::StartObject());
  if (!writeKvsJsonInner(object.get(), &value)) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "write to:%s error", strFileName.c_str());
    return false;
  }
  array->addObjectToArray(object.get());
  out = array->getSerializationForObject();
  return true;
}

// Intended: status, checksum and documentation are not written.
bool JsonParser::writeKvsJsonInner(JsonObject* object, KvsType* value) {
  if (object == nullptr || value == nullptr) {
    return false;
  }
  object->addStringToObject("key", value->GetKey());
  KvsTypeInternalType& store = m_access->GetInternalValue(*value);
  if (value->GetType() != Type::kObject) {
    return store.GetParsedAsArray() ? writeArrayToObject(object, value)
                                    : writeSingleValueToObject(object, value);
  }
  const std::unique_ptr<JsonArray> array(JsonArray::startArray());
  AddType(*object, *value);
  std::string end;
  if (!addNestedItems(*array, store, end)) {
    return false;
  }
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "what=%s", end.c_str());
  object->addArrayToObject("value", array.get());
  return true;
}

bool JsonParser::addNestedItems(JsonArray& array, KvsTypeInternalType& store, std::string& end) {
  try {
    while (true) {
      if (const char* const text = store.endOfSequence(Kind::kObject)) {
        end = text;
        return true;
      }
      const std::unique_ptr<JsonObject> child(JsonObject::StartObject());
      KvsType next = store.GetKvsTypeNext();
      if (!writeKvsJsonInner(child.get(), &next)) {
        // Intended: one unwritable item loses the whole enclosing one. The cursor stays behind it,
        // so that the next writing begins there and gives the items behind it alone.
        return false;
      }
      array.addObjectToArray(child.get());
    }
  } catch (const std::logic_error& error) {
    end = error.what();
    return true;
  }
}

bool JsonParser::writeSingleValueToObject(JsonObject* object, KvsType* value) {
  if (object == nullptr || value == nullptr) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("get jsonObject is error"));
    return false;
  }
  if (!IsWritable(value->GetType())) {
    return false;
  }
  AddType(*object, *value);
  try {
    AddScalar(*object, *value);
  } catch (const LogicErrorException& error) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "what=%s", error.what());
  }
  return true;
}

bool JsonParser::writeArrayToObject(JsonObject* object, KvsType* value) {
  const std::unique_ptr<JsonArray> array(JsonArray::startArray());
  if (object == nullptr || value == nullptr) {
    m_log->logPrint(LogLevel::kDebug, ARA_PER_LINE("writeArrayToObject:startArray error"));
    return false;
  }
  const Type type = value->GetType();
  // Intended: the word "key" and not the item's key.
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "key=%s, strType=%s, eType=%d", "key",
                  m_access->getKvsTypeAsString(*value, type).c_str(), static_cast<int>(type));
  if (!IsWritable(type)) {
    return false;
  }
  AddType(*object, *value);
  const std::string end = AddElements(*array, m_access->GetInternalValue(*value), type);
  m_log->logPrint(LogLevel::kDebug, ARA_PER_HERE, "what=%s", end.c_str());
  object->addArrayToObject("value", array.get());
  return true;
}

bool JsonParser::updateCrcFile(const std::map<std::string, unsigned int>& checksums) {
  const std::unique_ptr<JsonArray> array(JsonArray::startArray());
  for (const auto& [key, checksum] : checksums) {
    const std::unique_ptr<JsonObject> object(JsonObject::StartObject());
    object->addStringToObject("key", key);
    object->addUint32ToObject("checksum", checksum);
    array->addObjectToArray(object.get());
  }
  array->saveArrayObject(strFileName);
  return true;
}

unsigned int JsonParser::calculateChecksum(KvsType&) { return 0; }

}  // namespace ara::per
