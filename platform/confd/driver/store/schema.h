// The compiled data model, prepared for walking by name.
#ifndef PLATFORM_CONFD_SCHEMA_H_
#define PLATFORM_CONFD_SCHEMA_H_

#include <libyang/libyang.h>

#include <deque>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "confd/store.h"
#include "tags.h"

namespace confd {

/// Nodes below one node, or the top-level nodes; choices and cases are looked through.
using SchemaChildren = std::vector<const lysc_node*>;

class LoadedSchema : public Schema {
 public:
  explicit LoadedSchema(const std::filesystem::path& yang_dir);

  ly_ctx* context() const override { return context_.get(); }
  const std::vector<ValidationPoint>& validation_points() const override { return points_; }
  xml_tag tag(const lysc_node* node) const override { return FactsOf(node).tag; }

  const TagTable& texts() const { return texts_; }
  const char* NamespacePrefix(uint32_t ns) const;

  /// Children in schema order; top-level nodes for null.
  const SchemaChildren& Children(const lysc_node* parent) const;

  /// The child of that name. An empty `prefix` matches any module, otherwise it is a module's
  /// prefix or name.
  /// @returns null when there is none, or more than one.
  const lysc_node* FindChild(const lysc_node* parent, std::string_view prefix,
                             std::string_view name) const;

 private:
  // What is asked of a node for every instance that is visited.
  struct NodeFacts {
    xml_tag tag;
    SchemaChildren children;
  };

  struct ContextDeleter {
    void operator()(ly_ctx* context) const { ly_ctx_destroy(context); }
  };

  static const NodeFacts& FactsOf(const lysc_node* node) {
    return *static_cast<const NodeFacts*>(node->priv);
  }

  void LoadModules(const std::filesystem::path& yang_dir);
  void AddChildren(const lysc_node* parent, const lysc_module* module, SchemaChildren& children);
  void AddNode(const lysc_node* node, int depth);
  void AddPoints(const lysc_node* node);
  const lysc_node* ResolveDependency(const lysc_node* node, std::string_view path) const;

  std::unique_ptr<ly_ctx, ContextDeleter> context_;
  TagTable texts_;
  std::unordered_map<uint32_t, const char*> prefixes_;  // by namespace number
  SchemaChildren top_;
  std::deque<NodeFacts> facts_;  // each node has a pointer to its own
  std::vector<ValidationPoint> points_;
};

/// Of the schemas that are alive the one loaded last, null when there is none: what functions
/// without a transaction name tags by.
std::shared_ptr<const LoadedSchema> CurrentSchema();

/// The same object with its wider interface.
inline const LoadedSchema& AsLoaded(const Schema& schema) {
  return static_cast<const LoadedSchema&>(schema);
}

/// Whether instances of the node are told apart by a key: lists and leaf-lists.
inline bool IsListLike(const lysc_node* node) {
  return (node->nodetype & (LYS_LIST | LYS_LEAFLIST)) != 0;
}

/// Parent data node of a schema node, choices and cases looked through; null at the top.
const lysc_node* DataParent(const lysc_node* node);

/// The key leaves of a list in the order of its key statement.
std::vector<const lysc_node*> KeyLeaves(const lysc_node* list);

}  // namespace confd

#endif  // PLATFORM_CONFD_SCHEMA_H_
