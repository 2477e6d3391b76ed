#include "netconf_wrapper.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "configuration_file.h"
#include "input_text.h"
#include "xml_scanner.h"

namespace ipvald {
namespace {

using Kind = XmlPiece::Kind;

constexpr std::string_view kBaseNamespace = "urn:ietf:params:xml:ns:netconf:base:1.0";
constexpr std::string_view kBlanks = " \t\r\n";

size_t LineAt(std::string_view text, size_t offset) {
  return 1 + static_cast<size_t>(
                 std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(offset), '\n'));
}

void Blank(std::string& text, size_t begin, size_t end) {
  for (size_t i = begin; i < end; ++i) {
    if (text[i] != '\n') text[i] = ' ';
  }
}

// Finds the wrapper elements around a configuration and undoes them.
class XmlUnwrapper {
 public:
  XmlUnwrapper(const std::string& name, std::string text)
      : name_(name), text_(std::move(text)), scanner_(text_) {}

  std::string Unwrap() {
    for (;;) {
      const XmlPiece piece = scanner_.Next();
      switch (piece.kind) {
        case Kind::kDoctype:
          throw ErrorAt(piece.begin, "document type declarations are not accepted");
        case Kind::kStartTag:
        case Kind::kEmptyTag:
          if (depth_ == 0) {
            if (done_) throw ErrorAt(piece.begin, "element after the end of the NETCONF wrapper");
            if (OpenWrapper(piece)) break;
            // The first element is none: the configuration stands bare, and the parser sees to the
            // rest.
            if (wrappers_.empty()) return std::move(text_);
            AddDeclarations(piece);
          }
          if (piece.kind == Kind::kStartTag) ++depth_;
          break;
        case Kind::kEndTag:
          CloseElement(piece);
          break;
        case Kind::kText:
        case Kind::kOther:
          break;
        case Kind::kMalformed:
        case Kind::kEnd:
          return AtEnd(piece);
      }
    }
  }

 private:
  struct Wrapper {
    std::string_view name;
    size_t begin;
  };

  InputError ErrorAt(size_t offset, std::string_view message) const {
    return LocatedError(name_, LineAt(text_, offset), message);
  }

  // Whether `tag` is a wrapper where it stands: <rpc-reply> outermost, then one <data> or <config>.
  bool OpenWrapper(const XmlPiece& tag) {
    if (inside_data_) return false;
    const size_t colon = tag.name.find(':');
    const bool prefixed = colon != std::string_view::npos;
    const std::string_view local = prefixed ? tag.name.substr(colon + 1) : tag.name;
    const bool holds_data = local == "data" || local == "config";
    if (!holds_data && !(local == "rpc-reply" && wrappers_.empty())) return false;

    const std::string declaration =
        prefixed ? "xmlns:" + std::string(tag.name.substr(0, colon)) : "xmlns";
    std::string_view uri;
    if (const auto outer = declarations_.find(declaration); outer != declarations_.end()) {
      uri = outer->second.value;
    }
    for (const XmlAttribute& own : tag.declarations) {
      if (own.name == declaration) uri = own.value;
    }
    if (uri != kBaseNamespace && !(uri.empty() && !prefixed)) return false;

    for (const XmlAttribute& own : tag.declarations) declarations_[own.name] = own;
    if (result_.empty()) result_ = text_;
    Blank(result_, tag.begin, tag.end);
    if (tag.kind == Kind::kEmptyTag) {
      done_ = wrappers_.empty();
    } else {
      wrappers_.push_back({tag.name, tag.begin});
      inside_data_ = holds_data;
    }
    return true;
  }

  void CloseElement(const XmlPiece& tag) {
    if (depth_ > 0) {
      --depth_;
      return;
    }
    if (wrappers_.empty() || wrappers_.back().name != tag.name) {
      throw ErrorAt(tag.begin, "</" + std::string(tag.name) + "> closes no open element");
    }
    Blank(result_, tag.begin, tag.end);
    wrappers_.pop_back();
    done_ = wrappers_.empty();
  }

  // Notes that the wrapper's declarations have to follow the name of this element, but for those
  // that it makes itself.
  void AddDeclarations(const XmlPiece& tag) {
    std::set<std::string_view> own_names;
    for (const XmlAttribute& own : tag.declarations) own_names.insert(own.name);
    std::string added;
    for (const auto& [name, declaration] : declarations_) {
      if (own_names.count(name) == 0) added.append(" ").append(declaration.source);
    }
    std::replace(added.begin(), added.end(), '\n', ' ');
    added_size_ += added.size();
    // Many declarations times many elements are more than a file can hold.
    if (text_.size() + added_size_ > kMaxConfigurationSize) {
      throw ErrorAt(tag.begin, "too many namespace declarations around the configuration");
    }
    if (!added.empty()) insertions_.emplace_back(tag.begin + 1 + tag.name.size(), added);
  }

  std::string AtEnd(const XmlPiece& piece) {
    // Not even a first element, or none that can be read: the parser finds the words for it.
    if (wrappers_.empty() && !done_) return std::move(text_);
    if (piece.kind == Kind::kMalformed) throw ErrorAt(piece.begin, "not well-formed XML");
    if (!wrappers_.empty()) {
      const Wrapper& open = wrappers_.back();
      throw ErrorAt(open.begin, "<" + std::string(open.name) + "> is not closed");
    }
    std::string unwrapped;
    size_t copied = 0;
    for (const auto& [offset, declarations] : insertions_) {
      unwrapped.append(result_, copied, offset - copied).append(declarations);
      copied = offset;
    }
    return unwrapped.append(result_, copied);
  }

  const std::string& name_;
  std::string text_;
  XmlScanner scanner_;
  std::string result_;  // text_ with the wrapper's tags blanked out, from the first one on
  std::vector<Wrapper> wrappers_;
  std::map<std::string_view, XmlAttribute> declarations_;  // by attribute name
  std::vector<std::pair<size_t, std::string>> insertions_;
  size_t added_size_ = 0;  // bytes of all insertions
  size_t depth_ = 0;       // open elements inside the wrapper
  bool inside_data_ = false;
  bool done_ = false;  // the outermost wrapper is closed
};

}  // namespace

std::string RemoveXmlWrapper(const std::string& name, std::string text) {
  return XmlUnwrapper(name, std::move(text)).Unwrap();
}

void RemoveJsonWrapper(std::string& text) {
  // Matches { "data" : {  and  } }  at the two ends; whatever does not look like that is left to
  // the parser.
  size_t at = text.find_first_not_of(kBlanks);
  const auto skip = [&](std::string_view word) {
    if (at == std::string::npos || text.compare(at, word.size(), word) != 0) return false;
    at = text.find_first_not_of(kBlanks, at + word.size());
    return true;
  };
  if (!skip("{") || !(skip("\"data\"") || skip("\"ietf-restconf:data\"")) || !skip(":")) return;
  if (at == std::string::npos || text[at] != '{') return;
  const size_t last = text.find_last_not_of(kBlanks);
  if (text[last] != '}') return;
  const size_t inner = text.find_last_not_of(kBlanks, last - 1);
  if (inner <= at || text[inner] != '}') return;
  Blank(text, 0, at);
  text[last] = ' ';
}

}  // namespace ipvald
