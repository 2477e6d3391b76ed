#include "xml_reader.h"

#include <expat.h>
#include <strings.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "one_line.h"
#include "resources.h"

namespace ipvald {
namespace {

constexpr char kSeparator = '\n';  // between namespace and name, as expat gives them; in neither
constexpr char kNoDoctype[] = "document type declarations are not accepted";

class XmlReader {
 public:
  XmlReader(const SourceText& source, XmlHandler& handler)
      : source_(source), text_(source.text), handler_(handler) {}

  void Read() {
    while (ReadRoot()) {
    }
    if (begin_ == 0) throw source_.ErrorAt(0, "no element in the text");
  }

 private:
  struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  // Reads one top-level element and what stands before it; false when there is none any more.
  bool ReadRoot() {
    const char separator[] = {kSeparator, '\0'};
    if (parser_ == nullptr) {
      parser_.reset(XML_ParserCreate_MM("UTF-8", nullptr, separator));
      if (parser_ == nullptr) throw std::bad_alloc();
    } else {
      XML_ParserReset(parser_.get(), "UTF-8");
    }
    SetHandlers();
    root_end_ = 0;
    ParseFrom(begin_);
    if (failure_ != nullptr) std::rethrow_exception(failure_);
    if (root_end_ > 0) {
      begin_ = root_end_;
      return true;
    }
    if (XML_GetErrorCode(parser_.get()) == XML_ERROR_NO_ELEMENTS && open_.empty()) return false;
    throw SyntaxError();
  }

  // expat copies what it gets. So it gets the text once, for the first element, which mostly is the
  // only one, and for each further one in growing pieces up to its end.
  void ParseFrom(size_t begin) {
    constexpr size_t kFirstPiece = 4096;
    XML_Status status = XML_STATUS_OK;
    for (size_t piece = begin == 0 ? text_.size() : kFirstPiece;
         status == XML_STATUS_OK && root_end_ == 0; piece *= 2) {
      const size_t size = std::min(piece, text_.size() - begin);
      const bool is_last = begin + size == text_.size();
      status = XML_Parse(parser_.get(), text_.data() + begin, static_cast<int>(size), is_last);
      begin += size;
      if (is_last) return;
    }
  }

  void SetHandlers() {
    XML_Parser parser = parser_.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* self, const char* name, const char** attributes) {
          Guard(self,
                [name, attributes](XmlReader& reader) { reader.BeginElement(name, attributes); });
        },
        [](void* self, const char* /*name*/) {
          Guard(self, [](XmlReader& reader) { reader.EndElement(); });
        });
    XML_SetCharacterDataHandler(parser, [](void* self, const char* text, int size) {
      Guard(self, [text, size](XmlReader& reader) {
        reader.handler_.Text({text, static_cast<size_t>(size)}, reader.Begin(), reader.End());
      });
    });
    const auto other = [](void* self) { Guard(self, [](XmlReader& reader) { reader.Other(); }); };
    XML_SetCommentHandler(parser, [](void* self, const char* /*text*/) {
      Guard(self, [](XmlReader& reader) { reader.Other(); });
    });
    XML_SetProcessingInstructionHandler(
        parser, [](void* self, const char* /*target*/, const char* /*data*/) {
          Guard(self, [](XmlReader& reader) { reader.Other(); });
        });
    XML_SetCdataSectionHandler(parser, other, other);
    XML_SetXmlDeclHandler(parser, [](void* self, const char* version, const char* encoding, int) {
      Guard(self,
            [version, encoding](XmlReader& reader) { reader.Declaration(version, encoding); });
    });
    XML_SetStartDoctypeDeclHandler(
        parser, [](void* self, const char*, const char*, const char*, int) {
          Guard(self, [](XmlReader& reader) { throw reader.Error(kNoDoctype); });
        });
    XML_SetStartNamespaceDeclHandler(parser, [](void* self, const char* prefix, const char* uri) {
      Guard(self, [prefix, uri](XmlReader& reader) {
        reader.declarations_.push_back(
            {prefix == nullptr ? "" : prefix, uri == nullptr ? "" : uri});
      });
    });
  }

  // What a handler does, in C code, which no exception may pass. expat may call more handlers after
  // it was told to stop.
  template <typename Handle>
  static void Guard(void* self, const Handle& handle) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure_ != nullptr) return;
    try {
      handle(reader);
    } catch (...) {
      reader.failure_ = std::current_exception();
      XML_StopParser(reader.parser_.get(), XML_FALSE);
    }
  }

  // Of what expat has just found.
  size_t Begin() const {
    return begin_ + static_cast<size_t>(XML_GetCurrentByteIndex(parser_.get()));
  }
  size_t End() const {
    return Begin() + static_cast<size_t>(XML_GetCurrentByteCount(parser_.get()));
  }

  InputError Error(const std::string& message) const { return source_.ErrorAt(Begin(), message); }

  static XmlName Expanded(std::string_view name) {
    const size_t separator = name.rfind(kSeparator);
    if (separator == name.npos) return {"", name};
    return {name.substr(0, separator), name.substr(separator + 1)};
  }

  // `attributes` are names and values in turn, and a null pointer.
  void BeginElement(std::string_view name, const char** attributes) {
    attributes_.clear();
    for (; *attributes != nullptr; attributes += 2) attributes_.push_back(Expanded(*attributes));
    if (attributes_.size() + declarations_.size() > kMaxXmlAttributes) {
      throw Error("<" + NameAt(Begin()) + "> has more than " + std::to_string(kMaxXmlAttributes) +
                  " attributes and namespace declarations");
    }
    if (open_.size() == kMaxXmlDepth) throw Error("elements are too deep");
    open_.push_back(Begin());
    handler_.BeginElement({Expanded(name), declarations_, attributes_, Begin(), End()});
    declarations_.clear();
  }

  void EndElement() {
    open_.pop_back();
    handler_.EndElement(Begin(), End());
    if (!open_.empty()) return;
    root_end_ = End();
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  void Other() { handler_.Other(Begin(), End()); }

  void Declaration(const char* version, const char* encoding) {
    if (begin_ > 0) throw Error("an XML declaration stands at the very beginning of the text");
    if (version != nullptr && std::string_view(version) != "1.0") {
      throw Error("XML " + std::string(version) + " is not read, only XML 1.0");
    }
    if (encoding != nullptr && strcasecmp(encoding, "UTF-8") != 0 &&
        strcasecmp(encoding, "US-ASCII") != 0) {
      throw Error("the XML declaration says " + std::string(encoding) + ", but only UTF-8 is read");
    }
    Other();
  }

  // Name of the tag that begins there, as it is written.
  std::string NameAt(size_t begin) const {
    begin = text_.find_first_not_of("</", begin);
    if (begin == text_.npos) return "";
    return text_.substr(begin, text_.find_first_of(" \t\r\n/>", begin) - begin);
  }

  // Where an element or an unfinished token begins.
  std::string OnLine(size_t begin) const {
    return ", which begins on line " + std::to_string(source_.LineAt(begin));
  }

  // What expat found wrong, in words that help.
  InputError SyntaxError() const {
    const size_t begin = Begin();
    const std::string_view rest = std::string_view(text_).substr(std::min(begin, text_.size()));
    const auto until = [rest](std::string_view ends) {
      const std::string_view shown = rest.substr(0, rest.find_first_of(ends, 1));
      return std::string(shown.substr(0, kShownLength));
    };
    switch (XML_GetErrorCode(parser_.get())) {
      case XML_ERROR_NO_MEMORY:
        // expat has a limit of its own on the memory for one piece of a text.
        if (IsMemoryLimited()) throw std::bad_alloc();
        return Error("a tag, comment or text is too large");
      case XML_ERROR_NO_ELEMENTS:
        return source_.ErrorAt(text_.size(), "the text ends inside <" + NameAt(open_.back()) + ">" +
                                                 OnLine(open_.back()));
      case XML_ERROR_UNCLOSED_TOKEN:
      case XML_ERROR_PARTIAL_CHAR:
        return source_.ErrorAt(text_.size(),
                               "the text ends inside " +
                                   std::string(rest.starts_with("<!--") ? "a comment" : "a tag") +
                                   OnLine(begin));
      case XML_ERROR_UNCLOSED_CDATA_SECTION:
        return source_.ErrorAt(text_.size(), "the text ends inside a CDATA section");
      case XML_ERROR_TAG_MISMATCH:
        return Error("</" + NameAt(begin) + "> cannot close <" + NameAt(open_.back()) + ">" +
                     OnLine(open_.back()));
      case XML_ERROR_DUPLICATE_ATTRIBUTE:
        return Error((rest.starts_with('<') ? "an attribute" : until("= \t\r\n")) +
                     " stands twice in one tag");
      case XML_ERROR_UNBOUND_PREFIX:
        return Error("<" + NameAt(begin) +
                     "> has a prefix that no xmlns: declares, on its name or on an attribute");
      case XML_ERROR_UNDEFINED_ENTITY:
        return Error(until(" \t\r\n<;") +
                     "; is not known: XML itself has &lt; &gt; &amp; &quot; &apos;");
      case XML_ERROR_BAD_CHAR_REF:
        return Error(until(" \t\r\n<;") + "; is no character of XML");
      case XML_ERROR_MISPLACED_XML_PI:
        return Error("an XML declaration stands at the very beginning of the text");
      case XML_ERROR_XML_DECL:
      case XML_ERROR_UNKNOWN_ENCODING:
        return Error("the XML declaration is not well-formed, such as <?xml version=\"1.0\"?>");
      case XML_ERROR_SYNTAX:
      case XML_ERROR_INVALID_TOKEN:
        break;
      default:
        return Error(XML_ErrorString(XML_GetErrorCode(parser_.get())));
    }
    return InvalidToken(until(" \t\r\n"));
  }

  // Text before the first top-level element or behind one.
  InputError TextOutside(const std::string& shown) const {
    if (begin_ == 0) return Error("an element is expected before " + shown);
    const size_t first = text_.find_first_not_of(kBlanks, begin_);
    const std::string_view rest = std::string_view(text_).substr(first);
    if (rest.starts_with("]]>]]>") || rest.starts_with("##")) {
      return source_.ErrorAt(first, "the end mark of a NETCONF message; leave it out");
    }
    const std::string_view line = rest.substr(0, rest.find_first_of("\r\n<"));
    return source_.ErrorAt(first,
                           "text after the end of the configuration: " + Cut(line, kShownLength));
  }

  // expat stands at the first byte that does not fit, so what is wrong may be before it.
  InputError InvalidToken(const std::string& shown) const {
    const std::string_view before = std::string_view(text_).substr(0, Begin());
    const char next = Begin() < text_.size() ? text_[Begin()] : '\0';
    const bool in_tag = before.rfind('<') != before.npos &&
                        (before.rfind('>') == before.npos || before.rfind('<') > before.rfind('>'));
    if (before.ends_with("<!")) return Error(kNoDoctype);
    if (before.ends_with("<") && next == '/') return Error("this end tag closes no element");
    if (before.ends_with("<")) return Error("< begins no tag here; in text it is &lt;");
    if (before.ends_with("&")) return Error("& begins no reference here; in text it is &amp;");
    if (before.ends_with("]]") && next == '>') return Error("]]> stands in text as ]]&gt;");
    if (before.ends_with("--")) return Error("-- may not stand in a comment");
    if (static_cast<unsigned char>(next) < 0x20) return Error("a control character in the text");
    if (open_.empty() && !in_tag) return TextOutside(shown);
    if (before.ends_with("=")) return Error("the value of an attribute stands in quotes: " + shown);
    return Error("not well-formed at " + shown);
  }

  const SourceText& source_;
  const std::string& text_;
  XmlHandler& handler_;
  std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
  size_t begin_ = 0;          // of what the parser reads: behind the last top-level element
  size_t root_end_ = 0;       // of the top-level element just read; 0 when there was none
  std::vector<size_t> open_;  // begins of the elements that are open
  std::vector<XmlDeclaration> declarations_;  // of the tag that is next
  std::vector<XmlName> attributes_;           // likewise
  std::exception_ptr failure_;
};

}  // namespace

void ReadXml(const SourceText& source, XmlHandler& handler) { XmlReader(source, handler).Read(); }

}  // namespace ipvald
