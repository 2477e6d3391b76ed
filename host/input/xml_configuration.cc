#include "xml_configuration.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "text_edits.h"
#include "value_words.h"
#include "xml_reader.h"

namespace ipvald {
namespace {

constexpr std::string_view kBaseNamespace = "urn:ietf:params:xml:ns:netconf:base:1.0";

// `text` as it stands in an element or attribute on one line.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\n':
        escaped += "&#10;";
        break;
      case '\r':
        escaped += "&#13;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

bool IsLeafLike(const lysc_node* node) { return (node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0; }

// What else NETCONF brings, by the name of its outer element.
struct Message {
  std::string_view name;
  const char* words;
};
constexpr Message kMessages[] = {
    {"rpc-error", "an <rpc-error> tells why a request failed and holds no configuration"},
    {"ok", "the reply <ok/> holds no configuration"},
    {"rpc", "a request to a NETCONF server is no configuration; one may stand in its <config>"},
    {"edit-config", "an <edit-config> request is no configuration; one may stand in its <config>"},
    {"hello", "a <hello> of NETCONF holds no configuration"},
};

class Configuration : public XmlHandler {
 public:
  Configuration(const ly_ctx* context, const SourceText& source, SchemaWalk::Depth depth)
      : source_(source), walk_(context, source, InputFormat::kXml, depth) {}

  std::string Read() {
    ReadXml(source_, *this);
    return edits_.Apply(source_.text);
  }

  void BeginElement(const XmlTag& tag) override {
    if (skipped_ > 0) {
      ++skipped_;
      return;
    }
    if (walk_.node() == nullptr || !IsLeafLike(walk_.node())) BlankContent(tag.begin);
    StartContent(tag.end);
    if (walk_.node() == nullptr) {
      if (OpenWrapper(tag)) return;
      CheckTop(tag);
      CopyDeclarations(tag);
      has_top_ = true;
    }
    const SchemaWalk::Child child = walk_.Find(tag.name.uri, tag.name.local, tag.begin);
    CheckAttributes(tag);
    if ((child.node->nodetype & (LYS_LIST | LYS_LEAFLIST)) == 0) walk_.AddOnce(child, tag.begin);
    walk_.Open(child, tag.begin);
    if ((child.node->nodetype & LYS_ANYDATA) != 0) skipped_ = 1;
  }

  void EndElement(size_t begin, size_t end) override {
    if (skipped_ > 0 && --skipped_ > 0) return;
    if (walk_.node() == nullptr) {
      BlankContent(begin);
      CloseWrapper(begin, end);
    } else {
      if (IsLeafLike(walk_.node())) {
        walk_.Value(content_.text, ShownValue(content_.text, true));
        if (content_.is_rewritten) RewriteContent(begin, end);
      } else {
        BlankContent(begin);
      }
      walk_.Close();
    }
    StartContent(end);
  }

  void Text(std::string_view text, size_t begin, size_t end) override {
    if (skipped_ > 0) return;
    content_.text += text;
    if (text != std::string_view(source_.text).substr(begin, end - begin)) {
      content_.is_rewritten = true;
    }
  }

  void Other(size_t begin, size_t end) override {
    if (skipped_ > 0) return;
    edits_.Blank(source_.text, begin, end);
    content_.is_rewritten = true;
  }

 private:
  struct Wrapper {
    std::string name;  // without prefix
    bool in_namespace;
    size_t begin;
  };

  // What stands between two tags.
  struct Content {
    size_t begin = 0;
    std::string text;
    bool is_rewritten = false;  // libyang would not read it as it is
  };

  void StartContent(size_t begin) {
    content_.begin = begin;
    content_.text.clear();
    content_.is_rewritten = false;
  }

  // Sees to it that there is no text in what ends at `end`, since text stands in leaves only, and
  // that its blanks are written as such.
  void BlankContent(size_t end) {
    const size_t first = content_.text.find_first_not_of(kBlanks);
    if (first == std::string::npos) {
      if (!content_.is_rewritten) return;
      edits_.DropFrom(content_.begin);
      edits_.Blank(source_.text, content_.begin, end);
      return;
    }
    const size_t last = content_.text.find_last_not_of(kBlanks);
    const std::string shown = ShownValue(content_.text.substr(first, last + 1 - first), true);
    throw source_.ErrorAt(
        source_.text.find_first_not_of(kBlanks, content_.begin),
        "text in " + walk_.ShownNode() + ", which holds elements and no text: " + shown);
  }

  // Whether `tag` is a wrapper where it stands: <rpc-reply> outermost, then one <data> or <config>.
  bool OpenWrapper(const XmlTag& tag) {
    if (has_top_ || holds_configuration_) return false;
    if (!tag.name.uri.empty() && tag.name.uri != kBaseNamespace) return false;
    const bool holds_configuration = tag.name.local == "data" || tag.name.local == "config";
    if (!holds_configuration && !(tag.name.local == "rpc-reply" && wrappers_.empty())) return false;
    for (const XmlName& attribute : tag.attributes) {
      if (attribute.uri != kBaseNamespace) continue;  // such as the message-id of a reply
      throw source_.ErrorAt(tag.begin, "the attribute " + std::string(attribute.local) + " of " +
                                           walk_.Shown(tag.name.local) + " belongs to an edit");
    }
    for (const XmlDeclaration& own : tag.declarations) {
      const std::string name = own.prefix.empty() ? "xmlns" : "xmlns:" + own.prefix;
      declarations_[own.prefix] =
          own.uri.empty() ? "" : " " + name + "=\"" + Escaped(own.uri) + "\"";
    }
    edits_.Blank(source_.text, tag.begin, tag.end);
    wrappers_.push_back({std::string(tag.name.local), !tag.name.uri.empty(), tag.begin});
    holds_configuration_ = holds_configuration;
    return true;
  }

  void CloseWrapper(size_t begin, size_t end) {
    if (!holds_configuration_) {
      throw source_.ErrorAt(wrappers_.back().begin, "the <rpc-reply> holds no <data>");
    }
    edits_.Blank(source_.text, begin, end);
    wrappers_.pop_back();
    wrapper_is_closed_ = true;
  }

  // Refuses what cannot be a top-level element of the data model.
  void CheckTop(const XmlTag& tag) const {
    if (wrapper_is_closed_) {
      throw source_.ErrorAt(tag.begin, "element behind the end of the NETCONF wrapper");
    }
    if (tag.name.uri.empty() || tag.name.uri == kBaseNamespace) {
      for (const Message& message : kMessages) {
        if (tag.name.local == message.name) throw source_.ErrorAt(tag.begin, message.words);
      }
    }
    if (tag.name.local == "data") {
      throw source_.ErrorAt(tag.begin, "<data> of the namespace \"" + std::string(tag.name.uri) +
                                           "\" is no wrapper that is known; that of NETCONF is "
                                           "<data xmlns=\"" +
                                           std::string(kBaseNamespace) + "\">");
    }
    if (wrappers_.empty()) return;
    const Wrapper& wrapper = wrappers_.back();
    if (wrapper.name == "rpc-reply") {
      throw source_.ErrorAt(tag.begin,
                            walk_.Shown(tag.name.local) + " in an <rpc-reply>, which holds <data>");
    }
    const lysc_node* own = walk_.ChildNamed(wrapper.name);
    if (wrapper.in_namespace || !tag.name.uri.empty() || own == nullptr) return;
    const std::string shown = "<" + wrapper.name;
    throw source_.ErrorAt(wrapper.begin, shown +
                                             "> without a namespace is that of NETCONF; that "
                                             "of the data model is " +
                                             shown + " xmlns=\"" + own->module->ns + "\">");
  }

  // Metadata (RFC 7952) says what is to become of a node, which is no part of a configuration.
  void CheckAttributes(const XmlTag& tag) const {
    if (tag.attributes.empty()) return;
    const std::string name(tag.attributes.front().local);
    throw source_.ErrorAt(tag.begin, "the attribute " + name + " of " +
                                         walk_.Shown(tag.name.local) +
                                         " is not read; values are elements, such as <" + name +
                                         ">...</" + name + ">");
  }

  // Puts the wrapper's declarations behind the name of an element, but for those that it makes
  // itself.
  void CopyDeclarations(const XmlTag& tag) {
    std::set<std::string_view> own_prefixes;
    for (const XmlDeclaration& own : tag.declarations) own_prefixes.insert(own.prefix);
    std::string added;
    for (const auto& [prefix, declaration] : declarations_) {
      if (own_prefixes.count(prefix) == 0) added += declaration;
    }
    if (added.empty()) return;
    added_size_ += added.size();
    // Many declarations times many elements are more than a file can hold.
    if (source_.text.size() + added_size_ > kMaxConfigurationSize) {
      throw source_.ErrorAt(tag.begin, "too many namespace declarations around the configuration");
    }
    const size_t behind_name = source_.text.find_first_of(" \t\r\n/>", tag.begin);
    edits_.Replace(behind_name, behind_name, std::move(added));
  }

  // Writes the text of a leaf anew on one line. The line ends that were in it go into the end tag.
  void RewriteContent(size_t begin, size_t end) {
    const std::string_view original =
        std::string_view(source_.text).substr(content_.begin, begin - content_.begin);
    const auto lines = static_cast<size_t>(std::count(original.begin(), original.end(), '\n'));
    edits_.DropFrom(content_.begin);
    edits_.Replace(content_.begin, begin, Escaped(content_.text));
    edits_.Replace(end - 1, end - 1, std::string(lines, '\n'));
  }

  const SourceText& source_;
  SchemaWalk walk_;
  TextEdits edits_;
  Content content_;
  std::vector<Wrapper> wrappers_;
  std::map<std::string, std::string> declarations_;  // of all wrappers, by prefix, as attributes
  size_t added_size_ = 0;                            // bytes of the copied declarations
  bool holds_configuration_ = false;                 // <data> or <config> was opened
  bool wrapper_is_closed_ = false;
  bool has_top_ = false;  // an element of the data model itself was met
  size_t skipped_ = 0;    // open elements of anydata, with the one that holds it
};

}  // namespace

std::string XmlConfiguration(const ly_ctx* context, const SourceText& source,
                             SchemaWalk::Depth depth) {
  return Configuration(context, source, depth).Read();
}

}  // namespace ipvald
