#include "configuration_file.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "json_configuration.h"
#include "one_line.h"
#include "resources.h"
#include "schema_walk.h"
#include "store/libyang_fault.h"
#include "xml_configuration.h"

namespace ipvald {
namespace {

// libyang prints what it finds wrong unless told otherwise, so it is told for the time of one
// parse.
class QuietLibyang {
 public:
  QuietLibyang() : previous_(ly_log_options(LY_LOSTORE_LAST)) {}
  ~QuietLibyang() { ly_log_options(previous_); }
  QuietLibyang(const QuietLibyang&) = delete;
  QuietLibyang& operator=(const QuietLibyang&) = delete;

 private:
  uint32_t previous_;
};

struct FreeTree {
  void operator()(lyd_node* tree) const { lyd_free_all(tree); }
};
using Tree = std::unique_ptr<lyd_node, FreeTree>;

struct FreeInput {
  void operator()(ly_in* input) const { ly_in_free(input, 0); }
};

// A text as libyang gets it.
struct ParserInput {
  const std::string& name;  // of the file
  std::string text;
  LYD_FORMAT format;
  size_t lines_removed = 0;  // before the beginning of `text`
};

// libyang counts the line ends before a JSON object twice, so they are taken away and added to its
// line numbers.
void RemoveLeadingBlanks(ParserInput& input) {
  const size_t first = input.text.find_first_not_of(kBlanks);
  const auto begin = input.text.begin();
  input.lines_removed =
      static_cast<size_t>(std::count(begin, begin + static_cast<ptrdiff_t>(first), '\n'));
  input.text.erase(0, first);
}

// libyang's last fault as an InputError. A fault that shows only in the whole tree has no line, but
// a path.
InputError LastError(const ly_ctx* context, const ParserInput& input) {
  const store::LibyangFault fault = store::LastFault(context);
  std::string text = OneLine(fault.message);
  if (text.empty()) text = "not a valid configuration";
  if (fault.line > 0) return LocatedError(input.name, input.lines_removed + fault.line, text);
  if (!fault.path.empty()) text.append(" (").append(fault.path).append(")");
  return LocatedError(input.name, 0, text);
}

Tree Parse(const ly_ctx* context, const ParserInput& input) {
  ly_in* opened = nullptr;
  if (ly_in_new_memory(input.text.c_str(), &opened) != LY_SUCCESS) throw std::bad_alloc();
  const std::unique_ptr<ly_in, FreeInput> in(opened);

  lyd_node* parsed = nullptr;
  constexpr uint32_t kOptions = LYD_PARSE_ONLY | LYD_PARSE_STRICT | LYD_PARSE_NO_STATE;
  const LY_ERR result =
      lyd_parse_data(context, nullptr, in.get(), input.format, kOptions, 0, &parsed);
  Tree tree(parsed);
  if (result != LY_SUCCESS) throw LastError(context, input);
  return tree;
}

// Looks through the text and makes of it what libyang reads.
ParserInput Prepare(const ly_ctx* context, const SourceText& source, InputFormat format,
                    SchemaWalk::Depth depth) {
  if (format == InputFormat::kXml) {
    return {source.name, XmlConfiguration(context, source, depth), LYD_XML};
  }
  ParserInput input{source.name, JsonConfiguration(context, source, depth), LYD_JSON};
  RemoveLeadingBlanks(input);
  return input;
}

// libyang does not stand it when memory runs out, so it has to be there beforehand.
void RequireMemory(const SourceText& source) {
  constexpr size_t kPerByte = 64;  // of a text; the most that was seen is 60
  if (!HasMemory(kPerByte * source.text.size())) throw std::bad_alloc();
}

Tree ParseValid(ly_ctx* context, const SourceText& source, InputFormat format) {
  const ParserInput input = Prepare(context, source, format, SchemaWalk::Depth::kStructure);
  Tree tree = Parse(context, input);
  // Validation adds nodes and may replace the first one, so the tree changes hands for its time.
  lyd_node* validated = tree.release();
  const LY_ERR result = lyd_validate_all(&validated, context, LYD_VALIDATE_NO_STATE, nullptr);
  tree.reset(validated);
  if (result != LY_SUCCESS) throw LastError(context, input);
  return tree;
}

}  // namespace

Configuration ReadConfiguration(const std::shared_ptr<const store::Schema>& schema,
                                const std::string& file) {
  return ParseConfiguration(schema, DisplayName(file), ReadInputText(file, kMaxConfigurationSize));
}

Configuration ParseConfiguration(const std::shared_ptr<const store::Schema>& schema,
                                 const std::string& name, std::string text) {
  const InputFormat format = SniffFormat(name, text);
  RemoveByteOrderMark(text);
  CheckUtf8(name, text);
  SourceText source{name, std::move(text)};

  RequireMemory(source);
  const QuietLibyang quiet;
  ly_ctx* context = schema->context();
  ly_err_clean(context, nullptr);
  try {
    auto snapshot =
        store::Snapshot::FromTree(schema, ParseValid(context, source, format).release());
    return {std::move(snapshot), std::move(source)};
  } catch (const InputError&) {
    // Once more with a look at every value, for the fault that comes first in the text, in words
    // that help.
    Prepare(context, source, format, SchemaWalk::Depth::kValues);
    throw;
  }
}

}  // namespace ipvald
