// Follows a configuration through the data model while it is read, before libyang parses it. What
// is in the wrong place, there twice or missing is said in the words of the format and at its own
// line, in a time that grows with the text only: libyang's grows with the square where nodes or
// entries are there many times.
#ifndef HOST_INPUT_SCHEMA_WALK_H_
#define HOST_INPUT_SCHEMA_WALK_H_

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "input_text.h"

struct ly_ctx;
struct lysc_node;

namespace ipvald {

/// A value as messages show it: cut when it is long, in double quotes unless it is a number or word
/// of JSON.
std::string ShownValue(std::string_view text, bool in_quotes);

class SchemaWalk {
 public:
  /// How closely to look. libyang judges values, so that it is enough to look at them once it
  /// refuses something, for words that tell what is wrong.
  enum class Depth { kStructure, kValues };

  SchemaWalk(const ly_ctx* context, const SourceText& source, InputFormat format, Depth depth);

  struct Child {
    const lysc_node* node = nullptr;
    size_t position = 0;  // among the children of its parent
  };

  /// The child of the open node that has that name.
  ///
  /// @param qualifier  in XML the namespace of the element; in JSON the module name before the
  ///                   colon, empty when there is none
  /// @throws InputError  there is none, with the right name where the data model has one
  Child Find(std::string_view qualifier, std::string_view name, size_t offset);

  /// A child of the open node with that name, in whatever module; null when there is none.
  const lysc_node* ChildNamed(std::string_view name) const;

  /// Notes that a child begins that may be there only once, such as a member of a JSON object.
  /// @throws InputError  it was there before
  void AddOnce(const Child& child, size_t offset);

  /// Goes down to a child, to an entry of it if it is a list.
  void Open(const Child& child, size_t offset);

  /// The value of the open leaf or leaf-list entry.
  ///
  /// @param shown  the value as messages show it
  /// @throws InputError  no such value, with Depth::kValues only; or a second leaf-list entry of
  ///                     this value
  void Value(std::string_view text, std::string_view shown);

  /// Goes up again.
  /// @throws InputError  the list entry has not all its keys, or the keys of an earlier one
  void Close();

  /// The open node, null at the top.
  const lysc_node* node() const { return stack_[depth_].child.node; }

  /// Where it begins.
  size_t begin() const { return stack_[depth_].begin; }

  bool looks_at_values() const { return depth_of_look_ == Depth::kValues; }

  /// A name as messages show it: <vrf> in XML, "vrf" in JSON.
  std::string Shown(std::string_view name) const;

  /// The name of the open node, likewise.
  std::string ShownNode() const;

 private:
  using Children = std::vector<const lysc_node*>;           // in schema order, keys first
  using Entries = std::unordered_map<std::string, size_t>;  // begins by keys

  // An open node. Reused for the next one at its level, so that nothing is allocated.
  struct Level {
    Child child;
    size_t begin = 0;
    const Children* children = nullptr;
    size_t found_last = 0;          // position of a child: the next one is near it in most texts
    std::vector<size_t> seen;       // begin + 1 of each child that was added once, or 0
    std::vector<std::string> keys;  // of a list entry
    std::map<const lysc_node*, Entries> entries;  // of the lists and leaf-lists below
  };

  const Children& ChildrenOf(const lysc_node* node);
  bool HasQualifier(const lysc_node* child, std::string_view qualifier) const;
  InputError UnknownChild(std::string_view qualifier, std::string_view name, size_t offset) const;
  std::string ShownChildren() const;
  std::string NearestChild(std::string_view name) const;
  void CheckKeyOrder() const;
  void CloseEntry();
  size_t AddEntry(const std::string& keys);
  InputError SecondEntry(const std::string& keys, size_t first) const;

  const ly_ctx* context_;
  const SourceText& source_;
  InputFormat format_;
  Depth depth_of_look_;
  std::unordered_map<const lysc_node*, Children> children_;
  std::vector<Level> stack_;
  size_t depth_ = 0;  // the open node is stack_[depth_], the top stack_[0]
};

}  // namespace ipvald

#endif  // HOST_INPUT_SCHEMA_WALK_H_
