#include "ara/per/json_read_handler.h"

#include <utility>

#include "ara/per/physical_storage_error_exception.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;

LogExtend* const sReadHandlerLog = LogExtend::getLogExtenObject("PersistencyService");

}  // namespace

JsonReadHandler::JsonReadHandler(const JsonParser& parser,
                                 std::list<std::unique_ptr<KvsType>>& items)
    : m_items(items), m_parser(parser), m_access(std::make_unique<InternalAccess>()) {}

JsonReadHandler::~JsonReadHandler() = default;

bool JsonReadHandler::StartObject() {
  sReadHandlerLog->logPrint(LogLevel::kDebug,
                            ARA_PER_LINE("JsonReadHandler::StartObject is called."));
  switch (m_state) {
    case State::kWaitItem:
      beginItem(false, __LINE__);
      break;
    case State::kInItem:
      m_state = State::kInValue;
      break;
    case State::kInValue:
      beginItem(true, __LINE__);
      break;
  }
  return true;
}

void JsonReadHandler::beginItem(bool asChild, int line) {
  try {
    if (asChild) {
      m_stateStack.push_back(m_state);
      m_itemStack.push_back(std::move(m_current));
    }
    m_current = std::make_unique<KvsType>();
  } catch (...) {  // a parent stays on the stack; the caller gives the whole pass up
    throw PhysicalStorageErrorException(GetAllocationErrorMessage(__FILE__, "StartObject", line));
  }
  m_state = State::kInItem;
}

bool JsonReadHandler::Key(const char* name) {
  sReadHandlerLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "JsonReadHandler::Key:%s", name);
  const std::string text(name);
  if (m_state == State::kInItem) {
    if (text == "key") {
      m_keyKind = KeyKind::kItemKey;
    } else if (text == "checksum") {
      m_keyKind = KeyKind::kChecksumKey;
    } else if (text == "version") {
      m_keyKind = KeyKind::kVersionKey;
    } else if (text == "documentation") {
      m_keyKind = KeyKind::kDocumentationKey;
    }
  } else if (m_state == State::kInValue) {
    if (!m_current) {
      return false;
    }
    takeTypeName(text);
  }
  sReadHandlerLog->logPrint(LogLevel::kDebug, ARA_PER_LINE("JsonReadHandler::Key end"));
  return true;
}

void JsonReadHandler::takeTypeName(const std::string& name) {
  constexpr char kArrayMark[] = "[]";
  std::string typeName = name;
  const std::size_t mark = typeName.find(kArrayMark);
  if (mark != std::string::npos) {
    typeName.erase(mark, sizeof kArrayMark - 1);
    m_access->GetInternalValue(*m_current).SetParsedAsArray(true);
  }
  m_access->SetInternalType(*m_current, m_access->getKvsTypeFromString(*m_current, typeName));
}

bool JsonReadHandler::EndObject() {
  sReadHandlerLog->logPrint(LogLevel::kDebug, ARA_PER_LINE("JsonReadHandler::EndObject is called"));
  switch (m_state) {
    case State::kInItem:
      return endItem();
    case State::kInValue:
      m_state = State::kInItem;
      return true;
    default:
      throw PhysicalStorageErrorException("Should never get here");
  }
}

bool JsonReadHandler::endItem() {
  if (!m_current) {
    return false;
  }
  CompareCrcAndUpdateStatus(*m_current);
  // Cannot fire as long as nothing is compared.
  m_checksumFailed =
      m_checksumFailed || m_access->GetStatus(*m_current) == KvsType::Status::kCheckSumError;
  if (m_itemStack.empty()) {
    if (m_checksumFailed) {
      m_access->SetStatus(*m_current, KvsType::Status::kCheckSumError);
      m_checksumFailed = false;
    }
    m_items.push_back(std::move(m_current));
    m_state = State::kWaitItem;
    return true;
  }
  const std::unique_ptr<KvsType> child = std::move(m_current);
  m_current = std::move(m_itemStack.back());
  m_itemStack.pop_back();
  addValue(*child);
  m_state = m_stateStack.back();
  m_stateStack.pop_back();
  return true;
}

void JsonReadHandler::CompareCrcAndUpdateStatus(KvsType& item) {
  sReadHandlerLog->logPrint(
      LogLevel::kDebug,
      ARA_PER_LINE("JsonReadHandler::CompareCrcAndUpdateStatus checksum is abled."));
  m_access->SetStatus(item, KvsType::Status::kSuccess);
}

template <class Value>
bool JsonReadHandler::addValue(const Value& value) {
  if (!m_current) {
    return false;
  }
  m_access->GetInternalValue(*m_current).Add(value);
  return true;
}

bool JsonReadHandler::Bool(bool value) { return addValue(value); }
bool JsonReadHandler::Int(int value) { return addValue(long{value}); }
bool JsonReadHandler::Uint(unsigned int value) {
  return addValue(static_cast<unsigned long>(value));
}
bool JsonReadHandler::Int64(long value) { return addValue(value); }
bool JsonReadHandler::Uint64(unsigned long value) { return addValue(value); }
bool JsonReadHandler::Double(double value) { return addValue(value); }
bool JsonReadHandler::KObject(KvsType& value) { return addValue(value); }

bool JsonReadHandler::String(const char* text) {
  if (!m_current) {
    return false;
  }
  std::string value(text);
  sReadHandlerLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "JsonReadHandler::String value:%s ",
                            value.c_str());
  if (m_state == State::kInItem && m_keyKind == KeyKind::kItemKey) {
    m_access->SetKey(*m_current, std::move(value));
    m_keyKind = KeyKind::kNoKey;
  } else if (m_state == State::kInItem && m_keyKind == KeyKind::kDocumentationKey) {
    m_access->SetDocumentation(*m_current, std::move(value));
    m_keyKind = KeyKind::kNoKey;
  } else if (const KvsType::Type type = m_access->GetInternalType(*m_current);
             type == KvsType::Type::kString || type == KvsType::Type::kBinary) {
    addValue(value);
  }
  sReadHandlerLog->logPrint(LogLevel::kDebug, ARA_PER_LINE("JsonReadHandler::String end."));
  return true;
}

bool JsonReadHandler::Null() { return m_current != nullptr; }
bool JsonReadHandler::RawNumber(const char*) { return false; }
bool JsonReadHandler::StartArray() { return true; }
bool JsonReadHandler::EndArray() { return true; }

bool JsonReadHandler::setValueType(std::string name, KvsType::Type& type) {
  if (!m_current) {
    return false;
  }
  type = m_access->getKvsTypeFromString(*m_current, name);
  sReadHandlerLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "setValueType:%s:%d", name.c_str(),
                            static_cast<int>(type));
  m_access->SetInternalType(*m_current, type);
  return true;
}

bool JsonReadHandler::setParseAsArray(bool flag) {
  if (!m_current) {
    return false;
  }
  m_access->GetInternalValue(*m_current).SetParsedAsArray(flag);
  return true;
}

bool JsonReadHandler::setCheckSum(unsigned int checksum) {
  if (!m_current) {
    return false;
  }
  m_access->SetChecksum(*m_current, checksum);
  return true;
}

void JsonReadHandler::setNewItem() {
  m_current = std::make_unique<KvsType>();
  m_state = State::kInValue;
}

std::unique_ptr<KvsType> JsonReadHandler::getNewItem() { return std::move(m_current); }

}  // namespace ara::per
