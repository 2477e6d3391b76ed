#include "store/schema_node.h"

namespace store {

const lysc_node* DataParent(const lysc_node* node) {
  const lysc_node* parent = node->parent;
  while (parent != nullptr && (parent->nodetype & (LYS_CHOICE | LYS_CASE)) != 0) {
    parent = parent->parent;
  }
  return parent;
}

std::vector<const lysc_node*> KeyLeaves(const lysc_node* list) {
  std::vector<const lysc_node*> keys;
  for (const lysc_node* child = lysc_node_child(list); child != nullptr && lysc_is_key(child);
       child = child->next) {
    keys.push_back(child);
  }
  return keys;
}

std::string SchemaPath(const lysc_node* node) {
  std::string path;
  for (const lysc_node* step = node; step != nullptr; step = DataParent(step)) {
    path.insert(0, step->name).insert(0, 1, '/');
  }
  return path;
}

}  // namespace store
