// A database file is read the same way as a text, and no content of it does harm.

#include <list>
#include <memory>

#include "ara/log/sink.h"
#include "ara/per/json_parser.h"
#include "ara/per/kvs_type.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using ara::per::KvsType;
  ara::log::SetThreshold(ara::log::LogLevel::kOff);
  const std::string text = fuzz::TextOf(data, size);

  fuzz::WriteFile("database.json", text);
  const std::list<std::unique_ptr<KvsType>> items =
      ara::per::JsonParser("database.json").parseKvsJson();
  const std::unique_ptr<KvsType> first =
      ara::per::JsonParser("").parseKvsTypeFromString(text, false);

  fuzz::Demand((first == nullptr) == items.empty(), "a file and a text are refused alike");
  if (first != nullptr) {
    fuzz::Demand(first->GetKey() == items.front()->GetKey(), "the first key is the same");
    fuzz::Demand(first->SerializeKvsData() == items.front()->SerializeKvsData(),
                 "the first value is the same");
  }
  for (const std::unique_ptr<KvsType>& item : items) {
    fuzz::Demand(item->GetStatus() == KvsType::Status::kSuccess, "an item that was read is valid");
    static_cast<void>(item->SerializeKvsData());
  }
  return 0;
}
