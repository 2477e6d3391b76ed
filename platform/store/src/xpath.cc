#include "store/xpath.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <cctype>
#include <memory>

namespace store {
namespace {

bool IsNameCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' || c == '.';
}

const char* ModuleOfPrefix(const ly_ctx* context, const std::string& prefix) {
  uint32_t index = 0;
  while (const lys_module* module = ly_ctx_get_module_iter(context, &index)) {
    if (module->implemented != 0 && prefix == module->prefix) return module->name;
  }
  return nullptr;
}

// libyang wants module names before a colon. Literals are left alone, and so are the axes ("::").
std::string WithModuleNames(const ly_ctx* context, const std::string& expression) {
  std::string rewritten;
  size_t i = 0;
  while (i < expression.size()) {
    const char c = expression[i];
    if (c == '\'' || c == '"') {
      const size_t end = std::min(expression.find(c, i + 1), expression.size() - 1);
      rewritten.append(expression, i, end + 1 - i);
      i = end + 1;
      continue;
    }
    if (!IsNameCharacter(c)) {
      rewritten.push_back(c);
      ++i;
      continue;
    }
    size_t end = i;
    while (end < expression.size() && IsNameCharacter(expression[end])) ++end;
    const std::string name = expression.substr(i, end - i);
    const bool is_prefix =
        end + 1 < expression.size() && expression[end] == ':' && expression[end + 1] != ':';
    const char* module = is_prefix ? ModuleOfPrefix(context, name) : nullptr;
    rewritten += module != nullptr ? module : name;
    i = end;
  }
  return rewritten;
}

struct SetDeleter {
  void operator()(ly_set* set) const { ly_set_free(set, nullptr); }
};

std::string StringValue(const lyd_node* node) {
  if ((node->schema->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0) return lyd_get_value(node);
  std::string text;
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    text += StringValue(child);
  }
  return text;
}

}  // namespace

std::optional<std::string> EvaluateXPath(const Snapshot& configuration, const lyd_node* context,
                                         const char* expression) {
  ly_ctx* const libyang = configuration.schema().context();
  const std::string rewritten = WithModuleNames(libyang, expression);
  ly_set* nodes = nullptr;
  const LY_ERR outcome =
      lyd_find_xpath3(context, configuration.tree(), rewritten.c_str(), nullptr, &nodes);
  const std::unique_ptr<ly_set, SetDeleter> owner(nodes);
  ly_err_clean(libyang, nullptr);
  if (outcome != LY_SUCCESS) return std::nullopt;
  return nodes->count == 0 ? "" : StringValue(nodes->dnodes[0]);
}

}  // namespace store
