#include "store/schema.h"

#include <cstring>
#include <new>
#include <set>
#include <string>

#include "libyang_plugins.h"
#include "out_of_memory.h"
#include "store/error.h"
#include "store/libyang_fault.h"
#include "store/schema_node.h"

namespace store {
namespace {

// In the order of loading.
std::vector<std::weak_ptr<const Schema>>& Registry() {
  static std::vector<std::weak_ptr<const Schema>> schemas;
  return schemas;
}

std::string LibyangMessage(const ly_ctx* context) {
  const std::string_view message = LastFault(context).message;
  return std::string(message.empty() ? "unknown error of libyang" : message);
}

// Module names of the files NAME.yang and NAME@REVISION.yang of a folder.
std::set<std::string> ModuleNames(const std::filesystem::path& yang_dir) {
  std::set<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(yang_dir, error)) {
    if (entry.path().extension() != ".yang") continue;
    const std::string stem = entry.path().stem().string();
    names.insert(stem.substr(0, stem.find('@')));
  }
  if (error == std::errc::not_enough_memory) throw std::bad_alloc();
  if (error)
    throw Error("cannot read the YANG folder " + yang_dir.string() + ": " + error.message());
  if (names.empty()) throw Error("no YANG module in " + yang_dir.string());
  return names;
}

bool HasName(const lysc_node* node, std::string_view prefix, std::string_view name) {
  if (std::strncmp(node->name, name.data(), name.size()) != 0) return false;
  if (node->name[name.size()] != '\0') return false;
  return prefix.empty() || prefix == node->module->prefix || prefix == node->module->name;
}

}  // namespace

std::shared_ptr<const Schema> Schema::Load(const std::filesystem::path& yang_dir) {
  std::shared_ptr<const Schema> schema(new Schema(yang_dir));
  Registry().push_back(schema);
  return schema;
}

std::shared_ptr<const Schema> Schema::Current() {
  auto& schemas = Registry();
  while (!schemas.empty() && schemas.back().expired()) schemas.pop_back();
  return schemas.empty() ? nullptr : schemas.back().lock();
}

Schema::Schema(const std::filesystem::path& yang_dir) {
  LoadModules(yang_dir);
  const lys_module* module = nullptr;
  uint32_t index = 0;
  while ((module = ly_ctx_get_module_iter(context_.get(), &index)) != nullptr) {
    if (module->implemented == 0) continue;
    prefixes_[texts_.Add(module->ns)] = module->prefix;
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(module->identities, i) { texts_.Add(module->identities[i].name); }
    AddChildren(nullptr, module->compiled, top_);
  }
  for (const lysc_node* node : top_) AddNode(node, 1);
  for (const lysc_node* node : top_) AddPoints(node);
}

void Schema::LoadModules(const std::filesystem::path& yang_dir) {
  ly_log_options(LY_LOSTORE_LAST);  // messages are read from the context, nothing is printed
  const std::set<std::string> names = ModuleNames(yang_dir);
  ly_ctx* context = nullptr;
  LY_ERR result = ly_ctx_new(nullptr, LY_CTX_DISABLE_SEARCHDIR_CWD, &context);
  context_.reset(context);
  // ly_ctx_new itself would take a colon in the name for the end of one folder and the beginning of
  // another.
  if (result == LY_SUCCESS) result = ly_ctx_set_searchdir(context, yang_dir.c_str());
  if (result != LY_SUCCESS) {
    ThrowIfOutOfMemory(result);
    throw Error("cannot read the YANG folder " + yang_dir.string());
  }
  RegisterLibyangPlugins();
  for (const std::string& name : names) {
    if (ly_ctx_load_module(context, name.c_str(), nullptr, nullptr) == nullptr) {
      throw Error("YANG module " + name + ": " + LibyangMessage(context));
    }
  }
}

void Schema::AddChildren(const lysc_node* parent, const lysc_module* module,
                         SchemaChildren& children) {
  const lysc_node* child = nullptr;
  while ((child = lys_getnext(child, parent, module, 0)) != nullptr) {
    if ((child->nodetype & (LYS_RPC | LYS_ACTION | LYS_NOTIF)) == 0) children.push_back(child);
  }
}

void Schema::AddNode(const lysc_node* node, int depth) {
  if (IsListLike(node)) ++depth;  // an entry takes a second element of a keypath
  if (depth > kMaxPathElements)
    throw Error(SchemaPath(node) + " is deeper than a keypath can hold");
  if (node->nodetype == LYS_LIST && KeyLeaves(node).size() > kMaxListKeys) {
    throw Error(SchemaPath(node) + " has more keys than a keypath can hold");
  }
  NodeFacts& facts = facts_.emplace_back();
  const_cast<lysc_node*>(node)->priv = &facts;
  facts.tag = {texts_.Add(node->name), TagOf(node->module->ns)};
  if ((node->nodetype & (LYS_CONTAINER | LYS_LIST)) == 0) return;
  AddChildren(node, nullptr, facts.children);
  for (const lysc_node* child : facts.children) AddNode(child, depth + 1);
}

// Dependencies may name any node of the model, so all nodes are known before the first point is
// added.
void Schema::AddPoints(const lysc_node* node) {
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(node->exts, i) {
    const lysc_ext_instance& extension = node->exts[i];
    if (std::string_view(extension.def->name) != "validate" ||
        std::string_view(extension.def->module->name) != "tailf-common") {
      continue;
    }
    const auto* statement = static_cast<const ValidateStatement*>(extension.compiled);
    ValidationPoint point;
    point.id = extension.argument;
    point.opaque = statement->opaque;
    point.call_once = statement->call_once;
    point.priority = statement->priority;
    point.node = node;
    for (const std::string& path : statement->dependencies) {
      point.dependencies.push_back({ResolveDependency(node, path), path.starts_with('/')});
    }
    points_.push_back(std::move(point));
  }
  for (const lysc_node* child : Children(node)) AddPoints(child);
}

// Steps are names, "." and "..", separated by "/"; a leading "/" starts at the top.
const lysc_node* Schema::ResolveDependency(const lysc_node* node, std::string_view path) const {
  const std::string whole(path);
  const lysc_node* current = node;
  if (!path.empty() && path.front() == '/') {
    current = nullptr;
    path.remove_prefix(1);
  }
  while (!path.empty()) {
    const size_t slash = path.find('/');
    const std::string_view step = path.substr(0, slash);
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    if (step == ".") continue;
    if (step == "..") {
      current = current == nullptr ? nullptr : DataParent(current);
      continue;
    }
    const size_t colon = step.find(':');
    const bool prefixed = colon != std::string_view::npos;
    current = FindChild(current, prefixed ? step.substr(0, colon) : std::string_view(),
                        prefixed ? step.substr(colon + 1) : step);
    if (current == nullptr) break;
  }
  if (current == nullptr) {
    throw Error("dependency \"" + whole + "\" of a validation point at " + SchemaPath(node) +
                " names no node");
  }
  return current;
}

const char* Schema::NamespacePrefix(uint32_t ns) const {
  const auto entry = prefixes_.find(ns);
  return entry == prefixes_.end() ? nullptr : entry->second;
}

const SchemaChildren& Schema::Children(const lysc_node* parent) const {
  return parent == nullptr ? top_ : FactsOf(parent).children;
}

const lysc_node* Schema::FindChild(const lysc_node* parent, std::string_view prefix,
                                   std::string_view name) const {
  const lysc_node* found = nullptr;
  for (const lysc_node* child : Children(parent)) {
    if (!HasName(child, prefix, name)) continue;
    if (found != nullptr) return nullptr;
    found = child;
  }
  return found;
}

}  // namespace store
