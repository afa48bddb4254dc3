#include <iostream>

#include "ara/per/persistency.h"

int main() {
  const auto database = ara::per::CreateKeyValueStorage("counter.json");
  int starts = 0;
  database->GetValue("starts", starts);  // leaves a missing key's variable alone
  database->SetValue("starts", starts + 1);
  database->SyncToStorage();
  std::cout << "started " << starts + 1 << " times\n";
}
