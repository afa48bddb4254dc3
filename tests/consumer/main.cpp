// Sets, synchronises and reads back through the installed headers and libraries. Works in the
// current directory.

#include <string>

#include "ara/per/persistency.h"

int main() {
  ara::per::KeyValueStorage stored("consumer.json");
  stored.SetValue<std::string>("greeting", "hello");
  stored.SyncToStorage();
  std::string value;
  ara::per::KeyValueStorage("consumer.json").GetValue("greeting", value);
  return value == "hello" ? 0 : 1;
}
