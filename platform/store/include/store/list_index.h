// Entries of a list in their order, and by their keys.
#ifndef STORE_LIST_INDEX_H_
#define STORE_LIST_INDEX_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct lyd_node;
struct lysc_node;

namespace store {

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

}  // namespace store

#endif  // STORE_LIST_INDEX_H_
