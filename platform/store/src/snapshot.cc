#include "store/snapshot.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <string>
#include <utility>

#include "out_of_memory.h"
#include "store/error.h"
#include "store/libyang_fault.h"
#include "store/schema_node.h"

namespace store {
namespace {

// libyang's last fault.
Error LastError(const ly_ctx* context) {
  const LibyangFault fault = LastFault(context);
  std::string text(fault.message.empty() ? "the configuration is not valid" : fault.message);
  if (!fault.location.empty()) text.append(" ").append(fault.location);
  return Error(text, fault.line);
}

}  // namespace

std::shared_ptr<const Snapshot> Snapshot::Empty(std::shared_ptr<const Schema> schema) {
  lyd_node* tree = nullptr;
  const LY_ERR result = lyd_validate_all(&tree, schema->context(), LYD_VALIDATE_NO_STATE, nullptr);
  if (result != LY_SUCCESS) {
    ThrowIfOutOfMemory(result);
    throw LastError(schema->context());
  }
  return FromTree(std::move(schema), tree);
}

std::shared_ptr<const Snapshot> Snapshot::FromText(std::shared_ptr<const Schema> schema,
                                                   const std::string& text) {
  lyd_node* tree = nullptr;
  const LYD_FORMAT format = text.starts_with('<') ? LYD_XML : LYD_JSON;
  const LY_ERR result =
      lyd_parse_data_mem(schema->context(), text.c_str(), format,
                         LYD_PARSE_STRICT | LYD_PARSE_NO_STATE, LYD_VALIDATE_NO_STATE, &tree);
  if (result != LY_SUCCESS) {
    ThrowIfOutOfMemory(result);
    throw LastError(schema->context());
  }
  return FromTree(std::move(schema), tree);
}

std::shared_ptr<const Snapshot> Snapshot::FromTree(std::shared_ptr<const Schema> schema,
                                                   lyd_node* tree) {
  return std::shared_ptr<const Snapshot>(new Snapshot(std::move(schema), tree));
}

void Snapshot::TreeDeleter::operator()(lyd_node* tree) const { lyd_free_all(tree); }

Snapshot::Snapshot(std::shared_ptr<const Schema> schema, lyd_node* tree)
    : schema_(std::move(schema)), tree_(lyd_first_sibling(tree)) {
  for (const lyd_node* node = tree_.get(); node != nullptr; node = node->next) {
    if (!IsListLike(node->schema)) top_[node->schema] = node;
  }
}

const lyd_node* Snapshot::Child(const lyd_node* parent, const lysc_node* node) const {
  if (parent == nullptr) {
    const auto entry = top_.find(node);
    return entry == top_.end() ? nullptr : entry->second;
  }
  // Most nodes have few children; where a long list stands among them, libyang's hash is asked.
  const lyd_node* first = lyd_child(parent);
  int looked_at = 0;
  for (const lyd_node* child = first; child != nullptr; child = child->next) {
    if (child->schema == node) return child;
    if (++looked_at == 8) break;
  }
  lyd_node* found = nullptr;
  if (looked_at == 8) lyd_find_sibling_val(first, node, nullptr, 0, &found);
  return found;
}

const ListIndex& Snapshot::List(const lyd_node* parent, const lysc_node* list) const {
  static const ListIndex kEmpty;
  const ListId id{parent, list};
  if (last_list_ != nullptr && id == last_list_id_) return *last_list_;
  if (parent != nullptr && Child(parent, list) == nullptr) return kEmpty;
  std::unique_ptr<ListIndex>& index = lists_[id];
  if (index == nullptr) {
    index = std::make_unique<ListIndex>(list, parent == nullptr ? tree_.get() : lyd_child(parent));
  }
  last_list_id_ = id;
  last_list_ = index.get();
  return *index;
}

std::vector<const lyd_node*> Snapshot::Instances(const lysc_node* node,
                                                 const lyd_node* ancestor) const {
  std::vector<const lyd_node*> found;
  if (ancestor != nullptr && ancestor->schema == node) {
    found.push_back(ancestor);
    return found;
  }
  CollectInstances(WayDown(ancestor == nullptr ? nullptr : ancestor->schema, node), 0, ancestor,
                   found);
  return found;
}

// Nodes from below `ancestor` (from the top when it is null) down to `node`.
const Snapshot::Way& Snapshot::WayDown(const lysc_node* ancestor, const lysc_node* node) const {
  const auto [found, is_new] = ways_.try_emplace({ancestor, node});
  Way& way = found->second;
  if (!is_new) return way;
  for (const lysc_node* step = node; step != ancestor && step != nullptr; step = DataParent(step)) {
    way.push_back(step);
  }
  std::reverse(way.begin(), way.end());
  return way;
}

void Snapshot::CollectInstances(const Way& way, size_t step, const lyd_node* parent,
                                std::vector<const lyd_node*>& found) const {
  const auto go_on = [&](const lyd_node* node) {
    if (step + 1 == way.size()) {
      found.push_back(node);
    } else {
      CollectInstances(way, step + 1, node, found);
    }
  };
  if (IsListLike(way[step])) {
    for (const lyd_node* entry : List(parent, way[step]).entries()) go_on(entry);
  } else if (const lyd_node* child = Child(parent, way[step])) {
    go_on(child);
  }
}

const lyd_node* Snapshot::Counterpart(const lyd_node* node) const {
  const lyd_node* their_parent = lyd_parent(node);
  const lyd_node* parent = nullptr;
  if (their_parent != nullptr) {
    parent = Counterpart(their_parent);
    if (parent == nullptr) return nullptr;
  }
  if (IsListLike(node->schema)) return List(parent, node->schema).Find(JoinedKey(node));
  return Child(parent, node->schema);
}

}  // namespace store
