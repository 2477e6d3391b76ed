// A configuration tree with an index over its lists.
#ifndef PLATFORM_CONFD_SNAPSHOT_H_
#define PLATFORM_CONFD_SNAPSHOT_H_

#include <libyang/libyang.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "confd/store.h"
#include "schema.h"

namespace confd {

/// Entries of one list below one parent. libyang neither sorts lists nor hashes top-level ones;
/// this does both.
class ListIndex {
 public:
  ListIndex() = default;
  ListIndex(const lysc_node* list, const lyd_node* first_sibling);

  /// In walk order: key order, or configuration order when the user orders the list.
  const std::vector<const lyd_node*>& entries() const { return entries_; }

  /// @param key  canonical key texts, joined by JoinKey
  const lyd_node* Find(const std::string& key) const;

  /// The entry found last, the one behind it or the first one, when these texts are its keys; null
  /// says nothing. Who walks a list asks for its entries in this order, and then nothing has to be
  /// hashed.
  const lyd_node* FindNearby(const std::vector<std::string_view>& keys) const;

 private:
  std::vector<const lyd_node*> entries_;
  mutable std::unordered_map<std::string, size_t> by_key_;  // filled at the first look-up
  mutable size_t found_last_ = 0;
};

/// Appends one canonical key text to a joined key.
void JoinKey(std::string& joined, std::string_view text);

/// Joined key of a list entry, or value of a leaf-list entry.
std::string JoinedKey(const lyd_node* entry);

/// Order of two entries of one list by their keys.
int CompareEntries(const lyd_node* a, const lyd_node* b);

/// A path that fits the data model, looked up in a configuration.
struct Place {
  const lysc_node* schema = nullptr;  // null: the root
  const lyd_node* node =
      nullptr;  // null where `schema` is a list without keys, or the node is absent
  const lyd_node* parent = nullptr;  // of a list without keys; null at the top or when absent
  bool without_keys = false;         // the path ends at a list without keys
  bool exists = false;               // the node, or all that is above a list without keys
};

/// The path looked up last: the next one mostly differs from it in its last steps only.
struct LastPath {
  struct Step {
    size_t end;  // in `text`
    Place place;
  };
  std::string text;
  std::vector<Step> steps;  // as many as could be read
};

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

  /// The index of a list or leaf-list below `parent`. Valid as long as the snapshot.
  const ListIndex& List(const lyd_node* parent, const lysc_node* list) const;

  LastPath& last_path() const { return last_path_; }

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

  using Way = std::vector<const lysc_node*>;

  const Way& WayDown(const lysc_node* ancestor, const lysc_node* node) const;
  void CollectInstances(const Way& way, size_t step, const lyd_node* parent,
                        std::vector<const lyd_node*>& found) const;

  std::shared_ptr<const Schema> schema_;
  std::unique_ptr<lyd_node, TreeDeleter> tree_;
  std::unordered_map<const lysc_node*, const lyd_node*> top_;  // leaves and containers at the top
  mutable std::unordered_map<ListId, std::unique_ptr<ListIndex>, ListIdHash> lists_;
  mutable ListId last_list_id_{};
  mutable const ListIndex* last_list_ = nullptr;  // asked for last
  mutable std::map<std::pair<const lysc_node*, const lysc_node*>, Way> ways_;
  mutable LastPath last_path_;
};

inline const LoadedSnapshot& AsLoaded(const Snapshot& snapshot) {
  return static_cast<const LoadedSnapshot&>(snapshot);
}

}  // namespace confd

#endif  // PLATFORM_CONFD_SNAPSHOT_H_
