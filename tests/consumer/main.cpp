// Sets, synchronises and reads back through the installed headers and libraries. Works in the
// current directory.

#include <cstdio>
#include <memory>
#include <string>

#include "ara/per/persistency.h"

namespace {

constexpr char kDatabase[] = "consumer.json";

bool Write() {
  const std::unique_ptr<ara::per::KeyValueStorage> storage =
      ara::per::CreateKeyValueStorage(kDatabase);
  const auto status = storage->SetValue<std::string>("greeting", "hello");
  storage->SyncToStorage();
  return status == ara::per::KeyValueStorage::Status::kSuccess;
}

bool ReadBack() {
  const std::unique_ptr<ara::per::KeyValueStorage> storage =
      ara::per::CreateKeyValueStorage(kDatabase);
  std::string value;
  const auto status = storage->GetValue<std::string>("greeting", value);
  return status == ara::per::KeyValueStorage::Status::kSuccess && value == "hello";
}

}  // namespace

int main() {
  if (!Write() || !ReadBack()) {
    std::puts("the value did not come back");
    return 1;
  }
  std::puts("the value came back");
  return 0;
}
