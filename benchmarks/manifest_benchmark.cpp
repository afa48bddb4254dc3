// The update engine: a long manifest beside one of a tenth of its length.
#include <array>
#include <cstdint>
#include <fstream>

#include "ara/per/key_value_storage.h"
#include "ara/per/per_update.h"
#include "benchmarks/items.h"
#include "benchmarks/row.h"
#include "benchmarks/turns.h"

namespace ara::per::bench {
namespace {

constexpr std::int64_t kPairs = 100000;
constexpr double kGoal = 13;  // of the total time, for ten times the pairs

constexpr std::array kValues = {
    R"("initValue":"-12345678","valueDataType":"sint32")",
    R"("initValue":"0.375","valueDataType":"double")",
    R"("initValue":"a text of 24 characters.","valueDataType":"string")",
    R"("initValue":"1","valueDataType":"bool")",
    R"("initValue":"1,2,3,4,5,6,7,8","valueDataType":"vector<uint32>")",
    R"("initValue":"front left,front right","valueDataType":"vector<string>")",
};

/// @return the seconds that it takes to apply a manifest that makes a database
double SecondsToApply(std::int64_t pairs) {
  const TemporaryFile manifest("manifest.json");
  const TemporaryFile database("installed.json");
  std::ofstream file(manifest.path());
  file << R"({"DeploymentConfig":{"UpdateType":"installation","KeyValukDatabase":{"uri":")"
       << database.path() << R"(","updateStrategy":"keepExisting","keyValuePairs":[)";
  for (std::int64_t i = 0; i < pairs; ++i) {
    file << (i == 0 ? "" : ",") << R"({"name":"vehicle/door/)" << i << R"(/state",)"
         << kValues[static_cast<std::size_t>(i) % kValues.size()]
         << R"(,"updateStrategy":"overWrite"})";
  }
  file << "]}}}";
  file.close();
  const double seconds = CpuSeconds(
      [&] { PersistencyUpdate::CreatePersistencyUpdate()->updatePersistency(manifest.path()); });
  const auto installed = KeyValueStorage(database.path()).GetAllKeys().size();
  Demand(installed == static_cast<std::size_t>(pairs), "not all pairs were installed");
  return seconds;
}

}  // namespace

void BM_Manifest(benchmark::State& state) {
  Compare(state, "- manifest of 100,000 / of 10,000 pairs", 1, kGoal, [](const Turn& turn) {
    SecondsToApply(kPairs / 100);  // what the first use of everything costs is no part of it
    const auto apply = [](std::int64_t pairs) {  // each with the heap that an installer begins with
      return InChild([pairs] { return SecondsToApply(pairs); }).value();
    };
    return turn.Run([&] { return apply(kPairs); }, [&] { return apply(kPairs / 10); });
  });
}

}  // namespace ara::per::bench
