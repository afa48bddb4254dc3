#include "ara/per/per_update.h"

#include "update/per_update_impl.h"

namespace ara::per {

PersistencyUpdate::~PersistencyUpdate() = default;

std::unique_ptr<PersistencyUpdate> PersistencyUpdate::CreatePersistencyUpdate() {
  return std::make_unique<PersistencyUpdateImpl>();
}

}  // namespace ara::per
