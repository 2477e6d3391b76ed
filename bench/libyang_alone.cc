// libyang_alone YANG_DIR FILE: what libyang needs to load the data model and to parse and validate
// a configuration, and nothing else. check_growth.py measures `ipvald check` beside it.
#include <libyang/libyang.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// Exit status 0 when the file is valid, 1 when not, 2 when the data model cannot be loaded.
int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: libyang_alone YANG_DIR FILE\n");
    return 2;
  }
  ly_ctx* context = nullptr;
  if (ly_ctx_new(argv[1], LY_CTX_NO_YANGLIBRARY, &context) != LY_SUCCESS) return 2;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    const std::string file = entry.path().stem();
    const std::string name = file.substr(0, file.find('@'));
    if (entry.path().extension() != ".yang") continue;
    if (ly_ctx_load_module(context, name.c_str(), nullptr, nullptr) == nullptr) return 2;
  }
  std::stringstream text;
  text << std::ifstream(argv[2]).rdbuf();
  lyd_node* tree = nullptr;
  const LY_ERR result =
      lyd_parse_data_mem(context, text.str().c_str(), LYD_JSON,
                         LYD_PARSE_STRICT | LYD_PARSE_NO_STATE, LYD_VALIDATE_NO_STATE, &tree);
  lyd_free_all(tree);
  ly_ctx_destroy(context);
  return result == LY_SUCCESS ? 0 : 1;
}
