// What is XML and JSON, to the last byte: documents that are read and documents that are not.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "confd/transaction.h"
#include "confd_maapi.h"
#include "configuration_text.h"
#include "json_reader.h"
#include "xml_reader.h"

namespace {

// The VRF of the L3 interface "7" in `text`, or the error of reading it.
std::string VrfIn(const std::string& text) {
  std::shared_ptr<const store::Snapshot> configuration;
  try {
    configuration = ParseText(text);
  } catch (const ipvald::InputError& error) {
    return error.what();
  }
  confd::Database store(configuration);
  const int thandle = store.StartTransaction(configuration);
  const int sock = store.OpenSocket();
  store.Attach(sock, thandle);
  char vrf[1000] = "(no VRF)";
  maapi_get_str_elem(sock, thandle, vrf, sizeof(vrf), "/config/interface/l3{7}/vrf");
  return vrf;
}

// How a text stands as a leaf, and the value that it is read as, or the error.
struct LeafCase {
  const char* name;
  std::string text;
  std::string value;
};

std::ostream& operator<<(std::ostream& out, const LeafCase& row) { return out << row.name; }

const char kFourHexDigits[] = "is not \\u and four hex digits";

const LeafCase kJsonLeaves[] = {
    {"Plain", R"("red")", "red"},
    {"Empty", R"("")", ""},
    {"Utf8", "\"\xc3\xa4\xf0\x9f\x98\x80\"", "\xc3\xa4\xf0\x9f\x98\x80"},
    {"EveryShortEscape", R"("\"\\\/\t\n\r")", "\"\\/\t\n\r"},
    {"EscapedLetters", R"("\u0072\u00e4\u20ac")", "r\xc3\xa4\xe2\x82\xac"},
    {"UpperCaseDigits", R"("\u00E4")", "\xc3\xa4"},
    {"Surrogates", R"("\ud83d\ude00")", "\xf0\x9f\x98\x80"},
    {"FirstAndLastPair", R"("\ud800\udc00\uDBFF\uDFFD")", "\xf0\x90\x80\x80\xf4\x8f\xbf\xbd"},
    {"SurrogatesInText", R"("a\ud83d\ude00b\ud83d\ude00")",
     "a\xf0\x9f\x98\x80"
     "b\xf0\x9f\x98\x80"},
    {"HighSurrogateAlone", R"("a\ud83d")", "input:5: \\ud83d is half of a pair of surrogates"},
    {"HighSurrogateBeforeLetter", R"("\ud83d\u0041")",
     "input:5: \\ud83d\\u0041 is half of a pair of surrogates"},
    {"LowSurrogateFirst", R"("\ude00\ud83d")", "input:5: \\ude00 is half of a pair of surrogates"},
    {"NoHexDigit", R"("\u004G")", std::string("input:5: \\u004G ") + kFourHexDigits},
    {"NoHexDigitBehindNine", R"("\u004:")", std::string("input:5: \\u004: ") + kFourHexDigits},
    {"NoHexDigitBeforeA", R"("\u004@")", std::string("input:5: \\u004@ ") + kFourHexDigits},
    {"ThreeHexDigits", R"("\u004")", std::string("input:5: \\u004\" ") + kFourHexDigits},
    {"NoEscape", R"("\x41")", "input:5: \\x is no escape of JSON"},
    {"UpperCaseU", R"("\U0041")", "input:5: \\U is no escape of JSON"},
    {"ControlEscape", R"("\u0001")", "input:5: \\u0001 is no character of a configuration"},
    {"BackspaceEscape", R"("\b")", "input:5: \\b is no character of a configuration"},
    {"FormFeedEscape", R"("\f")", "input:5: \\f is no character of a configuration"},
    {"LastControlEscape", R"("\u001f")", "input:5: \\u001f is no character of a configuration"},
    {"NoCharacterEscape", R"("\ufffe")", "input:5: \\ufffe is no character of a configuration"},
    {"CharactersBesideThem", R"("\ufffd")", "\xef\xbf\xbd"},
    {"NulCharacter", R"("\u0000")", "input:5: \\u0000 is no character of a configuration"},
    {"LineEndInString", "\"a\nb\"",
     "input:5: the closing quote of a string is missing on this line"},
    {"TabInString", "\"a\tb\"", "input:5: a tab in a string is written \\t"},
    {"LastControlCharacter", "\"a\x1f\"",
     "input:5: a control character is no character of a configuration"},
    {"SingleQuotes", "'red'", "input:5: a string stands in double quotes, not in single ones"},
    {"NoQuotes", "red", "input:5: a value (text stands in double quotes) is expected before red"},
    {"WordBehind", "\"red\"x", "input:5: a comma or } is expected before x"},
    {"Comment", "\"red\" // why", "input:5: JSON has no comments"},
};

class JsonLeaf : public testing::TestWithParam<LeafCase> {};

TEST_P(JsonLeaf, IsReadOrRefused) {
  EXPECT_EQ(VrfIn(JsonWithL3("\"name\": \"7\",\n\"vrf\": " + GetParam().text + "\n")),
            GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Texts, JsonLeaf, testing::ValuesIn(kJsonLeaves),
                         [](const auto& row) { return std::string(row.param.name); });

const LeafCase kXmlLeaves[] = {
    {"Plain", "red", "red"},
    {"Empty", "", ""},
    {"CommentInside", "r<!-- e -->d", "rd"},
    {"CommentBefore", "<!-- which? -->red", "red"},
    {"CommentBehind", "red<!-- done -->", "red"},
    {"CommentWithTag", "r<!-- </vrf> -->ed", "red"},
    {"OnlyComment", "<!-- none -->", ""},
    {"ProcessingInstruction", "re<?x </vrf> ?>d", "red"},
    {"Cdata", "<![CDATA[red]]>", "red"},
    {"CdataWithMarkup", "a<![CDATA[<b>&amp;]]>c", "a<b>&amp;c"},
    {"CdataWithGreater", "<![CDATA[a>b]]>", "a>b"},
    {"CdataEnds", "<![CDATA[]]]]><![CDATA[>]]>", "]]>"},
    {"TwoCdata", "<![CDATA[a]]><![CDATA[b]]>", "ab"},
    {"PredefinedEntities", "&lt;&gt;&amp;&quot;&apos;", "<>&\"'"},
    {"References", "&#x72;&#101;d&#x1F600;", "red\xf0\x9f\x98\x80"},
    {"LeadingZerosInReference", "&#0000000000000000000101;", "e"},
    {"CarriageReturn", "a\r\nb\rc", "a\nb\nc"},
    {"CarriageReturnReference", "a&#13;b", "a\rb"},
    {"LineEnds", "a\n\nb", "a\n\nb"},
    {"GreaterThan", "a>b", "a>b"},
    {"TwoBrackets", "a]]b", "a]]b"},
    {"ReferencePastUnicode", "&#4294967361;", "input:5: &#4294967361; is no character of XML"},
    {"ReferenceToControl", "&#1;", "input:5: &#1; is no character of XML"},
    {"ReferenceToSurrogate", "&#xD83D;", "input:5: &#xD83D; is no character of XML"},
    {"UnknownEntity", "&nbsp;",
     "input:5: &nbsp; is not known: XML itself has &lt; &gt; &amp; &quot; &apos;"},
    {"Ampersand", "a & b", "input:5: & begins no reference here; in text it is &amp;"},
    {"LessThan", "a < b", "input:5: < begins no tag here; in text it is &lt;"},
    {"CdataEndInText", "a]]>b", "input:5: ]]> stands in text as ]]&gt;"},
    {"TwoHyphensInComment", "<!-- a -- b -->", "input:5: -- may not stand in a comment"},
    {"ControlCharacter", "a\x01", "input:5: a control character in the text"},
    {"ElementInside", "<b/>",
     "input:5: <b> stands in <vrf>, which has a value and nothing else; is </vrf> missing?"},
    {"DeclarationInside", "<?xml version=\"1.0\"?>",
     "input:5: an XML declaration stands at the very beginning of the text"},
};

class XmlLeaf : public testing::TestWithParam<LeafCase> {};

TEST_P(XmlLeaf, IsReadOrRefused) {
  EXPECT_EQ(VrfIn(XmlWithL3("<name>7</name>\n<vrf>" + GetParam().text + "</vrf>\n")),
            GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Texts, XmlLeaf, testing::ValuesIn(kXmlLeaves),
                         [](const auto& row) { return std::string(row.param.name); });

// What is taken out of a leaf or written anew in it does not move the lines behind it.
TEST(XmlLeaves, KeepTheLinesBehindThem) {
  for (const LeafCase& row : kXmlLeaves) {
    if (row.value.starts_with("input:")) continue;  // refused before
    const auto lines = std::count(row.text.begin(), row.text.end(), '\n');
    // libyang finds this fault, so it is its line numbers that count.
    const std::string error =
        ErrorOfText(XmlWithL3("<vrf>" + row.text + "</vrf><name colour=\"red\">7</name>\n"));
    EXPECT_TRUE(error.starts_with("input:" + std::to_string(4 + lines) + ": ")) << row << error;
  }
}

const std::string kRoot = "<config xmlns=\"urn:velmor:yang:config\"/>";
const char kMisplaced[] = "an XML declaration stands at the very beginning of the text";

const TextErrorCase kDocuments[] = {
    {"XmlDeclaration", "<?xml version=\"1.0\"?>" + kRoot, "accepted"},
    {"XmlDeclarationInSingleQuotes", "<?xml version='1.0' standalone='yes' ?>" + kRoot, "accepted"},
    {"UpperAndLowerCaseUtf8", "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + kRoot, "accepted"},
    {"Ascii", "<?xml version=\"1.0\" encoding=\"US-ASCII\"?>" + kRoot, "accepted"},
    {"CarriageReturnsBetweenTags", "<?xml version=\"1.0\"?>\r\n" + kRoot + "\r\n", "accepted"},
    {"OtherEncoding", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + kRoot,
     "input:1: the XML declaration says ISO-8859-1, but only UTF-8 is read"},
    {"OtherVersion", "<?xml version=\"1.1\"?>" + kRoot,
     "input:1: XML 1.1 is not read, only XML 1.0"},
    {"DeclarationWithoutVersion", "<?xml encoding=\"UTF-8\"?>" + kRoot,
     "input:1: the XML declaration is not well-formed, such as <?xml version=\"1.0\"?>"},
    {"BrokenDeclaration", "<?xml version=1.0?>" + kRoot,
     "input:1: the XML declaration is not well-formed, such as <?xml version=\"1.0\"?>"},
    {"DeclarationBehindBlank", "\n<?xml version=\"1.0\"?>" + kRoot,
     std::string("input:2: ") + kMisplaced},
    {"SecondDeclaration", "<?xml version=\"1.0\"?><?xml version=\"1.0\"?>" + kRoot,
     std::string("input:1: ") + kMisplaced},
    {"DeclarationBetweenRoots",
     kRoot + "<?xml version=\"1.0\"?><internal xmlns=\"urn:velmor:yang:internal\"/>",
     std::string("input:1: ") + kMisplaced},
    {"NamespaceTwice",
     "<config xmlns=\"urn:velmor:yang:config\" xmlns=\"urn:velmor:yang:config\"/>",
     "input:1: xmlns stands twice in one tag"},
    {"AttributeTwice", "<data a='1' a='2'/>", "input:1: a stands twice in one tag"},
    {"PrefixNotDeclared", "<c:config/>",
     "input:1: <c:config> has a prefix that no xmlns: declares, on its name or on an attribute"},
    {"AttributeWithoutQuotes", "<config xmlns=urn:velmor:yang:config/>",
     "input:1: the value of an attribute stands in quotes: urn:velmor:yang:conf"},
    {"NoBlankBetweenAttributes", "<data a='1'b='2'/>", "input:1: not well-formed at b='2'/>"},
    {"TagWithoutName", "< config/>", "input:1: < begins no tag here; in text it is &lt;"},
    {"EndTagFirst", "</config>", "input:1: this end tag closes no element"},
    {"CdataAtTheTop", "<![CDATA[x]]>" + kRoot,
     "input:1: an element is expected before <![CDATA[x]]><config"},
    {"ReferenceToBlankBetweenTags",
     "<data>&#10;<config xmlns=\"urn:velmor:yang:config\">&#32;<interface/>&#x20;</config></data>",
     "accepted"},
    {"CdataBetweenTags",
     "<config xmlns=\"urn:velmor:yang:config\"><![CDATA[ ]]><interface/></config>", "accepted"},
    {"EmptyObject", "{}", "accepted"},
    {"EmptyObjectAndBlanks", " { \n} \r\n\t", "accepted"},
    {"CommaBeforeBrace", "{\"velmor-config:config\": {},\n}", "input:2: comma before }"},
    {"CommaBeforeBracket", JsonWithL3("\"name\": \"7\"\n},\n"),
     "input:6: a value is expected before }"},
    {"TwoCommas", "{\"velmor-config:config\": {},,}",
     "input:1: the name of a member, in double quotes, is expected before ,"},
    {"CommaFirst", "{,}", "input:1: the name of a member, in double quotes, is expected before ,"},
    {"NoComma", "{\"velmor-config:config\": {}\n\"velmor-internal:internal\": {}}",
     "input:2: a comma or } is expected before \"velmor-internal"},
    {"NoColon", "{\"velmor-config:config\" {}}", "input:1: a colon is expected before {"},
    {"NameWithoutQuotes", "{config: {}}",
     "input:1: the name of a member, in double quotes, is expected before config"},
    {"WrongBracket", "{\"velmor-config:config\": {]}",
     "input:1: the name of a member, in double "
     "quotes, is expected before ]"},
    {"TextBehind", "{} x", "input:1: text after the end of the configuration"},
    {"CommentBehind", "{} # x", "input:1: text after the end of the configuration"},
};

class Document : public testing::TestWithParam<TextErrorCase> {};

TEST_P(Document, IsReadOrRefused) { EXPECT_EQ(ErrorOfText(GetParam().text), GetParam().error); }

INSTANTIATE_TEST_SUITE_P(Texts, Document, testing::ValuesIn(kDocuments),
                         [](const auto& row) { return std::string(row.param.name); });

struct NumberCase {
  const char* text;
  bool is_json;
};

// Numbers of JSON, whatever the leaf makes of them.
const NumberCase kNumbers[] = {
    {"0", true},   {"-0", true},    {"10", true},     {"-1", true},        {"1.5", true},
    {"1e2", true}, {"1E+2", true},  {"1.0e-2", true}, {"01", false},       {"-01", false},
    {"+1", false}, {".5", false},   {"1.", false},    {"1e", false},       {"1e+", false},
    {"-", false},  {"0x10", false}, {"NaN", false},   {"Infinity", false},
};

TEST(JsonNumber, HasTheFormOfTheGrammar) {
  struct Ignore : ipvald::JsonHandler {
    void BeginObject(size_t) override {}
    void EndObject(size_t) override {}
    void BeginArray(size_t) override {}
    void EndArray(size_t) override {}
    void Member(std::string_view, size_t) override {}
    void Scalar(ipvald::JsonKind, std::string_view, size_t) override {}
  };
  for (const NumberCase& row : kNumbers) {
    const ipvald::SourceText source{"input", "[" + std::string(row.text) + "]"};
    Ignore ignore;
    ipvald::TextEdits edits;
    bool is_json = true;
    try {
      ipvald::ReadJson(source, ignore, edits);
    } catch (const ipvald::InputError&) {
      is_json = false;
    }
    EXPECT_EQ(is_json, row.is_json) << row.text;
  }
}

}  // namespace
