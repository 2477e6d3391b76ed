// Configurations in XML as libyang gets them: what is taken off, copied or written anew.
#include "xml_configuration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

#include "host/input/small_model.h"

namespace ipvald {
namespace {

std::string Prepared(const std::string& text) {
  try {
    return XmlConfiguration(tests::SmallModel(), {"input", text}, SchemaWalk::Depth::kStructure);
  } catch (const InputError& error) {
    return error.what();
  }
}

// A tag of NETCONF's base namespace, and the blanks that it becomes.
const std::string kData = "<data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">";
const std::string kReply = "<rpc-reply xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">";

std::string Blanks(const std::string& tag) { return std::string(tag.size(), ' '); }

std::string Single(const std::string& content) {
  return "<single xmlns=\"urn:small\">" + content + "</single>";
}

struct TextCase {
  const char* name;
  std::string text;
  std::string prepared;
};

std::ostream& operator<<(std::ostream& out, const TextCase& row) { return out << row.name; }

const auto kRowName = [](const auto& row) { return std::string(row.param.name); };

const TextCase kWrappers[] = {
    {"None", Single("a"), Single("a")},
    {"Data", "<data>\n" + Single("a") + "\n</data>", "      \n" + Single("a") + "\n       "},
    {"Config", "<config>" + Single("a") + "</config >", "        " + Single("a") + "          "},
    {"DataOfNetconf", kData + Single("a") + "</data>", Blanks(kData) + Single("a") + "       "},
    {"DataInAReply", kReply + "\n<data/></rpc-reply>",
     Blanks(kReply) + "\n       " + "            "},
    {"TagOfTwoLines", "<data\n a='1'>" + Single("a") + "</data\n>",
     "     \n       " + Single("a") + "      \n "},
    {"Declaration", "<data xmlns:s=\"urn:small\"><s:single>a</s:single></data>",
     Blanks("<data xmlns:s=\"urn:small\">") +
         "<s:single xmlns:s=\"urn:small\">a</s:single>       "},
    {"DeclarationForEachElement",
     "<data xmlns:s='urn:small'><s:single/><s:top><s:inner/></s:top></data>",
     Blanks("<data xmlns:s='urn:small'>") + "<s:single xmlns:s=\"urn:small\"/>" +
         "<s:top xmlns:s=\"urn:small\"><s:inner/></s:top>       "},
    {"DefaultNamespaceOfAnInnerWrapper",
     "<rpc-reply xmlns:x='urn:x'><data xmlns=''>" + Single("a") + "</data></rpc-reply>",
     Blanks("<rpc-reply xmlns:x='urn:x'><data xmlns=''>") +
         "<single xmlns:x=\"urn:x\" xmlns=\"urn:small\">a</single>" +
         Blanks("</data></rpc-reply>")},
    {"InnerDeclarationWins",
     "<rpc-reply xmlns:s='urn:x'><data xmlns:s='urn:small'><s:single/></data></rpc-reply>",
     Blanks("<rpc-reply xmlns:s='urn:x'><data xmlns:s='urn:small'>") +
         "<s:single xmlns:s=\"urn:small\"/>" + Blanks("</data></rpc-reply>")},
    {"OwnDeclarationWins", "<data xmlns:s='urn:x'><s:single xmlns:s='urn:small'/></data>",
     Blanks("<data xmlns:s='urn:x'>") + "<s:single xmlns:s='urn:small'/>       "},
    {"NamespaceThatIsEscaped", "<data xmlns:s='a&quot;&amp;&lt;'>" + Single("") + "</data>",
     Blanks("<data xmlns:s='a&quot;&amp;&lt;'>") +
         "<single xmlns:s=\"a&quot;&amp;&lt;\" xmlns=\"urn:small\"></single>       "},
};

const TextCase kContents[] = {
    {"PlainText", Single("a\nb > ]]"), Single("a\nb > ]]")},
    {"Comment", Single("a<!-- & -->b"), Single("ab")},
    {"CommentOfTwoLines", Single("a<!--\n\n-->b"), "<single xmlns=\"urn:small\">ab</single\n\n>"},
    {"ProcessingInstruction", Single("<?a b?>"), Single("")},
    {"References", Single("&#65;&lt;&gt;&amp;&quot;&apos;&#10;&#13;"),
     Single("A&lt;&gt;&amp;&quot;'&#10;&#13;")},
    {"Cdata", Single("<![CDATA[<&]]>"), Single("&lt;&amp;")},
    {"CarriageReturn", Single("a\r\nb"), "<single xmlns=\"urn:small\">a&#10;b</single\n>"},
    {"BlankInTheEndTag", "<single xmlns=\"urn:small\">&#65;\n</single >",
     "<single xmlns=\"urn:small\">A&#10;</single \n>"},
    {"DeclarationAndCommentsAround",
     "<?xml version=\"1.0\"?>\n<!-- a\n -->" + Single("b") + "<!---->",
     "                     \n      \n    " + Single("b") + "       "},
    {"CommentBetweenElements", "<top xmlns=\"urn:small\"><!-- a --><inner/>\n<?b?></top>",
     "<top xmlns=\"urn:small\">          <inner/>\n     </top>"},
    {"BlanksThatAreReferences", "<top xmlns=\"urn:small\">&#32;\n&#10;<inner/></top>",
     "<top xmlns=\"urn:small\">     \n     <inner/></top>"},
    {"EmptyCdataBetweenElements", "<top xmlns=\"urn:small\"><![CDATA[\n]]><inner/></top>",
     "<top xmlns=\"urn:small\">         \n   <inner/></top>"},
    {"AnydataIsLeftAsItIs",
     "<top xmlns=\"urn:small\"><any><x a=\"1\">b<!-- c -->&#65;</x></any></top>",
     "<top xmlns=\"urn:small\"><any><x a=\"1\">b<!-- c -->&#65;</x></any></top>"},
    {"LeafBehindALeafThatIsWrittenAnew",
     "<top xmlns=\"urn:small\"><word>&#65;</word><word>b</word></top>",
     "<top xmlns=\"urn:small\"><word>A</word><word>b</word></top>"},
};

class Text : public testing::TestWithParam<TextCase> {};

TEST_P(Text, IsPrepared) {
  const std::string prepared = Prepared(GetParam().text);
  EXPECT_EQ(prepared, GetParam().prepared);
  EXPECT_EQ(std::count(prepared.begin(), prepared.end(), '\n'),
            std::count(GetParam().text.begin(), GetParam().text.end(), '\n'));
}

INSTANTIATE_TEST_SUITE_P(Wrappers, Text, testing::ValuesIn(kWrappers), kRowName);
INSTANTIATE_TEST_SUITE_P(Contents, Text, testing::ValuesIn(kContents), kRowName);

const TextCase kErrors[] = {
    {"TextBetweenElements", "<top xmlns=\"urn:small\">\n<inner/>\n a <inner/></top>",
     "input:3: text in <top>, which holds elements and no text: \"a\""},
    {"TextInCdataBetweenElements", "<top xmlns=\"urn:small\"><![CDATA[a]]></top>",
     "input:1: text in <top>, which holds elements and no text: \"a\""},
    {"WrapperBehindAnElement", Single("a") + "\n<data/>",
     "input:2: <data> of the namespace \"\" is no wrapper that is known; that of NETCONF is <data "
     "xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"},
    {"ReplyInAReply", "<rpc-reply>\n<rpc-reply/></rpc-reply>",
     "input:2: <rpc-reply> in an <rpc-reply>, which holds <data>"},
    {"SecondDataInAReply", "<rpc-reply><data/>\n<data/></rpc-reply>",
     "input:2: element behind the end of the NETCONF wrapper"},
    {"AttributeOfALeafListEntry", "<top xmlns=\"urn:small\">\n<word a=\"1\">b</word></top>",
     "input:2: the attribute a of <word> is not read; values are elements, such as <a>...</a>"},
    {"ContainerTwice", "<top xmlns=\"urn:small\"><inner/>\n<inner/></top>",
     "input:2: <inner> stands twice in one <top>; the first is on line 1"},
    {"EntryTwice",
     "<top xmlns=\"urn:small\"><entry><name>a</name><number>1</number></entry>\n"
     "<entry><name>a</name><number>1</number></entry></top>",
     "input:2: a second <entry> with name \"a\", number \"1\"; the first is on line 1"},
};

class Error : public testing::TestWithParam<TextCase> {};

TEST_P(Error, IsToldAtItsLine) { EXPECT_EQ(Prepared(GetParam().text), GetParam().prepared); }

INSTANTIATE_TEST_SUITE_P(Texts, Error, testing::ValuesIn(kErrors), kRowName);

// A look at the values tells what a look at the structure leaves to libyang.
TEST(Value, IsLookedAtWhenAskedFor) {
  const SourceText source{"input", "<types xmlns=\"urn:small\">\n<uint8>256</uint8></types>"};
  EXPECT_EQ(XmlConfiguration(tests::SmallModel(), source, SchemaWalk::Depth::kStructure),
            source.text);
  try {
    XmlConfiguration(tests::SmallModel(), source, SchemaWalk::Depth::kValues);
    ADD_FAILURE() << "accepted";
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(),
                 "input:2: <uint8> is \"256\", but takes a whole number from 0 to 255");
  }
}

}  // namespace
}  // namespace ipvald
