// What a path names in a configuration.
#ifndef STORE_PLACE_H_
#define STORE_PLACE_H_

struct lyd_node;
struct lysc_node;

namespace store {

/// A path that fits the data model, looked up in a configuration.
struct Place {
  const lysc_node* schema = nullptr;  // null: the root
  const lyd_node* node = nullptr;     // null where absent, and of a list without keys
  const lyd_node* parent = nullptr;   // of a list without keys; null at the top or when absent
  bool without_keys = false;          // the path ends at a list without keys
  bool exists = false;                // the node, or all that is above a list without keys
};

}  // namespace store

#endif  // STORE_PLACE_H_
