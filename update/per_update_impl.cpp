#include "update/per_update_impl.h"

#include <libgen.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <sstream>
#include <type_traits>

#include "ara/per/file_proxy_accessor_factory.h"
#include "ara/per/internal_access.h"
#include "fileaccess/file_size.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;
using OpenMode = BasicOperations::OpenMode;
using SeekDirection = BasicOperations::SeekDirection;
using Type = KvsType::Type;

/// Reads a text as an `Extracted` and makes a value of it as a `Stored`.
template <class Stored, class Extracted = Stored>
struct Element {
  KvsType operator()(const std::string& text) const {
    if constexpr (std::is_same_v<Stored, std::string>) {
      return KvsType(text);
    } else {
      std::istringstream stream(text);
      Extracted value{};
      stream >> value;  // Intended: whatever that leaves is the value
      return KvsType(static_cast<Stored>(value));
    }
  }
};

/// Calls `use` with the `Element` of `type`, if it has one.
template <class Use>
void WithElement(Type type, Use&& use) {
  switch (type) {
    // Intended: the code of a character and not the number that the text spells.
    case Type::kSInt8:
      return use(Element<signed char, char>());
    case Type::kUInt8:
      return use(Element<unsigned char, char>());
    case Type::kSInt16:
      return use(Element<short>());
    case Type::kSInt32:
      return use(Element<int>());
    case Type::kSInt64:
      return use(Element<long>());
    case Type::kUInt16:
      return use(Element<unsigned short>());
    case Type::kUInt32:
      return use(Element<unsigned int>());
    case Type::kUInt64:
      return use(Element<unsigned long>());
    case Type::kFloat:
      return use(Element<float>());
    case Type::kDouble:
      return use(Element<double>());
    case Type::kBoolean:  // Intended: 0 and 1, no words
      return use(Element<bool>());
    case Type::kString:
      return use(Element<std::string>());
    default:
      return;
  }
}

std::unique_ptr<ReadWriteAccessor> Open(const fileStruct& file, OpenMode mode) {
  return CreateFileAccessorFactory(file.filePath)->CreateRWAccess(file.fileName, mode);
}

/// Moves to the end. @return the size in 32 bits; 0 when it cannot be told
std::uint32_t SeekToEnd(BasicOperations& file) {
  file.seek(0, SeekDirection::end);
  return SizeByEnd(file.tell());
}

/// Writes `size` bytes of `source`, or zeros where it gives none. Intended: no result is looked at;
/// a source that can be read but not written to was not opened, and gives zeros.
void Copy(ReadWriteAccessor& source, ReadWriteAccessor& target, std::uint32_t size) {
  const auto bytes = std::make_unique<char[]>(std::size_t{size} + 1);
  static_cast<void>(source.read(bytes.get(), size));
  static_cast<void>(target.write(bytes.get(), size));
  target.fsync();
}

void OverWrite(const fileStruct& target, const fileStruct& source) {
  // Intended: the target is emptied before anything is known of the source.
  const auto targetFile = Open(target, OpenMode::trunc | OpenMode::out);
  const auto sourceFile = Open(source, OpenMode::out | OpenMode::in);
  const std::uint32_t size = SeekToEnd(*sourceFile);
  sourceFile->seek(std::streampos(0));
  Copy(*sourceFile, *targetFile, size);
}

void KeepExisting(const fileStruct& target, const fileStruct& source) {
  const auto sourceFile = Open(source, OpenMode::out | OpenMode::in);
  const auto factory = CreateFileAccessorFactory(target.filePath);
  if (!factory->HasKey(target.fileName)) {
    return;  // Intended: a missing target is not made
  }
  const auto targetFile = factory->CreateRWAccess(target.fileName, OpenMode::trunc | OpenMode::out);
  // Intended: no way back to the front of the source. It gives nothing from its end, so that an
  // existing target becomes as many zero bytes as the source is long.
  const std::uint32_t size = SeekToEnd(*sourceFile);
  targetFile->seek(0, SeekDirection::end);
  Copy(*sourceFile, *targetFile, size);
}

void Delete(const fileStruct& target) {
  // Intended: the file is emptied, or made empty, and stays.
  Open(target, OpenMode::trunc | OpenMode::out)->fsync();
}

}  // namespace

PersistencyUpdateImpl::PersistencyUpdateImpl()
    : log_(LogExtend::getLogExtenObject("PersistencyService")) {}

int PersistencyUpdateImpl::updatePersistency(const std::string& path) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "PersistencyUpdateImpl::updatePersistency path:%s ", path.c_str());
  if (!manifest_.initInfo(path, ConfigKind::kDeploymentConfig)) {
    log_->logPrint(LogLevel::kError,
                   ARA_PER_LINE("PersistencyUpdateImpl::updatePersistency init invalid"));
    return 1;
  }
  const EUpdateType type = switchUpdateType(manifest_.updateType);
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "PersistencyUpdateImpl::updatePersistency type:%d", static_cast<int>(type));
  if (manifest_.isExitfp) {
    updateFileProxy(type);
  }
  if (manifest_.isExitDb) {
    updateKeyValueDb(type);
  }
  log_->logPrint(LogLevel::kVerbose, ARA_PER_LINE("PersistencyUpdateImpl::updatePersistency end"));
  return 0;  // Intended: whatever the sections have come to
}

EUpdateType PersistencyUpdateImpl::switchUpdateType(std::string text) {
  // Intended: the text names another function.
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "PersistencyUpdateImpl::getUpdateType type:%s ",
                 text.c_str());
  if (text == "installation") {
    return EUpdateType::kInstallation;
  }
  return text == "update" ? EUpdateType::kUpdate : EUpdateType::kUninstallation;
}

Type PersistencyUpdateImpl::switchType(const std::string& text) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "PersistencyUpdateImpl::switchType type is %s",
                 text.c_str());
  const Type type = InternalAccess().getKvsTypeFromString(KvsType(), text);
  return type == Type::kObject ? Type::kNotSupported : type;  // no text tells an object
}

void PersistencyUpdateImpl::filePathParser(const std::string& path, fileStruct& out) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "PersistencyUpdateImpl::filePathParser path is %s", path.c_str());
  // Both change the characters; a slash at the end is gone after the first.
  std::string characters = path;
  out.fileName = ::basename(characters.data());
  out.filePath = ::dirname(characters.data());
}

int PersistencyUpdateImpl::updateFileProxy(EUpdateType type) {
  FileProxy fileProxy;
  const bool ret = manifest_.getFileProxy(fileProxy);
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "PersistencyUpdateImpl::updateFileProxy ret:%d type=%d", static_cast<int>(ret),
                 static_cast<int>(type));
  if (ret) {
    if (type == EUpdateType::kUninstallation) {
      log_->logPrint(LogLevel::kVerbose,
                     ARA_PER_LINE("PersistencyUpdateImpl::updateFileProxy Uninstallation the app, "
                                  "ucm delete the data directly"));
      return 1;
    }
    applyFile(fileProxy);
  }
  log_->logPrint(LogLevel::kVerbose, ARA_PER_LINE("PersistencyUpdateImpl::updateFileProxy end"));
  return 0;
}

void PersistencyUpdateImpl::applyFile(const FileProxy& fileProxy) {
  fileStruct target;
  fileStruct source;
  filePathParser(fileProxy.uri, target);
  filePathParser(fileProxy.contentUri, source);
  switch (fileProxy.updateStrategy) {
    case kKeepExisting:
      return KeepExisting(target, source);
    case kDelete:
      return Delete(target);
    default:
      return OverWrite(target, source);
  }
}

int PersistencyUpdateImpl::updateKeyValueDb(EUpdateType type) {
  DatabaseInfo database;
  const bool ret = manifest_.getKeyValuePair(database);
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "PersistencyUpdateImpl::updateKeyValueDb type:%d ", static_cast<int>(type));
  if (ret) {
    if (type == EUpdateType::kUninstallation) {
      log_->logPrint(LogLevel::kVerbose,
                     ARA_PER_LINE("PersistencyUpdateImpl::updateKeyValueDb Uninstallation the app, "
                                  "ucm delete the data directly"));
      return 1;
    }
    applyDatabase(database);
  }
  log_->logPrint(LogLevel::kVerbose, ARA_PER_LINE("PersistencyUpdateImpl::updateKeyValueDb end"));
  return 0;
}

void PersistencyUpdateImpl::applyDatabase(const DatabaseInfo& database) {
  KeyValueStorage storage(database.uri);
  if (database.updateStrategy == kDelete) {
    storage.RemoveAllKeys();
  }
  // Intended: "overWrite" applies nothing.
  if (database.updateStrategy == kDelete || database.updateStrategy == kKeepExisting) {
    applyItems(storage, database.keyValuePairs);
  }
  storage.SyncToStorage();
}

void PersistencyUpdateImpl::applyItems(KeyValueStorage& storage,
                                       const std::vector<keyValuePair>& items) {
  for (const keyValuePair& item : items) {
    if (item.updateStrategy >= kDelete) {
      storage.RemoveKey(item.name);
      continue;
    }
    // Intended: "keepExisting" replaces a value that is there, as "overWrite" does, and so does an
    // empty container, which is what a type without an extraction gives.
    const bool isList = item.valueDataType.find("vector") != std::string::npos;
    static_cast<void>(
        storage.SetValue(item.name, isList ? parserVectorData(item.valueDataType, item.initValue)
                                           : parserData(item.valueDataType, item.initValue)));
  }
}

std::vector<std::string> PersistencyUpdateImpl::parserSplit(std::string text, char delimiter) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, delimiter);) {
    if (!piece.empty()) {
      // Intended: the line ends before the piece.
      log_->logPrint(LogLevel::kVerbose,
                     ARA_PER_LINE("PersistencyUpdateImpl::parserSplit tok is "));
      pieces.push_back(piece);
    }
  }
  return pieces;
}

KvsType PersistencyUpdateImpl::parserData(std::string dataType, std::string value) {
  const Type eType = switchType(dataType);
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "PersistencyUpdateImpl::parserData eType:%d ",
                 static_cast<int>(eType));
  KvsType result;
  WithElement(eType, [&](auto element) { result = element(value); });
  log_->logPrint(LogLevel::kVerbose, ARA_PER_LINE("PersistencyUpdateImpl::parserData end"));
  return result;
}

KvsType PersistencyUpdateImpl::parserVectorData(std::string dataType, std::string value) {
  // Intended: the text names another function.
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "PersistencyUpdateImpl::parserSplit dataType is:%s initValue:%s ",
                 dataType.c_str(), value.c_str());
  // Intended: the brackets are found independently of each other; a missing one is the border of
  // the text.
  const std::size_t lt = dataType.find('<');
  const std::size_t gt = dataType.find('>');
  KvsType result;
  WithElement(switchType(dataType.substr(lt + 1, gt - lt - 1)), [&](auto element) {
    const std::vector<std::string> pieces = parserSplit(value, ',');
    if (pieces.empty()) {
      throw std::exception();
    }
    result = element(pieces.front());  // Intended: a list of one is a plain value
    for (std::size_t i = 1; i < pieces.size(); ++i) {
      result.AddArrayItem(element(pieces[i]));
    }
  });
  return result;
}

}  // namespace ara::per
