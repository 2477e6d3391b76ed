// What the reader of XML tells of a text, in which order and of which bytes.
#include "xml_reader.h"

#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>

namespace ipvald {
namespace {

std::string Shown(const XmlName& name) {
  return (name.uri.empty() ? "" : "{" + std::string(name.uri) + "}") + std::string(name.local);
}

// Writes down what it is told, each with its first byte and the one behind it: "<a>0-3" for a tag
// with its declarations and attributes, "</>3-7", "text(b)3-4", "other3-8". Pieces of text that
// follow each other are one.
class Recorder : public XmlHandler {
 public:
  void BeginElement(const XmlTag& tag) override {
    std::string inside = Shown(tag.name);
    for (const XmlDeclaration& declaration : tag.declarations) {
      inside += " " + declaration.prefix + "=" + declaration.uri;
    }
    for (const XmlName& attribute : tag.attributes) inside += " @" + Shown(attribute);
    Add("<" + inside + ">", tag.begin, tag.end);
  }
  void EndElement(size_t begin, size_t end) override { Add("</>", begin, end); }
  void Text(std::string_view text, size_t begin, size_t end) override {
    if (text_.empty()) text_begin_ = begin;
    text_ += text;
    text_end_ = end;
  }
  void Other(size_t begin, size_t end) override { Add("other", begin, end); }

  std::string Told() {
    FlushText();
    return told_;
  }

 private:
  void FlushText() {
    if (text_.empty()) return;
    const std::string text = "text(" + std::exchange(text_, "") + ")";
    Add(text, text_begin_, text_end_);
  }

  void Add(const std::string& what, size_t begin, size_t end) {
    FlushText();
    told_ += (told_.empty() ? "" : " ") + what + std::to_string(begin) + "-" + std::to_string(end);
  }

  std::string told_;
  std::string text_;
  size_t text_begin_ = 0;
  size_t text_end_ = 0;
};

// What is told of `text`, with the error at the end.
std::string Told(const std::string& text) {
  const SourceText source{"input", text};
  Recorder recorder;
  try {
    ReadXml(source, recorder);
  } catch (const InputError& error) {
    return recorder.Told() + " " + error.what();
  }
  return recorder.Told();
}

struct EventCase {
  const char* name;
  std::string text;
  std::string told;
};

std::ostream& operator<<(std::ostream& out, const EventCase& row) { return out << row.name; }

const EventCase kEvents[] = {
    {"EmptyElement", "<a/>", "<a>0-4 </>4-4"},
    {"ElementWithoutContent", "<a></a>", "<a>0-3 </>3-7"},
    {"BlanksInTags", "<a\n></a >", "<a>0-4 </>4-9"},
    {"Text", "<a>b c</a>", "<a>0-3 text(b c)3-6 </>6-10"},
    {"References", "<a>&lt;&#65;</a>", "<a>0-3 text(<A)3-12 </>12-16"},
    {"LineEnds", "<a>b\r\nc\rd\n</a>", "<a>0-3 text(b\nc\nd\n)3-10 </>10-14"},
    {"Cdata", "<a>b<![CDATA[<c>]]>d</a>",
     "<a>0-3 text(b)3-4 other4-13 text(<c>)13-16 other16-19 text(d)19-20 </>20-24"},
    {"Comment", "<a>b<!-- c -->d</a>", "<a>0-3 text(b)3-4 other4-14 text(d)14-15 </>15-19"},
    {"ProcessingInstruction", "<a><?b c?></a>", "<a>0-3 other3-10 </>10-14"},
    {"DeclarationAndComment", "<?xml version='1.0'?>\n<!--b--><a/>",
     "other0-21 other22-30 <a>30-34 </>34-34"},
    {"DefaultNamespace", "<a xmlns='u'><b/></a>", "<{u}a =u>0-13 <{u}b>13-17 </>17-17 </>17-21"},
    {"NamespaceTakenBack", "<a xmlns='u'><b xmlns=''/></a>",
     "<{u}a =u>0-13 <b =>13-26 </>26-26 </>26-30"},
    {"Prefix", "<p:a xmlns:p='u'><b/></p:a>", "<{u}a p=u>0-17 <b>17-21 </>21-21 </>21-27"},
    {"Attributes", "<a b='1' xmlns:p='u' p:c='2'/>", "<a p=u @b @{u}c>0-30 </>30-30"},
    {"UriWithBlanksAndColons", "<a xmlns='u: v'/>", "<{u: v}a =u: v>0-17 </>17-17"},
    {"SeveralTopLevelElements", "<a/>\n<b xmlns='u'/><!--c--><d/> ",
     "<a>0-4 </>4-4 <{u}b =u>5-19 </>19-19 other19-27 <d>27-31 </>31-31"},
    {"CommentBehindTheLast", "<a/><!--b-->\n", "<a>0-4 </>4-4 other4-12"},
    {"LongSecondElement", "<a/><b>" + std::string(10'000, 'x') + "</b>",
     "<a>0-4 </>4-4 <b>4-7 text(" + std::string(10'000, 'x') + ")7-10007 </>10007-10011"},
    // What is well-formed is told before the fault.
    {"Nothing", "", " input:1: no element in the text"},
    {"NothingButAComment", "\n<!-- a -->\n", "other1-11 input:1: no element in the text"},
    {"EndsInAnElement", "<a>\n<b/>",
     "<a>0-3 text(\n)3-4 <b>4-8 </>8-8 input:2: the text ends inside <a>, which begins on line 1"},
    {"EndsInATag", "<a>\n<b",
     "<a>0-3 text(\n)3-4 input:2: the text ends inside a tag, which begins on line 2"},
    {"EndsInACdataSection", "<a><![CDATA[\nb",
     "<a>0-3 other3-12 text(\nb)12-14 input:2: the text ends inside a CDATA section"},
    {"WrongEndTag", "<a>\n<b></a>",
     "<a>0-3 text(\n)3-4 <b>4-7 input:2: </a> cannot close <b>, which begins on line 2"},
    {"DocumentTypeBehindAnElement", "<a/>\n<!DOCTYPE b><b/>",
     "<a>0-4 </>4-4 input:2: document type declarations are not accepted"},
    {"EncodingOfItsOwn", "<?xml version='1.0' encoding='UTF-16'?><a/>",
     " input:1: the XML declaration says UTF-16, but only UTF-8 is read"},
    {"PrefixOfAnAttribute", "<a p:b='1'/>",
     " input:1: <a> has a prefix that no xmlns: declares, on its name or on an attribute"},
    {"PrefixIsForgottenBehindItsElement", "<a xmlns:p='u'/><p:b/>",
     "<a p=u>0-16 </>16-16 input:1: <p:b> has a prefix that no xmlns: declares, on its name or on an attribute"},
    {"TextBehind", "<a/>\nb <c/>",
     "<a>0-4 </>4-4 input:2: text after the end of the configuration: b"},
};

class Events : public testing::TestWithParam<EventCase> {};

TEST_P(Events, AreTold) { EXPECT_EQ(Told(GetParam().text), GetParam().told); }

INSTANTIATE_TEST_SUITE_P(Texts, Events, testing::ValuesIn(kEvents),
                         [](const auto& row) { return std::string(row.param.name); });

std::string Nested(size_t depth) {
  std::string text;
  for (size_t i = 0; i < depth; ++i) text += "<a>";
  for (size_t i = 0; i < depth; ++i) text += "</a>";
  return text;
}

TEST(Depth, EndsAtTheLimit) {
  EXPECT_EQ(kMaxXmlDepth, 200u);
  EXPECT_TRUE(Told(Nested(200)).ends_with(" </>1396-1400"));
  EXPECT_TRUE(Told(Nested(201)).ends_with(" <a>597-600 input:1: elements are too deep"));
  // It is open ones that count.
  EXPECT_EQ(Told(Nested(200) + Nested(200)).find("input"), std::string::npos);
}

TEST(Attributes, EndAtTheLimitInEachTag) {
  const auto tag = [](size_t count) {
    std::string text = "<a xmlns:p='u'";
    for (size_t i = 1; i < count; ++i) text += " b" + std::to_string(i) + "=''";
    return text + "/>";
  };
  EXPECT_EQ(kMaxXmlAttributes, 256u);
  EXPECT_EQ(Told(tag(256) + tag(256)).find("input"), std::string::npos);
  EXPECT_EQ(Told(tag(257)),
            " input:1: <a> has more than 256 attributes and namespace declarations");
}

// Nothing of the text is told behind what threw.
TEST(HandlersException, PassesThrough) {
  struct Throwing : Recorder {
    void Other(size_t, size_t) override { throw std::out_of_range("handler"); }
  };
  const SourceText source{"input", "<a><!-- b --><c/><"};
  Throwing handler;
  EXPECT_THROW(ReadXml(source, handler), std::out_of_range);
  EXPECT_EQ(handler.Told(), "<a>0-3");
}

}  // namespace
}  // namespace ipvald
