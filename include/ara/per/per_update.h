#ifndef ARA_PER_PER_UPDATE_H_
#define ARA_PER_PER_UPDATE_H_

#include <memory>
#include <string>

#include "ara/per/export.h"

namespace ara::per {

/// Applies deployment manifests to the stored data of an application: what an installer calls once
/// for each change of the software. docs/manifests.md tells the format of a manifest and what each
/// strategy does, which is not always what its name suggests.
///
/// Threads: an engine takes no lock; one thread may use it at a time. Two updates of the same data
/// at once, or an update while an application has it open, are not provided for.
class ARA_PER_EXPORT PersistencyUpdate {
 public:
  virtual ~PersistencyUpdate();

  /// Reads the manifest at `path` and applies its file section, then its database section. An
  /// uninstallation touches neither: removing the data is left to the platform.
  ///
  /// Intended: nothing that was read is forgotten between two calls on one engine. The key-value
  /// pairs of the second manifest come behind those of the first, and a section that it lacks is
  /// applied again from the first. Use an engine for each manifest.
  /// Intended: an "UpdateType" that is neither "installation" nor "update" counts as an
  /// uninstallation, so that a slip applies nothing.
  /// @return 1 when the manifest is missing or has no usable "DeploymentConfig"; nothing was
  ///     touched then. Else 0. Intended: also when a step failed, or the manifest is no JSON.
  /// @throws std::exception for a list without elements as an initial value. The file section has
  ///     been applied then; of the database section nothing is synchronised, unless a delay that
  ///     ended meanwhile has written the items before it.
  /// @throws std::system_error when a lock fails or the thread of a delay cannot be started
  /// @throws std::bad_alloc when a file, which is held as a whole, does not fit
  virtual int updatePersistency(const std::string& path) = 0;

  /// @return a new engine, never null
  static std::unique_ptr<PersistencyUpdate> CreatePersistencyUpdate();
};

}  // namespace ara::per

#endif  // ARA_PER_PER_UPDATE_H_
