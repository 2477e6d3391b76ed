// A configuration tree with an index over its lists.
#ifndef STORE_SNAPSHOT_H_
#define STORE_SNAPSHOT_H_

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "store/list_index.h"
#include "store/schema.h"

struct lyd_node;
struct lysc_node;

namespace store {

/// One configuration: an immutable data tree that satisfies the data model, with an index over its
/// lists.
class Snapshot final {
 public:
  /// An empty configuration, with the containers and defaults that are always there.
  static std::shared_ptr<const Snapshot> Empty(std::shared_ptr<const Schema> schema);

  /// Parses and validates XML (text begins with '<') or JSON. For tests and programs that hold
  /// text.
  /// @throws Error  text does not parse or does not satisfy the data model.
  static std::shared_ptr<const Snapshot> FromText(std::shared_ptr<const Schema> schema,
                                                  const std::string& text);

  /// Takes a tree that lyd_validate_all accepted; owned from here on.
  static std::shared_ptr<const Snapshot> FromTree(std::shared_ptr<const Schema> schema,
                                                  lyd_node* tree);

  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;

  const Schema& schema() const { return *schema_; }
  const lyd_node* tree() const { return tree_.get(); }

  /// Instances of `node` at or below `ancestor` (anywhere when null), in walk order: key order, or
  /// configuration order for a list that the user orders.
  std::vector<const lyd_node*> Instances(const lysc_node* node, const lyd_node* ancestor) const;

  /// The node of this tree with the same path and keys as `node` of another snapshot, or null.
  const lyd_node* Counterpart(const lyd_node* node) const;

  /// The single child of that schema node below `parent` (null: top level), a leaf or container;
  /// null when absent.
  const lyd_node* Child(const lyd_node* parent, const lysc_node* node) const;

  /// The index of a list or leaf-list below `parent`. Valid as long as the snapshot.
  const ListIndex& List(const lyd_node* parent, const lysc_node* list) const;

 private:
  struct TreeDeleter {
    void operator()(lyd_node* tree) const;
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

  Snapshot(std::shared_ptr<const Schema> schema, lyd_node* tree);

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
};

}  // namespace store

#endif  // STORE_SNAPSHOT_H_
