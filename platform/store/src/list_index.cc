#include "store/list_index.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <utility>

#include "store/schema_node.h"
#include "value_order.h"

namespace store {
namespace {

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

bool HasKeys(const lyd_node* entry, const std::vector<std::string_view>& keys) {
  const lyd_node* key = lyd_child(entry);
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
  for (const lyd_node* key = lyd_child(entry); key != nullptr && lysc_is_key(key->schema);
       key = key->next) {
    JoinKey(joined, lyd_get_value(key));
  }
  return joined;
}

int CompareEntries(const lyd_node* a, const lyd_node* b) {
  if (a->schema->nodetype == LYS_LEAFLIST) return CompareLeafValues(a, b);
  const lyd_node* x = lyd_child(a);
  const lyd_node* y = lyd_child(b);
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

}  // namespace store
