#include "message_table.h"

#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

constexpr char kPointsHeader[] = "| Point | Asked when | Function |";
constexpr char kPlaceholdersHeader[] = "| Filled in | Is |";
constexpr char kMessagesHeader[] = "| Message | Rule | Example |";
constexpr char kUnshownHeader[] = "| Message | Why not | Shown by |";

// An IPv4 address; no leading zeros.
const std::string kQuad = [] {
  const std::string octet = "(?:25[0-5]|2[0-4]\\d|1\\d\\d|[1-9]?\\d)";
  return octet + "(?:\\." + octet + "){3}";
}();

// What the plug-in may fill in.
const std::map<std::string, std::string>& Patterns() {
  static const std::map<std::string, std::string> patterns = {
      {"<interface>", "(?:l3|loopback|mgmt) [^ ]+"},
      {"<name>", ".+"},
      {"<vrf>", "[^ ]*"},
      {"<ipv4>", kQuad},
      {"<ipv6>", "[0-9a-f]{0,4}(?::[0-9a-f]{0,4}){2,7}(?:(?:\\.\\d{1,3}){3})?"},
      {"<length>", "(?:12[0-8]|1[01]\\d|[1-9]?\\d)"},
      {"<count>", "[1-9]\\d*"},
      {"<process>", "(?:0|[1-9]\\d{0,9})"},
      {"<signed process>", "(?:0|-?[1-9]\\d{0,9})"},
      {"<area>", "(?:0|[1-9]\\d{0,9})"},
      {"<dotted>", kQuad},
      {"<vlan>", "[1-9]\\d{0,3}"},
  };
  return patterns;
}

std::string Escape(const std::string& literal) {
  static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
  return std::regex_replace(literal, special, R"(\$&)");
}

// The regular expression of a message with placeholders.
std::string PatternOf(const std::string& message) {
  static const std::regex placeholder("<[^>]*>");
  std::string pattern;
  auto rest = message.cbegin();
  for (std::smatch match; std::regex_search(rest, message.cend(), match, placeholder);
       rest = match[0].second) {
    const auto known = Patterns().find(match.str());
    if (known == Patterns().end()) {
      throw std::runtime_error(match.str() + " in \"" + message + "\" is no known placeholder");
    }
    pattern += Escape(match.prefix()) + known->second;
  }
  return pattern + Escape(std::string(rest, message.cend()));
}

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

class Reader {
 public:
  void Read(const std::string& line) {
    ++number_;
    std::smatch match;
    static const std::regex heading("#+ .*");
    static const std::regex point_heading("### `([a-z0-9_]+)`");
    if (std::regex_match(line, heading)) {
      point_.reset();
      if (std::regex_match(line, match, point_heading)) point_ = match[1];
    }
    if (!line.starts_with("|")) {
      read_row_ = nullptr;
    } else if (read_row_ != nullptr) {
      if (!line.starts_with("|---")) (this->*read_row_)(line);
    } else {
      read_row_ = RowReader(line);
    }
  }

  MessageTable table;

 private:
  using ReadRow = void (Reader::*)(const std::string& line);

  // For the table that begins with `header`.
  ReadRow RowReader(const std::string& header) const {
    if (header == kPointsHeader) return &Reader::ReadPoint;
    if (header == kPlaceholdersHeader) return &Reader::ReadPlaceholder;
    if (header == kUnshownHeader) return &Reader::ReadUnshown;
    if (header != kMessagesHeader) Fail("unknown table");
    if (!point_) Fail("a table of messages stands below no point");
    return &Reader::ReadMessage;
  }

  void ReadPoint(const std::string& line) {
    static const std::regex row(R"(\| \[`([^`]+)`\]\(#[^)]+\) \| [^|]+ \| `\w+` \|)");
    table.points.push_back(Parts(line, row)[1]);
  }

  void ReadPlaceholder(const std::string& line) {
    static const std::regex row(R"(\| `(<[^`]+>)` \| [^|]+ \|)");
    table.placeholders.insert(Parts(line, row)[1]);
  }

  void ReadMessage(const std::string& line) {
    static const std::regex row(R"(\| `([^`]+)` \| [^|]+ \| `([^`]+)` \|)");
    const std::vector<std::string> parts = Parts(line, row);
    table.messages.push_back({*point_, parts[1], Words(parts[2]), number_});
  }

  void ReadUnshown(const std::string& line) {
    static const std::regex row(R"(\| `([^`]+)` \| [^|]+ \| `(\w+\.\w+)` in `([^`]+)` \|)");
    const std::vector<std::string> parts = Parts(line, row);
    table.unshown.push_back({parts[1], parts[2], parts[3], number_});
  }

  std::vector<std::string> Parts(const std::string& line, const std::regex& row) const {
    std::smatch match;
    if (!std::regex_match(line, match, row)) Fail("the row has another form");
    return {match.begin(), match.end()};
  }

  [[noreturn]] void Fail(const std::string& what) const {
    throw std::runtime_error(std::to_string(number_) + ": " + what);
  }

  int number_ = 0;
  std::optional<std::string> point_;  // of the heading above
  ReadRow read_row_ = nullptr;        // null outside of a table
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const MessageRow& row) {
  return out << "line " << row.line << ": " << row.point << ": " << row.message;
}

std::ostream& operator<<(std::ostream& out, const UnshownRow& row) {
  return out << "line " << row.line << ": " << row.test << ": " << row.message;
}

MessageTable ReadMessageTable(const std::string& markdown) {
  Reader reader;
  std::istringstream stream(markdown);
  for (std::string line; std::getline(stream, line);) reader.Read(line);
  return reader.table;
}

std::set<std::string> KnownPlaceholders() {
  std::set<std::string> names;
  for (const auto& [name, pattern] : Patterns()) names.insert(name);
  return names;
}

bool Matches(const std::string& message, const std::string& text) {
  static std::map<std::string, std::regex> compiled;  // making one takes longer than using it
  auto known = compiled.find(message);
  if (known == compiled.end()) {
    known = compiled.emplace(message, std::regex(PatternOf(message))).first;
  }
  return std::regex_match(text, known->second);
}
