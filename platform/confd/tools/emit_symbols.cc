// Writes the C headers that a schema compiler would generate: for every module with data nodes a
// file MODULE.h with the numbers of its namespace, nodes and enum labels.
//
//   emit_symbols YANG_DIR OUTPUT_DIR

#include <libyang/libyang.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

#include "store/error.h"
#include "store/schema.h"
#include "store/tags.h"

namespace {

std::string Symbol(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '-' || c == '.'; }, '_');
  return text;
}

struct ModuleSymbols {
  const lys_module* module = nullptr;
  std::map<std::string, uint32_t> numbers;  // symbol without the prefix to number
};

void CollectEnum(const lysc_type* type, ModuleSymbols& symbols) {
  if (type->basetype != LY_TYPE_ENUM) return;
  const auto* enumeration = reinterpret_cast<const lysc_type_enum*>(type);
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(enumeration->enums, i) {
    symbols.numbers[Symbol(enumeration->enums[i].name)] =
        static_cast<uint32_t>(enumeration->enums[i].value);
  }
}

void Collect(const lysc_node* parent, const lysc_module* module,
             std::map<std::string, ModuleSymbols>& modules) {
  const lysc_node* node = nullptr;
  while ((node = lys_getnext(node, parent, module, 0)) != nullptr) {
    ModuleSymbols& symbols = modules[node->module->name];
    symbols.module = node->module;
    symbols.numbers[Symbol(node->name)] = store::TagOf(node->name);
    if ((node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0) {
      CollectEnum(reinterpret_cast<const lysc_node_leaf*>(node)->type, symbols);
    } else {
      Collect(node, nullptr, modules);
    }
  }
}

void Write(const ModuleSymbols& symbols, const std::filesystem::path& directory) {
  const std::string prefix = Symbol(symbols.module->prefix);
  const std::string guard = "GENERATED_" + Symbol(symbols.module->name) + "_H";
  std::ofstream out(directory / (std::string(symbols.module->name) + ".h"));
  out << "// Generated from the YANG module " << symbols.module->name << ".\n"
      << "#ifndef " << guard << "\n#define " << guard << "\n\n"
      << "#define " << prefix << "__ns " << store::TagOf(symbols.module->ns) << "\n"
      << "#define " << prefix << "__ns_id \"" << symbols.module->ns << "\"\n"
      << "#define " << prefix << "__ns_uri \"" << symbols.module->ns << "\"\n\n";
  for (const auto& [name, number] : symbols.numbers) {
    out << "#define " << prefix << "_" << name << " " << number << "\n";
  }
  out << "\n#endif\n";
  out.close();
  if (!out) throw store::Error("cannot write into " + directory.string());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) {
    std::cerr << "usage: emit_symbols YANG_DIR OUTPUT_DIR\n";
    return 2;
  }
  const auto schema = store::Schema::Load(argv[1]);
  std::filesystem::create_directories(argv[2]);
  std::map<std::string, ModuleSymbols> modules;
  const lys_module* module = nullptr;
  uint32_t index = 0;
  while ((module = ly_ctx_get_module_iter(schema->context(), &index)) != nullptr) {
    if (module->implemented != 0) Collect(nullptr, module->compiled, modules);
  }
  for (const auto& [name, symbols] : modules) Write(symbols, argv[2]);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "emit_symbols: " << error.what() << "\n";
  return 1;
}
