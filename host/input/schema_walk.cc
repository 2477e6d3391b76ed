#include "schema_walk.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <utility>

#include "nearest_word.h"
#include "one_line.h"
#include "value_words.h"

namespace ipvald {
namespace {

bool IsListWithKeys(const lysc_node* node) {
  return node->nodetype == LYS_LIST && (node->flags & LYS_KEYLESS) == 0;
}

bool IsLeafLike(const lysc_node* node) { return (node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0; }

void AppendChildren(const lysc_node* parent, const lysc_module* module,
                    std::vector<const lysc_node*>& children) {
  const lysc_node* child = nullptr;
  while ((child = lys_getnext(child, parent, module, 0)) != nullptr) {
    if ((child->nodetype & (LYS_RPC | LYS_ACTION | LYS_NOTIF)) == 0) children.push_back(child);
  }
}

std::vector<const lysc_node*> TopNodes(const ly_ctx* context) {
  std::vector<const lysc_node*> nodes;
  uint32_t index = 0;
  while (const lys_module* module = ly_ctx_get_module_iter(context, &index)) {
    if (module->implemented != 0) AppendChildren(nullptr, module->compiled, nodes);
  }
  return nodes;
}

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

}  // namespace

std::string ShownValue(std::string_view text, bool in_quotes) {
  constexpr size_t kMaxShown = 60;  // bytes
  const std::string shown = Cut(text, kMaxShown);
  return in_quotes ? Quoted(shown) : shown;
}

SchemaWalk::SchemaWalk(const ly_ctx* context, const SourceText& source, InputFormat format,
                       Depth depth)
    : context_(context), source_(source), format_(format), depth_of_look_(depth) {
  const Children& top = children_.emplace(nullptr, TopNodes(context)).first->second;
  Level& level = stack_.emplace_back();
  level.children = &top;
  level.seen.assign(top.size(), 0);
}

const SchemaWalk::Children& SchemaWalk::ChildrenOf(const lysc_node* node) {
  const auto [found, is_new] = children_.try_emplace(node);
  if (is_new) AppendChildren(node, nullptr, found->second);
  return found->second;
}

bool SchemaWalk::HasQualifier(const lysc_node* child, std::string_view qualifier) const {
  if (format_ == InputFormat::kXml) return qualifier == child->module->ns;
  if (!qualifier.empty()) return qualifier == child->module->name;
  return node() != nullptr && child->module == node()->module;
}

SchemaWalk::Child SchemaWalk::Find(std::string_view qualifier, std::string_view name,
                                   size_t offset) {
  Level& level = stack_[depth_];
  const Children& children = *level.children;
  for (size_t step = 0; step < children.size(); ++step) {
    const size_t i = (level.found_last + step) % children.size();
    if (name != children[i]->name || !HasQualifier(children[i], qualifier)) continue;
    level.found_last = i;
    return {children[i], i};
  }
  throw UnknownChild(qualifier, name, offset);
}

const lysc_node* SchemaWalk::ChildNamed(std::string_view name) const {
  const Children& children = *stack_[depth_].children;
  const auto found = std::find_if(children.begin(), children.end(),
                                  [name](const lysc_node* child) { return name == child->name; });
  return found == children.end() ? nullptr : *found;
}

InputError SchemaWalk::UnknownChild(std::string_view qualifier, std::string_view name,
                                    size_t offset) const {
  const bool is_xml = format_ == InputFormat::kXml;
  const std::string local(name);
  const std::string given =
      Shown(is_xml || qualifier.empty() ? local : std::string(qualifier).append(":") + local);
  if (const lysc_node* child = ChildNamed(name)) {
    if (is_xml) {
      return source_.ErrorAt(offset, given + " is written <" + local + " xmlns=\"" +
                                         child->module->ns +
                                         "\"> here, or with a prefix of that namespace");
    }
    return source_.ErrorAt(
        offset, given + " is written " +
                    Shown(std::string(child->module->name).append(":").append(local)) + " here");
  }
  if (node() != nullptr && IsLeafLike(node())) {
    return source_.ErrorAt(offset, Shown(name) + " stands in " + ShownNode() +
                                       ", which has a value and nothing else; is </" +
                                       node()->name + "> missing?");
  }
  const bool module_is_known =
      qualifier.empty() ||
      (is_xml ? ly_ctx_get_module_implemented_ns(context_, std::string(qualifier).c_str())
              : ly_ctx_get_module_implemented(context_, std::string(qualifier).c_str())) != nullptr;
  if (!module_is_known) {
    return source_.ErrorAt(offset, given + ": no module of the data model has the " +
                                       (is_xml ? "namespace " : "name ") + Quoted(qualifier));
  }
  const std::string lacking = !qualifier.empty() || node() != nullptr ? ""
                              : is_xml ? " has no namespace (xmlns) and"
                                       : " has no module name and";
  return source_.ErrorAt(offset, given + lacking + " is not known in " + ShownNode() +
                                     ", which holds " + ShownChildren() + NearestChild(name));
}

// A question for a name that was probably mistyped.
std::string SchemaWalk::NearestChild(std::string_view name) const {
  constexpr size_t kMaxLength = 64;  // no name is longer
  if (name.size() > kMaxLength) return "";
  std::vector<std::string> known;
  for (const lysc_node* child : *stack_[depth_].children) known.emplace_back(child->name);
  const std::string nearest = NearestWord(name, known);
  return nearest.empty() ? "" : "; did you mean " + Shown(nearest) + "?";
}

// The names of the configuration below the open node, as they are written there.
std::string SchemaWalk::ShownChildren() const {
  constexpr size_t kMaxShown = 8;
  std::string shown;
  size_t count = 0;
  for (const lysc_node* child : *stack_[depth_].children) {
    if ((child->flags & LYS_CONFIG_R) != 0) continue;
    if (count > 0) shown += ", ";
    if (count++ == kMaxShown) return shown + "...";
    const bool has_module =
        format_ == InputFormat::kJson && (node() == nullptr || child->module != node()->module);
    shown += Shown((has_module ? std::string(child->module->name) + ":" : "") + child->name);
  }
  return shown.empty() ? "nothing" : shown;
}

void SchemaWalk::AddOnce(const Child& child, size_t offset) {
  size_t& seen = stack_[depth_].seen[child.position];
  if (seen == 0) {
    seen = offset + 1;
    return;
  }
  const std::string place = node() == nullptr ? "" : " in one " + ShownNode();
  throw source_.ErrorAt(offset, Shown(child.node->name) + " stands twice" + place +
                                    "; the first is on line " +
                                    std::to_string(source_.LineAt(seen - 1)));
}

void SchemaWalk::Open(const Child& child, size_t offset) {
  if (++depth_ == stack_.size()) stack_.emplace_back();
  Level& level = stack_[depth_];
  level.child = child;
  level.begin = offset;
  level.children = &ChildrenOf(child.node);
  level.found_last = 0;
  level.seen.assign(level.children->size(), 0);
  level.keys.clear();
  level.entries.clear();
}

void SchemaWalk::Value(std::string_view text, std::string_view shown) {
  const lysc_node* leaf = node();
  if (looks_at_values()) {
    const std::string fault = ValueFault(context_, leaf, text);
    if (!fault.empty()) {
      throw source_.ErrorAt(begin(), ShownNode() + " is " + std::string(shown) + fault);
    }
  }
  const bool is_key = lysc_is_key(leaf);
  if (is_key && format_ == InputFormat::kXml && looks_at_values()) CheckKeyOrder();
  if (!is_key && leaf->nodetype != LYS_LEAFLIST) return;
  // Different texts of one value are told apart only where it is known that something is wrong.
  std::string value = looks_at_values() ? CanonicalValue(context_, leaf, text) : std::string(text);
  if (is_key) {
    std::vector<std::string>& keys = stack_[depth_ - 1].keys;
    const size_t position = stack_[depth_].child.position;
    if (keys.size() <= position) keys.resize(position + 1);
    keys[position] = std::move(value);
  } else if (const size_t first = AddEntry(value); first != begin()) {
    throw SecondEntry("the value " + Quoted(text), first);
  }
}

// RFC 7950, section 7.8.5: in XML the keys of an entry stand in the order of the key statement.
void SchemaWalk::CheckKeyOrder() const {
  const Level& list = stack_[depth_ - 1];
  for (size_t i = 0; i < stack_[depth_].child.position; ++i) {
    if (list.seen[i] != 0) continue;
    throw source_.ErrorAt(begin(), ShownNode() + " is a key of " + Shown(list.child.node->name) +
                                       " and stands behind " + Shown((*list.children)[i]->name));
  }
}

void SchemaWalk::Close() {
  if (IsListWithKeys(node())) CloseEntry();
  --depth_;
}

void SchemaWalk::CloseEntry() {
  const Level& level = stack_[depth_];
  const Children& children = *level.children;
  std::string joined;
  size_t key_count = 0;
  for (; key_count < children.size() && lysc_is_key(children[key_count]); ++key_count) {
    if (level.seen[key_count] == 0) {
      throw source_.ErrorAt(
          begin(), "this " + ShownNode() + " lacks its key " + Shown(children[key_count]->name));
    }
    if (key_count > 0) joined += '\0';  // which no text holds
    joined += level.keys[key_count];
  }
  const size_t first = AddEntry(joined);
  if (first == begin()) return;
  std::string shown;
  for (size_t i = 0; i < key_count; ++i) {
    shown.append(i == 0 ? "" : ", ")
        .append(children[i]->name)
        .append(" ")
        .append(Quoted(level.keys[i]));
  }
  throw SecondEntry(shown, first);
}

// Notes the open entry of a list or leaf-list; returns where the first one with these keys begins.
size_t SchemaWalk::AddEntry(const std::string& keys) {
  return stack_[depth_ - 1].entries[node()].try_emplace(keys, begin()).first->second;
}

InputError SchemaWalk::SecondEntry(const std::string& keys, size_t first) const {
  return source_.ErrorAt(begin(), "a second " + ShownNode() + " with " + keys +
                                      "; the first is on line " +
                                      std::to_string(source_.LineAt(first)));
}

std::string SchemaWalk::Shown(std::string_view name) const {
  return format_ == InputFormat::kXml ? "<" + std::string(name) + ">" : Quoted(name);
}

std::string SchemaWalk::ShownNode() const {
  return node() == nullptr ? "the configuration" : Shown(node()->name);
}

}  // namespace ipvald
