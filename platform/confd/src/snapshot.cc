#include "snapshot.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "confd/libyang_fault.h"
#include "errors.h"
#include "value_order.h"

namespace confd {
namespace {

const lyd_node* ChildList(const lyd_node* parent) { return lyd_child(parent); }

bool LessByKeys(const lyd_node* a, const lyd_node* b) { return CompareEntries(a, b) < 0; }

// Sorts the entries of a list by their keys. A single key that orders as its text is taken out of
// the nodes first.
void SortByKeys(const lysc_node* list, std::vector<const lyd_node*>& entries) {
  const bool has_one_key = list->nodetype == LYS_LIST && KeyLeaves(list).size() == 1;
  if (!has_one_key || !OrdersAsText(lysc_node_child(list))) {
    std::sort(entries.begin(), entries.end(), LessByKeys);
    return;
  }
  std::vector<std::pair<std::string_view, const lyd_node*>> by_text;
  by_text.reserve(entries.size());
  for (const lyd_node* entry : entries) {
    by_text.emplace_back(lyd_get_value(lyd_child(entry)), entry);
  }
  std::sort(by_text.begin(), by_text.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (size_t i = 0; i < entries.size(); ++i) entries[i] = by_text[i].second;
}

// libyang's last fault.
Error LastError(const ly_ctx* context) {
  const LibyangFault fault = LastFault(context);
  std::string text(fault.message.empty() ? "the configuration is not valid" : fault.message);
  if (!fault.location.empty()) text.append(" ").append(fault.location);
  return Error(text, fault.line);
}

bool HasKeys(const lyd_node* entry, const std::vector<std::string_view>& keys) {
  const lyd_node* key = ChildList(entry);
  for (const std::string_view wanted : keys) {
    if (key == nullptr || !lysc_is_key(key->schema) || wanted != lyd_get_value(key)) return false;
    key = key->next;
  }
  return key == nullptr || !lysc_is_key(key->schema);
}

}  // namespace

void JoinKey(std::string& joined, std::string_view text) {
  joined.append(text);
  joined.push_back('\0');  // no YANG value holds one
}

std::string JoinedKey(const lyd_node* entry) {
  std::string joined;
  if (entry->schema->nodetype == LYS_LEAFLIST) {
    JoinKey(joined, lyd_get_value(entry));
    return joined;
  }
  for (const lyd_node* key = ChildList(entry); key != nullptr && lysc_is_key(key->schema);
       key = key->next) {
    JoinKey(joined, lyd_get_value(key));
  }
  return joined;
}

int CompareEntries(const lyd_node* a, const lyd_node* b) {
  if (a->schema->nodetype == LYS_LEAFLIST) return CompareLeafValues(a, b);
  const lyd_node* x = ChildList(a);
  const lyd_node* y = ChildList(b);
  while (x != nullptr && y != nullptr && lysc_is_key(x->schema) && lysc_is_key(y->schema)) {
    const int order = CompareLeafValues(x, y);
    if (order != 0) return order;
    x = x->next;
    y = y->next;
  }
  return 0;
}

ListIndex::ListIndex(const lysc_node* list, const lyd_node* first_sibling) {
  for (const lyd_node* node = first_sibling; node != nullptr; node = node->next) {
    if (node->schema == list) entries_.push_back(node);
  }
  if (!lysc_is_userordered(list) && !std::is_sorted(entries_.begin(), entries_.end(), LessByKeys)) {
    SortByKeys(list, entries_);
  }
}

const lyd_node* ListIndex::Find(const std::string& key) const {
  if (by_key_.empty()) {
    by_key_.reserve(entries_.size());
    for (size_t i = 0; i < entries_.size(); ++i) by_key_.emplace(JoinedKey(entries_[i]), i);
  }
  const auto found = by_key_.find(key);
  if (found == by_key_.end()) return nullptr;
  found_last_ = found->second;
  return entries_[found_last_];
}

const lyd_node* ListIndex::FindNearby(const std::vector<std::string_view>& keys) const {
  for (const size_t i : {found_last_, found_last_ + 1, size_t{0}}) {
    if (i >= entries_.size() || !HasKeys(entries_[i], keys)) continue;
    found_last_ = i;
    return entries_[i];
  }
  return nullptr;
}

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
  return std::make_shared<const LoadedSnapshot>(std::move(schema), tree);
}

LoadedSnapshot::LoadedSnapshot(std::shared_ptr<const Schema> schema, lyd_node* tree)
    : schema_(std::move(schema)), tree_(lyd_first_sibling(tree)) {
  for (const lyd_node* node = tree_.get(); node != nullptr; node = node->next) {
    if (!IsListLike(node->schema)) top_[node->schema] = node;
  }
}

const lyd_node* LoadedSnapshot::Child(const lyd_node* parent, const lysc_node* node) const {
  if (parent == nullptr) {
    const auto entry = top_.find(node);
    return entry == top_.end() ? nullptr : entry->second;
  }
  // Most nodes have few children; where a long list stands among them, libyang's hash is asked.
  const lyd_node* first = ChildList(parent);
  int looked_at = 0;
  for (const lyd_node* child = first; child != nullptr; child = child->next) {
    if (child->schema == node) return child;
    if (++looked_at == 8) break;
  }
  lyd_node* found = nullptr;
  if (looked_at == 8) lyd_find_sibling_val(first, node, nullptr, 0, &found);
  return found;
}

const ListIndex& LoadedSnapshot::List(const lyd_node* parent, const lysc_node* list) const {
  static const ListIndex kEmpty;
  const ListId id{parent, list};
  if (last_list_ != nullptr && id == last_list_id_) return *last_list_;
  if (parent != nullptr && Child(parent, list) == nullptr) return kEmpty;
  std::unique_ptr<ListIndex>& index = lists_[id];
  if (index == nullptr) {
    index = std::make_unique<ListIndex>(list, parent == nullptr ? tree_.get() : ChildList(parent));
  }
  last_list_id_ = id;
  last_list_ = index.get();
  return *index;
}

std::vector<const lyd_node*> LoadedSnapshot::Instances(const lysc_node* node,
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
const LoadedSnapshot::Way& LoadedSnapshot::WayDown(const lysc_node* ancestor,
                                                   const lysc_node* node) const {
  const auto [found, is_new] = ways_.try_emplace({ancestor, node});
  Way& way = found->second;
  if (!is_new) return way;
  for (const lysc_node* step = node; step != ancestor && step != nullptr; step = DataParent(step)) {
    way.push_back(step);
  }
  std::reverse(way.begin(), way.end());
  return way;
}

void LoadedSnapshot::CollectInstances(const Way& way, size_t step, const lyd_node* parent,
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

const lyd_node* LoadedSnapshot::Counterpart(const lyd_node* node) const {
  const lyd_node* their_parent = lyd_parent(node);
  const lyd_node* parent = nullptr;
  if (their_parent != nullptr) {
    parent = Counterpart(their_parent);
    if (parent == nullptr) return nullptr;
  }
  if (IsListLike(node->schema)) return List(parent, node->schema).Find(JoinedKey(node));
  return Child(parent, node->schema);
}

}  // namespace confd
