#include "xml_scanner.h"

#include <algorithm>

namespace ipvald {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kAfterName = " \t\r\n/>=<\"'";

bool IsNamespaceDeclaration(const XmlAttribute& attribute) {
  return attribute.name == "xmlns" || attribute.name.starts_with("xmlns:");
}

}  // namespace

XmlPiece XmlScanner::Next() {
  const std::string_view rest = text_.substr(at_);
  if (rest.empty()) return {XmlPiece::Kind::kEnd, at_, at_, "", {}};
  if (rest.front() != '<') {
    const size_t begin = at_;
    at_ = std::min(text_.find('<', at_), text_.size());
    return {XmlPiece::Kind::kText, begin, at_, "", {}};
  }
  if (rest.starts_with("<!--")) return UpTo(XmlPiece::Kind::kOther, "-->");
  if (rest.starts_with("<![CDATA[")) return UpTo(XmlPiece::Kind::kOther, "]]>");
  if (rest.starts_with("<?")) return UpTo(XmlPiece::Kind::kOther, "?>");
  if (rest.starts_with("<!")) return UpTo(XmlPiece::Kind::kDoctype, ">");
  return Tag();
}

XmlPiece XmlScanner::UpTo(XmlPiece::Kind kind, std::string_view terminator) {
  const size_t found = text_.find(terminator, at_ + 2);
  if (found == std::string_view::npos) return Malformed();
  const size_t begin = at_;
  at_ = found + terminator.size();
  return {kind, begin, at_, "", {}};
}

XmlPiece XmlScanner::Malformed() const { return {XmlPiece::Kind::kMalformed, at_, at_, "", {}}; }

XmlPiece XmlScanner::Tag() {
  XmlPiece tag{XmlPiece::Kind::kStartTag, at_, at_, "", {}};
  size_t at = at_ + 1;
  if (text_.substr(at).starts_with('/')) {
    tag.kind = XmlPiece::Kind::kEndTag;
    ++at;
  }
  tag.name = NameAt(at);
  if (tag.name.empty()) return Malformed();
  at = SkipBlanks(at + tag.name.size());
  while (at < text_.size() && text_[at] != '>' && text_[at] != '/') {
    XmlAttribute attribute;
    if (!ReadAttribute(at, attribute)) return Malformed();
    if (IsNamespaceDeclaration(attribute)) tag.declarations.push_back(attribute);
  }
  if (text_.substr(at).starts_with('/')) {
    tag.kind = XmlPiece::Kind::kEmptyTag;
    ++at;
  }
  if (!text_.substr(at).starts_with('>')) return Malformed();
  at_ = at + 1;
  tag.end = at_;
  return tag;
}

// Reads one attribute at `at`, and moves `at` behind it and the blanks that follow.
bool XmlScanner::ReadAttribute(size_t& at, XmlAttribute& attribute) const {
  const size_t begin = at;
  attribute.name = NameAt(at);
  if (attribute.name.empty()) return false;
  at = SkipBlanks(at + attribute.name.size());
  if (!text_.substr(at).starts_with('=')) return false;
  at = SkipBlanks(at + 1);
  if (at >= text_.size() || (text_[at] != '"' && text_[at] != '\'')) return false;
  const size_t closing = text_.find(text_[at], at + 1);
  if (closing == std::string_view::npos) return false;
  attribute.value = text_.substr(at + 1, closing - at - 1);
  attribute.source = text_.substr(begin, closing + 1 - begin);
  at = SkipBlanks(closing + 1);
  return true;
}

std::string_view XmlScanner::NameAt(size_t at) const {
  const size_t end = std::min(text_.find_first_of(kAfterName, at), text_.size());
  return text_.substr(at, end - at);
}

size_t XmlScanner::SkipBlanks(size_t at) const {
  return std::min(text_.find_first_not_of(kBlanks, at), text_.size());
}

}  // namespace ipvald
