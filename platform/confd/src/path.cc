#include "path.h"

#include <arpa/inet.h>
#include <libyang/libyang.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "confd_lib.h"
#include "errors.h"
#include "program_text.h"
#include "store/address_text.h"
#include "store/canonical_text.h"
#include "store/list_index.h"
#include "store/schema_node.h"
#include "value_text.h"

namespace confd {
namespace {

std::string KpathText(const confd_hkeypath_t* path, int length) {
  std::string text(static_cast<size_t>(confd_pp_kpath_len(nullptr, 0, path, length)), '\0');
  confd_pp_kpath_len(text.data(), static_cast<int>(text.size()) + 1, path, length);
  return text;
}

std::string KeysText(const confd_value_t* keys, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += " ";
    text += PrintKey(keys[i]);
  }
  return text;
}

// Whether arguments can stand behind `format` for its conversions. They do where a program wrote
// the format down, and behind a format that begins with a conversion, as no path does. A path that
// a program assembled and passes as the format has none: a "%" in it comes from a key.
bool ComesWithArguments(const char* format) { return *format == '%' || IsProgramText(format); }

constexpr size_t kUsualPathLength = 200;  // longer ones only take an allocation

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Length of the text in double quotes that `text` begins with, quotes included; 0 when it is not in
// quotes. A quote inside a key, as in 19"rack, is an ordinary character.
size_t QuotedLength(std::string_view text) {
  if (!text.starts_with('"')) return 0;
  for (size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      const bool ends_key = i + 1 == text.size() || IsBlank(text[i + 1]) || text[i + 1] == '}';
      return ends_key ? i + 1 : 0;
    }
  }
  return 0;
}

bool IsQuoted(std::string_view text) { return !text.empty() && QuotedLength(text) == text.size(); }

std::string Unquote(std::string_view text) {
  std::string plain;
  for (size_t i = 1; i + 1 < text.size(); ++i) {
    const bool escape =
        text[i] == '\\' && i + 2 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\');
    if (escape) ++i;
    plain.push_back(text[i]);
  }
  return plain;
}

// End of the key text that begins at `text`: the first "}" that ends the path or stands before "/",
// not inside quotes. Only where a list has several keys does a key also begin behind a blank.
size_t KeysEnd(std::string_view text, bool several) {
  bool at_key = true;
  for (size_t i = 0; i < text.size(); ++i) {
    if (IsBlank(text[i])) {
      at_key = at_key || several;
      continue;
    }
    if (const size_t quoted = at_key ? QuotedLength(text.substr(i)) : 0; quoted > 0) {
      i += quoted - 1;
    } else if (text[i] == '}' && (i + 1 == text.size() || text[i + 1] == '/')) {
      return i;
    }
    at_key = false;
  }
  return std::string_view::npos;
}

// Splits the text of several keys at blanks outside double quotes.
std::vector<std::string_view> SplitKeys(std::string_view text) {
  std::vector<std::string_view> keys;
  keys.reserve(MAXKEYLEN);
  for (text = Trim(text); !text.empty(); text = Trim(text)) {
    size_t length = QuotedLength(text);
    if (length == 0) length = std::min(text.find_first_of(" \t\n"), text.size());
    keys.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return keys;
}

bool HasOneKey(const lysc_node* list) {
  const lysc_node* second = lysc_node_child(list)->next;
  return second == nullptr || !lysc_is_key(second);
}

// Canonical keys of a list entry, joined; nothing when their number or a text does not fit.
std::optional<std::string> CanonicalKeys(const lysc_node* list,
                                         const std::vector<std::string_view>& parts) {
  const lysc_node* key = lysc_node_child(list);
  std::string joined;
  for (const std::string_view part : parts) {
    if (key == nullptr || !lysc_is_key(key)) return std::nullopt;
    const auto canonical =
        IsQuoted(part) ? store::CanonicalText(key, Unquote(part)) : store::CanonicalText(key, part);
    if (!canonical) return std::nullopt;
    store::JoinKey(joined, *canonical);
    key = key->next;
  }
  if (key != nullptr && lysc_is_key(key)) return std::nullopt;
  return joined;
}

class PathReader {
 public:
  PathReader(const store::Snapshot& configuration, LastPath& last, std::string_view text)
      : configuration_(configuration), last_(last), whole_(text), rest_(text) {}

  std::optional<store::Place> Read() {
    Resume();
    bool is_first = last_.steps.empty();
    if (is_first && rest_.starts_with('/')) rest_.remove_prefix(1);
    while (!rest_.empty()) {
      if (!is_first) rest_.remove_prefix(1);  // "/"
      is_first = false;
      if (!ReadStep()) return std::nullopt;
      if (is_plain_) last_.steps.push_back({whole_.size() - rest_.size(), place_});
    }
    return place_;
  }

 private:
  // Begins behind the steps that the last path had, too. What follows a step that is at the end or
  // before a "/" does not change its meaning; only a quote in a key may be ended by what follows.
  void Resume() {
    const auto has_step = [this](size_t end) {
      return whole_.starts_with(std::string_view(last_.text).substr(0, end)) &&
             (end == whole_.size() || whole_[end] == '/');
    };
    while (!last_.steps.empty() && !has_step(last_.steps.back().end)) last_.steps.pop_back();
    last_.text = whole_;
    place_.exists = true;
    if (last_.steps.empty()) return;
    place_ = last_.steps.back().place;
    rest_.remove_prefix(last_.steps.back().end);
  }

  bool ReadStep() {
    if (rest_.empty()) return Bad("a step is missing");
    const auto ends_name = [](char c) { return c == '/' || c == '{'; };
    const auto name_end =
        static_cast<size_t>(std::find_if(rest_.begin(), rest_.end(), ends_name) - rest_.begin());
    std::string_view name = rest_.substr(0, name_end);
    std::string_view prefix;
    if (const size_t colon = name.find(':'); colon != std::string_view::npos) {
      prefix = name.substr(0, colon);
      name = name.substr(colon + 1);
    }
    const lysc_node* schema = configuration_.schema().FindChild(place_.schema, prefix, name);
    if (schema == nullptr) return Bad("unknown node");
    if (place_.without_keys) return Bad("keys are missing");
    rest_.remove_prefix(name_end);
    const lyd_node* parent = place_.exists ? place_.node : nullptr;
    const bool parent_exists = place_.exists;
    place_.schema = schema;
    place_.parent = parent;
    if (rest_.starts_with('{')) {
      if (schema->nodetype != LYS_LIST) return Bad("keys at a node that is no list");
      if (!ReadEntry(schema, parent, parent_exists)) return false;
    } else if (store::IsListLike(schema)) {
      place_.node = nullptr;
      place_.without_keys = true;
    } else {
      place_.node = parent_exists ? configuration_.Child(parent, schema) : nullptr;
      place_.exists = place_.node != nullptr;
    }
    return true;
  }

  bool ReadEntry(const lysc_node* list, const lyd_node* parent, bool parent_exists) {
    rest_.remove_prefix(1);
    const size_t end = KeysEnd(rest_, !HasOneKey(list));
    if (end == std::string_view::npos) return Bad("\"}\" is missing");
    const std::string_view text = rest_.substr(0, end);
    const auto texts = HasOneKey(list) ? std::vector{Trim(text)} : SplitKeys(text);
    rest_.remove_prefix(end + 1);
    is_plain_ = is_plain_ && text.find('"') == std::string_view::npos;
    static const store::ListIndex kNone;
    const store::ListIndex& entries = parent_exists ? configuration_.List(parent, list) : kNone;
    const bool plain = std::none_of(texts.begin(), texts.end(), IsQuoted);
    place_.node = plain ? entries.FindNearby(texts) : nullptr;
    if (place_.node == nullptr) {
      const auto keys = CanonicalKeys(list, texts);
      if (!keys) return Bad("keys do not fit the list");
      place_.node = entries.Find(*keys);
    }
    place_.exists = place_.node != nullptr;
    return true;
  }

  bool Bad(const char* why) {
    Fail(CONFD_ERR_BADPATH, std::string(why) + " in path " + std::string(whole_));
    return false;
  }

  const store::Snapshot& configuration_;
  LastPath& last_;
  std::string_view whole_;
  std::string_view rest_;
  store::Place place_;
  bool is_plain_ = true;  // no quote was met in a key
};

}  // namespace

FormattedPath::FormattedPath(const char* format, va_list args) {
  text_.reserve(kUsualPathLength);
  is_valid_ = Append(format, args);
  if (!is_valid_) text_.clear();
}

bool FormattedPath::Append(const char* format, va_list args) {
  for (const char* c = format;; ++c) {
    const char* conversion = strchrnul(c, '%');
    text_.append(c, conversion);
    if (*conversion == '\0') return true;
    c = conversion + 1;
    if (*c == '%') {
      text_.push_back('%');
      continue;
    }
    if (!ComesWithArguments(format)) {
      Fail(CONFD_ERR_BADPATH, std::string("a key is taken for a conversion in ") + format);
      return false;
    }
    const bool counted = *c == '*';
    const int count = counted ? va_arg(args, int) : 1;
    if (counted) ++c;
    if (*c == 'x') {
      text_ += KeysText(va_arg(args, const confd_value_t*), count);
    } else if (*c == 'h') {
      const auto* kpath = va_arg(args, const confd_hkeypath_t*);
      text_ += KpathText(kpath, counted ? count : kpath->len);
    } else if (!counted && *c == 's') {
      text_ += va_arg(args, const char*);
    } else if (!counted && *c == 'd') {
      text_ += std::to_string(va_arg(args, int));
    } else if (!counted && *c == 'u') {
      text_ += std::to_string(va_arg(args, unsigned));
    } else if (!counted && strncmp(c, "ip4", 3) == 0) {
      text_ += store::AddressText(AF_INET, va_arg(args, const in_addr*));
      c += 2;
    } else if (!counted && strncmp(c, "ip6", 3) == 0) {
      text_ += store::AddressText(AF_INET6, va_arg(args, const in6_addr*));
      c += 2;
    } else {
      Fail(CONFD_ERR_BADPATH, std::string("unknown conversion in path format ") + format);
      return false;
    }
  }
}

std::optional<store::Place> FindPlace(SearchedSnapshot& configuration, std::string_view text) {
  return PathReader(*configuration.snapshot, configuration.last_path, text).Read();
}

std::optional<store::Place> FindPlace(const store::Snapshot& snapshot, std::string_view text) {
  LastPath none;
  return PathReader(snapshot, none, text).Read();
}

}  // namespace confd
