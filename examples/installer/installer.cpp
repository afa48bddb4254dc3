// Hands a deployment manifest to the update engine, as an installer does once for each change of
// the software.
//
// usage: installer <manifest>
//
// The status is 0 when the engine has gone through the manifest and 1 when it has not.

#include <exception>
#include <iostream>

#include "ara/per/persistency.h"

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::cerr << "usage: installer <manifest>\n";
    return 2;
  }
  try {
    // An engine remembers what it has read: a new one for each manifest.
    const auto engine = ara::per::PersistencyUpdate::CreatePersistencyUpdate();
    if (engine->updatePersistency(argv[1]) != 0) {
      std::cout << "Nothing was touched: the manifest is missing or tells no deployment.\n";
      return 1;
    }
  } catch (const std::exception& error) {
    std::cout << "Stopped in the database section, which was not saved: " << error.what() << '\n';
    return 1;
  }
  // Only the log tells whether a file could be written.
  std::cout << "Gone through the manifest to its end.\n";
  return 0;
}
