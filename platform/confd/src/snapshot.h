// A configuration tree with an index over its lists.
#ifndef PLATFORM_CONFD_SNAPSHOT_H_
#define PLATFORM_CONFD_SNAPSHOT_H_

#include <libyang/libyang.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "confd/store.h"
#include "schema.h"

namespace confd {

/// Entries of one list below one parent. libyang neither sorts lists nor hashes top-level ones;
/// this does both.
class ListIndex {
 public:
  ListIndex(const lysc_node* list, const lyd_node* first_sibling);

  /// In walk order: key order, or configuration order when the user orders the list.
  const std::vector<const lyd_node*>& entries() const { return entries_; }

  /// @param key  canonical key texts, joined by JoinKey
  const lyd_node* Find(const std::string& key) const;

 private:
  std::vector<const lyd_node*> entries_;
  mutable std::unordered_map<std::string, const lyd_node*> by_key_;  // filled at the first look-up
};

/// Appends one canonical key text to a joined key.
void JoinKey(std::string& joined, std::string_view text);

/// Joined key of a list entry, or value of a leaf-list entry.
std::string JoinedKey(const lyd_node* entry);

/// Order of two entries of one list by their keys.
int CompareEntries(const lyd_node* a, const lyd_node* b);

class LoadedSnapshot : public Snapshot {
 public:
  LoadedSnapshot(std::shared_ptr<const Schema> schema, lyd_node* tree);

  const Schema& schema() const override { return *schema_; }
  const lyd_node* tree() const override { return tree_.get(); }
  std::vector<const lyd_node*> Instances(const lysc_node* node,
                                         const lyd_node* ancestor) const override;
  const lyd_node* Counterpart(const lyd_node* node) const override;

  /// The single child of that schema node below `parent` (null: top level), a leaf or container;
  /// null when absent.
  const lyd_node* Child(const lyd_node* parent, const lysc_node* node) const;

  /// The index of a list or leaf-list below `parent`.
  const ListIndex& List(const lyd_node* parent, const lysc_node* list) const;

  /// Key texts of all entries that hold a "%". Collected at the first call.
  const std::vector<std::string>& KeysWithPercent() const;

 private:
  struct TreeDeleter {
    void operator()(lyd_node* tree) const { lyd_free_all(tree); }
  };
  struct ListId {
    const lyd_node* parent;
    const lysc_node* list;
    friend bool operator==(const ListId&, const ListId&) = default;
  };
  struct ListIdHash {
    size_t operator()(const ListId& id) const {
      return std::hash<const void*>()(id.parent) * 31 + std::hash<const void*>()(id.list);
    }
  };

  void CollectInstances(const std::vector<const lysc_node*>& way, size_t step,
                        const lyd_node* parent, std::vector<const lyd_node*>& found) const;

  std::shared_ptr<const Schema> schema_;
  std::unique_ptr<lyd_node, TreeDeleter> tree_;
  std::unordered_map<const lysc_node*, const lyd_node*> top_;  // leaves and containers at the top
  mutable std::unordered_map<ListId, std::unique_ptr<ListIndex>, ListIdHash> lists_;
  mutable std::optional<std::vector<std::string>> keys_with_percent_;
};

inline const LoadedSnapshot& AsLoaded(const Snapshot& snapshot) {
  return static_cast<const LoadedSnapshot&>(snapshot);
}

}  // namespace confd

#endif  // PLATFORM_CONFD_SNAPSHOT_H_
