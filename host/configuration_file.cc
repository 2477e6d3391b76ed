#include "configuration_file.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include "input_text.h"
#include "netconf_wrapper.h"
#include "one_line.h"

namespace ipvald {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

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

// The line number at the end of libyang's location text, such as `Data location "/a:b", line
// number 7.`, or 0.
size_t LineOf(std::string_view location) {
  constexpr std::string_view kMarker = "ine number ";  // "Line number" when it stands alone
  const size_t marker = location.rfind(kMarker);
  if (marker == std::string_view::npos) return 0;
  return std::strtoul(location.data() + marker + kMarker.size(), nullptr, 10);
}

// The quoted data path in libyang's location text, or "".
std::string_view PathOf(std::string_view location) {
  const size_t first = location.find('"');
  const size_t last = location.rfind('"');
  if (first == last) return "";
  return location.substr(first + 1, last - first - 1);
}

// A text as the parser gets it, and what its file is called.
struct Source {
  std::string name;
  std::string text;
  LYD_FORMAT format = LYD_JSON;
  size_t lines_removed = 0;  // before the beginning of `text`
};

size_t CountLines(std::string_view text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

// libyang counts the line ends before a JSON object twice, so they are taken away and added to its
// line numbers.
void RemoveLeadingBlanks(Source& source) {
  const size_t first = source.text.find_first_not_of(kBlanks);
  source.lines_removed = CountLines(std::string_view(source.text).substr(0, first));
  source.text.erase(0, first);
}

// libyang's last error as an InputError. A fault that shows only in the whole tree has no line, but
// a path.
InputError LibyangError(const ly_ctx* context, const Source& source) {
  const char* message = ly_errmsg(context);
  // Cut at once, since libyang may quote the whole file.
  std::string text = OneLine(message != nullptr ? message : "");
  if (text.empty()) text = "not a valid configuration";
  // The text holds no NUL byte, so this one is libyang's own at the end of its input.
  if (text == "Invalid character 0x0.") text = "Unexpected end-of-input.";

  const char* location = ly_errpath(context);
  if (location == nullptr) return LocatedError(source.name, 0, text);
  const size_t line = LineOf(location);
  if (line > 0) return LocatedError(source.name, source.lines_removed + line, text);
  const std::string_view path = PathOf(location);
  if (!path.empty()) text.append(" (").append(path).append(")");
  return LocatedError(source.name, 0, text);
}

Tree Parse(const ly_ctx* context, const Source& source) {
  ly_in* opened = nullptr;
  if (ly_in_new_memory(source.text.c_str(), &opened) != LY_SUCCESS) throw std::bad_alloc();
  const std::unique_ptr<ly_in, FreeInput> input(opened);

  lyd_node* parsed = nullptr;
  constexpr uint32_t kOptions = LYD_PARSE_ONLY | LYD_PARSE_STRICT | LYD_PARSE_NO_STATE;
  const LY_ERR result =
      lyd_parse_data(context, nullptr, input.get(), source.format, kOptions, 0, &parsed);
  Tree tree(parsed);
  if (result != LY_SUCCESS) throw LibyangError(context, source);

  // libyang stops at the end of the JSON object and does not look further.
  const size_t rest = source.text.find_first_not_of(kBlanks, ly_in_parsed(input.get()));
  if (rest != std::string::npos) {
    const size_t line = 1 + CountLines(std::string_view(source.text).substr(0, rest));
    throw LocatedError(source.name, source.lines_removed + line,
                       "text after the end of the configuration");
  }
  return tree;
}

}  // namespace

std::shared_ptr<const confd::Snapshot> ReadConfiguration(
    const std::shared_ptr<const confd::Schema>& schema, const std::string& file) {
  return ParseConfiguration(schema, DisplayName(file), ReadInputText(file, kMaxConfigurationSize));
}

std::shared_ptr<const confd::Snapshot> ParseConfiguration(
    const std::shared_ptr<const confd::Schema>& schema, const std::string& name, std::string text) {
  const InputFormat input_format = SniffFormat(name, text);
  RemoveByteOrderMark(text);
  CheckUtf8(name, text);

  Source source;
  source.name = name;
  source.text = std::move(text);
  if (input_format == InputFormat::kXml) {
    source.format = LYD_XML;
    source.text = RemoveXmlWrapper(name, std::move(source.text));
  } else {
    RemoveJsonWrapper(source.text);
    RemoveLeadingBlanks(source);
  }

  const QuietLibyang quiet;
  ly_ctx* context = schema->context();
  ly_err_clean(context, nullptr);
  Tree tree = Parse(context, source);

  // Validation adds nodes and may replace the first one, so the tree changes hands for its time.
  lyd_node* validated = tree.release();
  const LY_ERR result = lyd_validate_all(&validated, context, LYD_VALIDATE_NO_STATE, nullptr);
  tree.reset(validated);
  if (result != LY_SUCCESS) throw LibyangError(context, source);
  return confd::Snapshot::FromTree(schema, tree.release());
}

}  // namespace ipvald
