// The compiled data model, prepared for walking by name, with its validation points.
#ifndef STORE_SCHEMA_H_
#define STORE_SCHEMA_H_

#include <libyang/libyang.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/tags.h"

namespace store {

/// One path of a tailf:dependency statement, resolved.
struct Dependency {
  const lysc_node* node;
  bool absolute;  // written as an absolute path: a change there concerns every instance
};

/// One tailf:validate statement, attached to `node`.
struct ValidationPoint {
  std::string id;
  std::string opaque;  // name under which the plug-in knows the point
  bool call_once = false;
  int priority = 0;
  std::vector<Dependency> dependencies;
  const lysc_node* node = nullptr;
};

/// Most elements of a path, where an entry of a list has one beside the list's own, and most keys
/// of a list. A data model with more is refused.
inline constexpr int kMaxPathElements = 19;
inline constexpr size_t kMaxListKeys = 8;

/// Nodes below one node, or the top-level nodes; choices and cases are looked through.
using SchemaChildren = std::vector<const lysc_node*>;

/// The compiled data model with its tags and validation points. Immutable.
class Schema final {
 public:
  /// Loads every module in `yang_dir`. Of the schemas that are alive, the one loaded last is the
  /// current one.
  /// @throws Error  no module there, one does not compile, two names have one tag, a path or the
  /// keys of a list do not fit a keypath, or a dependency names no node.
  static std::shared_ptr<const Schema> Load(const std::filesystem::path& yang_dir);

  /// Of the schemas that are alive the one loaded last, null when there is none: what functions
  /// without a transaction name tags by.
  static std::shared_ptr<const Schema> Current();

  Schema(const Schema&) = delete;
  Schema& operator=(const Schema&) = delete;

  ly_ctx* context() const { return context_.get(); }

  /// In schema order of their nodes, then statement order.
  const std::vector<ValidationPoint>& validation_points() const { return points_; }

  /// Tag and namespace numbers of a node.
  NodeTag tag(const lysc_node* node) const { return FactsOf(node).tag; }

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
    NodeTag tag;
    SchemaChildren children;
  };

  struct ContextDeleter {
    void operator()(ly_ctx* context) const { ly_ctx_destroy(context); }
  };

  explicit Schema(const std::filesystem::path& yang_dir);

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

}  // namespace store

#endif  // STORE_SCHEMA_H_
