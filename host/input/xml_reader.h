// A strict reader of XML 1.0 with namespaces, which libyang's is not: expat, with the errors in
// words that help, and with several top-level elements, which a configuration may have.
#ifndef HOST_INPUT_XML_READER_H_
#define HOST_INPUT_XML_READER_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "input_text.h"

namespace ipvald {

struct XmlName {
  std::string_view uri;  // empty when it is in no namespace
  std::string_view local;
};

/// A namespace declaration of a tag. The default namespace has no prefix.
struct XmlDeclaration {
  std::string prefix;
  std::string uri;
};

struct XmlTag {
  XmlName name;
  const std::vector<XmlDeclaration>& declarations;  // those of this tag
  const std::vector<XmlName>& attributes;           // the others
  size_t begin;                                     // offsets in the text
  size_t end;
};

/// What a text holds, in the order of the text. Views live for the time of the call.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  virtual void BeginElement(const XmlTag& tag) = 0;
  /// @param begin, end  of the end tag; equal for <a/>
  virtual void EndElement(size_t begin, size_t end) = 0;
  /// A piece of text, which may come in any number of pieces.
  /// @param text  without references, its line ends as one byte each
  virtual void Text(std::string_view text, size_t begin, size_t end) = 0;
  /// A comment, a processing instruction, the XML declaration, or one end of a CDATA section.
  virtual void Other(size_t begin, size_t end) = 0;
};

/// One tag may have this many attributes and namespace declarations together. libyang's time grows
/// with their square.
inline constexpr size_t kMaxXmlAttributes = 256;

/// Elements may stand in each other up to this depth.
inline constexpr size_t kMaxXmlDepth = 200;

/// Reads `source`, whose text is UTF-8, and tells `handler` what it holds. What the handler throws
/// passes through.
/// @throws InputError  the text is not well-formed, has no element, has a document type
/// declaration, claims another encoding, or is past the limits above
void ReadXml(const SourceText& source, XmlHandler& handler);

}  // namespace ipvald

#endif  // HOST_INPUT_XML_READER_H_
