// A document that is read and saved is read again, and is then saved as the same bytes.

#include "fuzz/fuzz_support.h"
#include "jsconfig/jsconfig.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  jsconfig::CObjectDocument document;
  if (!document.parseString(fuzz::TextOf(data, size))) {
    fuzz::Demand(!document.errorString().empty(), "a refusal has a reason");
    fuzz::Demand(document.root() == nullptr, "a refused document is empty");
    return 0;
  }
  fuzz::Demand(document.save("first.json"), "what was read can be saved");

  jsconfig::CObjectDocument again;
  fuzz::Demand(again.parse("first.json"), "what was saved can be read");
  fuzz::Demand(again.save("second.json"), "what was read again can be saved");
  fuzz::Demand(fuzz::ReadFile("first.json") == fuzz::ReadFile("second.json"),
               "a saved document stays as it is");
  return 0;
}
