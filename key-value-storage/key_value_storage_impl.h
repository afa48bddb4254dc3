#ifndef KEY_VALUE_STORAGE_KEY_VALUE_STORAGE_IMPL_H_
#define KEY_VALUE_STORAGE_KEY_VALUE_STORAGE_IMPL_H_

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "ara/per/key_value_storage.h"
#include "ara/per/kvs_type.h"
#include "ara/per/log_extend.h"
#include "key-value-storage/key_pool.h"
#include "manifestaccess/manifest_helper.h"
#include "support/timercpp.h"

namespace ara::per {

/// The engine behind a database: all items in memory, their way from the file and back to it.
///
/// Each item in the list is the same object as the map's entry for its key. The list is what gets
/// written, in the order of first insertion; the map is what gets searched. (Of two items with one
/// key in a file, the list holds both and the map the later.)
///
/// Not guarded: the containers and flags are used by the application's thread and, during a
/// delayed synchronisation, by the timer's. Such a one keeps the engine alive once it has begun.
class KeyValueStorage::Impl : public TimerData,
                              public std::enable_shared_from_this<KeyValueStorage::Impl> {
 public:
  explicit Impl(const std::string& database);

  /// Intended: silences no timer but its own; `deinit` does.
  ~Impl() override;

  /// The end of the database: stops the timer and synchronises nothing.
  virtual void deinit();
  virtual std::vector<std::string> getAllKeys() const;
  virtual bool hasKey(const std::string& key) const;
  virtual KvsType getValue(const std::string& key) const;
  virtual void setValue(const std::string& key, const KvsType& value);
  virtual void removeKey(const std::string& key);
  virtual void removeAllKeys();
  virtual void syncToLocalStorage();

  /// `getValue` without the copy: the stored item, or a default value for a missing key. Valid
  /// until the key changes; the caller must not move the item's cursor.
  const KvsType& readValue(const std::string& key) const;

  /// `setValue` for a value that nobody else needs.
  void setValue(const std::string& key, KvsType&& value);

  /// Intended: data of a file accessor is as invalid as none.
  static void onTimer(void* data);

 private:
  using ItemList = std::list<std::shared_ptr<KvsType>>;

  /// The order of strings, eight bytes at a time: most of a search is comparing keys that
  /// begin alike.
  struct KeyLess {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
  };

  /// What the shared pointers of the list and the map really point to, so that removing a key need
  /// not search the list.
  struct Item;

  static std::string getTheCurrentPath();
  void readConfiguration();
  void InitWithoutRedundancy();
  void InitWithRedundancy();
  ItemList getKVSItemsFromJson(const std::string& path) const;
  void mergeWithRedundancy(const ItemList& items, const ItemList& redundant_items);

  template <class Value>
  void storeValue(const std::string& key, Value&& value);
  void armTimer();
  bool sizeLimitReached() const;

  bool db_changed_ = false;
  bool isTimer = false;
  bool in_redundancy_init_ = false;
  const std::string database_;
  DatabaseConfig config_;
  Timer timer_;
  std::string config_path_;
  LogExtend* log_ = nullptr;
  ItemList kvs_items_in_add_order_;
  KeyPool key_pool_;
  std::pmr::map<std::pmr::string, std::shared_ptr<KvsType>, KeyLess> kvs_items_{&key_pool_};

  const KvsType missing_;            // what a missing key reads as
  std::atomic<bool> ended_ = false;  // a delayed write that has not begun is no longer wanted
};

}  // namespace ara::per

#endif  // KEY_VALUE_STORAGE_KEY_VALUE_STORAGE_IMPL_H_
