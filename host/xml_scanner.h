// Cuts XML text into its pieces without a look at what they mean: just enough to find a wrapper
// around a configuration. Well-formedness inside the configuration is left to the parser proper.
#ifndef HOST_XML_SCANNER_H_
#define HOST_XML_SCANNER_H_

#include <cstddef>
#include <string_view>
#include <vector>

namespace ipvald {

struct XmlAttribute {
  std::string_view name;    // with its prefix
  std::string_view value;   // between the quotes, as written
  std::string_view source;  // name, equals sign and quotes
};

struct XmlPiece {
  enum class Kind {
    kStartTag,
    kEmptyTag,  // <a/>
    kEndTag,
    kText,
    kOther,      // comment, CDATA section, processing instruction, XML declaration
    kDoctype,    // anything else that begins with "<!"
    kMalformed,  // from here on the text cannot be cut
    kEnd,
  };

  Kind kind = Kind::kEnd;
  size_t begin = 0;  // offsets in the text
  size_t end = 0;
  std::string_view name;  // of a tag, with its prefix
  // Namespace declarations of a tag. Other attributes are not kept: a tag may have millions.
  std::vector<XmlAttribute> declarations;
};

/// Walks over `text`, which must outlive the scanner.
class XmlScanner {
 public:
  explicit XmlScanner(std::string_view text) : text_(text) {}

  /// The next piece; after kMalformed and kEnd the same again.
  XmlPiece Next();

 private:
  XmlPiece UpTo(XmlPiece::Kind kind, std::string_view terminator);
  XmlPiece Tag();
  XmlPiece Malformed() const;
  bool ReadAttribute(size_t& at, XmlAttribute& attribute) const;
  std::string_view NameAt(size_t at) const;
  size_t SkipBlanks(size_t at) const;

  std::string_view text_;
  size_t at_ = 0;
};

}  // namespace ipvald

#endif  // HOST_XML_SCANNER_H_
