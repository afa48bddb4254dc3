#include <memory>
#include <utility>

#include "ara/per/json_parser.h"
#include "ara/per/kvs_type.h"

namespace ara::per {

std::string KvsType::SerializeKvsData() {
  std::string text;
  JsonParser("").serializeKvsJson(*this, text);
  return text;
}

KvsType KvsType::DeSerializeKvsData(const std::string& data, bool flag) {
  if (!data.empty()) {
    if (const std::unique_ptr<KvsType> item = JsonParser("").parseKvsTypeFromString(data, flag)) {
      return std::move(*item);
    }
  }
  KvsType failed;
  failed.SetStatus(Status::kGeneralError);
  return failed;
}

}  // namespace ara::per
