// Stores the configuration of a vehicle in a database and, in a second process, compares what comes
// back with what was stored.
//
// usage: quickstart store|check <table> <database>
//
// The table tells each item's key, type and value, and where a save changes an item also what it
// comes back as, and why. A difference that the table does not tell ends `check` with 1.

#include <array>
#include <charconv>
#include <cstddef>
#include <exception>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

#include "ara/per/persistency.h"

namespace {

using ara::per::KeyValueStorage;
using ara::per::KvsType;
using Status = KeyValueStorage::Status;

constexpr char kObject[] = "object";
constexpr char kGone[] = "gone";

// --- the table -----------------------------------------------------------------------------------

struct Row {
  std::size_t depth = 0;
  std::string key;
  std::string type;
  std::string value;
  std::string unchanged;  // what it comes back as when nothing is lost
  std::string expected;   // what it comes back as
  std::string why;
  std::vector<Row> items;  // of an object
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    part.erase(0, part.find_first_not_of(' '));
    part.erase(part.find_last_not_of(' ') + 1);
    parts.push_back(part);
  }
  return parts;
}

Row RowOf(const std::string& line) {
  std::vector<std::string> cells = Split(line, '|');
  cells.resize(5);
  Row row;
  row.depth = line.find_first_not_of(' ') / 2;
  row.key = cells[0];
  row.type = cells[1];
  row.value = cells[2];
  row.unchanged = row.type.substr(0, row.type.find('[')) + ' ' + row.value;
  row.expected = cells[3].empty() ? row.unchanged : cells[3];
  row.why = cells[4];
  return row;
}

std::vector<Row> ReadTable(const std::string& path) {
  std::ifstream file(path);
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  std::vector<Row> rows;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == '#') {
      continue;
    }
    const Row row = RowOf(line);
    std::vector<Row>* siblings = &rows;
    for (std::size_t depth = 0; depth < row.depth; ++depth) {
      siblings = &siblings->back().items;
    }
    siblings->push_back(row);
  }
  return rows;
}

// --- values as texts -----------------------------------------------------------------------------

template <class T>
struct IsVector : std::false_type {};
template <class T>
struct IsVector<std::vector<T>> : std::true_type {};

template <class T>
T FromText(const std::string& text) {
  if constexpr (std::is_same_v<T, std::string>) {
    return text;
  } else if constexpr (std::is_same_v<T, bool>) {
    return text == "true";
  } else if constexpr (IsVector<T>::value) {
    T elements;
    for (const std::string& part : Split(text.substr(1, text.length() - 2), ',')) {
      elements.push_back(FromText<typename T::value_type>(part));
    }
    return elements;
  } else {
    T number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.length(), number);
    if (error != std::errc() || *end != '\0') {
      throw std::runtime_error("no number of its type in the table: " + text);
    }
    return number;
  }
}

template <class T>
std::string ToText(const T& value) {
  if constexpr (std::is_same_v<T, std::string>) {
    return value;
  } else if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr};
  }
}

template <class T>
std::string ToText(const std::vector<T>& elements) {
  std::string text;
  for (const auto& element : elements) {
    text += (text.empty() ? "[" : ", ") + ToText<T>(element);
  }
  return text + ']';
}

std::string NameOf(KvsType::Type type) {
  constexpr std::array kNames = {"unknown", "float",  "double", "sint8",  "sint16",
                                 "sint32",  "sint64", "uint8",  "uint16", "uint32",
                                 "uint64",  "string", "binary", "bool",   kObject};
  return kNames.at(static_cast<std::size_t>(type));
}

// --- what is done with the types of the table ----------------------------------------------------

struct TypeUse {
  Status (*store)(KeyValueStorage&, const std::string& key, const std::string& text);
  Status (*read)(const KeyValueStorage&, const std::string& key, std::string& text);
  KvsType (*makeItem)(const std::string& text);  // for an object
};

template <class T>
Status StoreAs(KeyValueStorage& database, const std::string& key, const std::string& text) {
  return database.SetValue<T>(key, FromText<T>(text));
}

template <class T>
Status ReadAs(const KeyValueStorage& database, const std::string& key, std::string& text) {
  T value{};
  const Status status = database.GetValue<T>(key, value);
  text = ToText(value);
  return status;
}

template <class T>
KvsType MakeItem(const std::string& text) {
  return KvsType(FromText<T>(text));
}

template <class T>
KvsType MakeArrayItem(const std::string& text) {
  const auto elements = FromText<std::vector<T>>(text);
  KvsType array(static_cast<T>(elements.front()));
  for (std::size_t i = 1; i < elements.size(); ++i) {
    array.AddArrayItem(KvsType(static_cast<T>(elements[i])));
  }
  return array;
}

KvsType MakeBinaryItem(const std::string& text) {
  auto bytes = FromText<std::vector<unsigned char>>(text);
  return KvsType(bytes.data(), bytes.size());
}

Status StoreBinary(KeyValueStorage& database, const std::string& key, const std::string& text) {
  return database.SetValue<KvsType>(key, MakeBinaryItem(text));
}

Status ReadBinary(const KeyValueStorage&, const std::string&, std::string&) {
  return Status::kGeneralError;  // a file holds none
}

using TypeUses = std::map<std::string, TypeUse>;

template <class T>
void AddType(TypeUses& uses, const std::string& name) {
  uses[name] = {StoreAs<T>, ReadAs<T>, MakeItem<T>};
  uses[name + "[]"] = {StoreAs<std::vector<T>>, ReadAs<std::vector<T>>, MakeArrayItem<T>};
}

TypeUses AllTypes() {
  TypeUses uses;
  AddType<signed char>(uses, "sint8");
  AddType<short>(uses, "sint16");
  AddType<int>(uses, "sint32");
  AddType<long>(uses, "sint64");
  AddType<unsigned char>(uses, "uint8");
  AddType<unsigned short>(uses, "uint16");
  AddType<unsigned int>(uses, "uint32");
  AddType<unsigned long>(uses, "uint64");
  AddType<float>(uses, "float");
  AddType<double>(uses, "double");
  AddType<bool>(uses, "bool");
  AddType<std::string>(uses, "string");
  uses["binary"] = {StoreBinary, ReadBinary, MakeBinaryItem};
  return uses;
}

const TypeUse& UseOf(const Row& row) {
  static const TypeUses kUses = AllTypes();
  const auto use = kUses.find(row.type);
  if (use == kUses.end()) {
    throw std::runtime_error("unknown type in the table: " + row.type);
  }
  return use->second;
}

// --- the first process: store --------------------------------------------------------------------

KvsType MakeObject(const Row& row) {
  KvsType object;
  for (const Row& child : row.items) {
    KvsType item = child.type == kObject ? MakeObject(child) : UseOf(child).makeItem(child.value);
    item.SetKey(child.key);
    object.AddArrayItem(item);  // takes the item
  }
  return object;
}

int Store(const std::vector<Row>& rows, const std::string& path) {
  const std::unique_ptr<KeyValueStorage> database = ara::per::CreateKeyValueStorage(path);
  for (const Row& row : rows) {
    const Status status = row.type == kObject ? database->SetValue(row.key, MakeObject(row))
                                              : UseOf(row).store(*database, row.key, row.value);
    if (status != Status::kSuccess) {
      std::cout << "The database has refused " << row.key << ".\n";
      return 1;
    }
  }
  database->SyncToStorage();
  std::cout << "I have stored " << rows.size() << " keys and written them to the file " << path
            << ".\n";
  return 0;
}

// --- the second process: check -------------------------------------------------------------------

/// Prints a line for each item and counts.
class Comparison {
 public:
  Comparison() { print("key", "stored", "came back as", ""); }

  void add(const Row& row, const std::string& found) {
    std::string remark;
    if (found != row.expected) {
      ++unexpected_;
      remark = "UNEXPECTED, should be " + row.expected;
    } else if (found != row.unchanged) {
      ++changed_;
      remark = "expected: " + row.why;
    } else {
      ++same_;
    }
    print(std::string(2 * row.depth, ' ') + row.key, row.type + ' ' + row.value, found, remark);
  }

  void addFault(const std::string& text) {
    ++unexpected_;
    std::cout << "UNEXPECTED: " << text << '\n';
  }

  /// @return whether all is as the table tells
  bool finish() const {
    std::cout << '\n'
              << same_ << " items came back as they were stored, " << changed_
              << " changed as the table tells, " << unexpected_ << " changed unexpectedly.\n";
    return unexpected_ == 0;
  }

 private:
  static void print(const std::string& key, const std::string& stored, const std::string& found,
                    const std::string& remark) {
    std::cout << std::left << std::setw(22) << key << ' ' << std::setw(40) << stored << ' ';
    if (!remark.empty()) {
      std::cout << std::setw(31);
    }
    std::cout << found << (remark.empty() ? "" : " ") << remark << '\n';
  }

  int same_ = 0;
  int changed_ = 0;
  int unexpected_ = 0;
};

/// The elements of an array come in one of five types.
std::string ElementText(const KvsType& element) {
  switch (element.GetType()) {
    case KvsType::Type::kSInt64:
      return ToText(element.GetSInt64());
    case KvsType::Type::kUInt64:
      return ToText(element.GetUInt64());
    case KvsType::Type::kDouble:
      return ToText(element.GetDouble());
    case KvsType::Type::kBoolean:
      return ToText(element.GetBool());
    default:
      return element.GetString();
  }
}

/// An item of an object. A plain value counts as an array of one element.
std::string ItemText(KvsType& item) {
  const std::size_t count = item.GetNumberOfArrayItems();
  if (item.GetType() == KvsType::Type::kObject) {
    return std::string(kObject) + ' ' + std::to_string(count) + " items";
  }
  std::vector<std::string> elements;
  while (elements.size() < count) {
    elements.push_back(ElementText(item.GetNextArrayItem()));
  }
  return NameOf(item.GetType()) + ' ' + (count == 1 ? elements.front() : ToText(elements));
}

void CompareItem(const Row& row, KvsType& item, Comparison& comparison) {
  comparison.add(row, ItemText(item));
  if (item.GetNumberOfArrayItems() < row.items.size()) {
    return;  // has been remarked on
  }
  for (const Row& child : row.items) {
    KvsType childItem = item.GetNextArrayItem();
    if (childItem.GetKey() != child.key) {
      comparison.addFault("the key of the next item is " + childItem.GetKey());
    }
    CompareItem(child, childItem, comparison);
  }
}

void CompareRow(const Row& row, const KeyValueStorage& database, Comparison& comparison) {
  if (!database.HasKey(row.key)) {
    comparison.add(row, kGone);
    return;
  }
  KvsType item;
  database.GetValue(row.key, item);
  if (row.type == kObject) {
    CompareItem(row, item, comparison);
    return;
  }
  std::string text;
  const Status status = UseOf(row).read(database, row.key, text);
  comparison.add(row, NameOf(item.GetType()) + ' ' +
                          (status == Status::kSuccess ? text : "that cannot be read as its type"));
}

int Check(const std::vector<Row>& rows, const std::string& path) {
  const std::unique_ptr<KeyValueStorage> database = ara::per::CreateKeyValueStorage(path);
  std::cout << "I have opened the file " << path << " anew and compare:\n\n";
  Comparison comparison;
  std::vector<std::string> keys;
  for (const Row& row : rows) {
    CompareRow(row, *database, comparison);
    if (row.expected != kGone) {
      keys.push_back(row.key);
    }
  }
  if (database->GetAllKeys() != keys) {
    comparison.addFault("the database has other keys than the table, or another order");
  }
  return comparison.finish() ? 0 : 1;
}

}  // namespace

int main(int argc, char* argv[]) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() != 3 || (arguments[0] != "store" && arguments[0] != "check")) {
    std::cerr << "usage: quickstart store|check <table> <database>\n";
    return 2;
  }
  try {
    const std::vector<Row> rows = ReadTable(arguments[1]);
    return arguments[0] == "store" ? Store(rows, arguments[2]) : Check(rows, arguments[2]);
  } catch (const std::exception& error) {
    std::cerr << "quickstart: " << error.what() << '\n';
    return 1;
  }
}
