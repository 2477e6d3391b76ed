// Reading configurations: what is accepted in which form, and the one line that each bad input
// gets.
#include "configuration_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

#include "configuration_text.h"
#include "one_line.h"
#include "store/diff.h"
#include "support/data_model.h"

namespace ipvald {
namespace {

using SnapshotPtr = std::shared_ptr<const store::Snapshot>;

const std::string kBare =
    "<config xmlns=\"urn:velmor:yang:config\"><interface>"
    "<l3 xmlns=\"urn:velmor:yang:ip-app\"><name>7</name><vrf>red</vrf></l3>"
    "</interface></config>";

const std::string kBareJson =
    R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":"7","vrf":"red"}]}}})";

size_t CountChanges(const store::Snapshot& from, const store::Snapshot& to) {
  size_t count = 0;
  store::VisitChanges(from, to, [&count](const store::Change&) {
    ++count;
    return store::VisitResult::kRecurse;
  });
  return count;
}

struct TextCase {
  const char* name;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const TextCase& row) { return out << row.name; }

std::string NameOfCase(const testing::TestParamInfo<TextCase>& info) { return info.param.name; }

const char kBase[] = "urn:ietf:params:xml:ns:netconf:base:1.0";

std::string InBase(const std::string& element) {
  return "<" + element + " xmlns=\"" + kBase + "\">";
}

const std::string kPrefixedChild =
    "<c:config><c:interface><a:l3><a:name>7</a:name><a:vrf>red</a:vrf></a:l3></c:interface>"
    "</c:config>";

// Each of them holds the same configuration as kBare.
const TextCase kSameConfiguration[] = {
    {"Bare", kBare},
    {"Json", kBareJson},
    {"JsonWithByteOrderMark", "\xef\xbb\xbf" + kBareJson},
    {"ByteOrderMark", "\xef\xbb\xbf" + kBare},
    {"XmlDeclaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + kBare},
    {"BlanksBefore", "\n \t\r\n" + kBare},
    {"BlanksAndCommentAfter", kBare + "\n<!-- end -->\n"},
    {"SecondRoot", kBare + "<internal xmlns=\"urn:velmor:yang:internal\"/>"},
    {"DataWrapper", InBase("data") + kBare + "</data>"},
    {"ConfigWrapper", InBase("config") + "\n" + kBare + "\n</config>"},
    {"WrapperWithoutNamespace", "<data>" + kBare + "</data>"},
    {"ConfigWrapperWithoutNamespace", "<config>" + kBare + "</config>"},
    {"PrefixedWrapper", "<nc:data xmlns:nc=\"" + std::string(kBase) + "\">" + kBare + "</nc:data>"},
    {"RpcReply", InBase("rpc-reply") + "<data>" + kBare + "</data></rpc-reply>"},
    {"RpcReplyWithAttributes", "<?xml version=\"1.0\"?>\n<rpc-reply message-id='1' xmlns='" +
                                   std::string(kBase) + "'>\n<data>" + kBare +
                                   "</data>\n</rpc-reply>\n"},
    {"OtherAttributesOnTheWrapper",
     "<data a='1' xmlns:c=\"urn:velmor:yang:config\" b=\">\" xmlns:a='urn:velmor:yang:ip-app'>" +
         kPrefixedChild + "</data>"},
    {"DeclarationsOnTheWrapper",
     "<data xmlns:c=\"urn:velmor:yang:config\" xmlns:a='urn:velmor:yang:ip-app'>" + kPrefixedChild +
         "</data>"},
    {"DeclarationsOnBothWrappers",
     "<rpc-reply xmlns:c=\"urn:velmor:yang:config\">"
     "<data\nxmlns:a\n=\n'urn:velmor:yang:ip-app'\n>" +
         kPrefixedChild + "</data></rpc-reply>"},
    {"InnerDeclarationWins",
     "<rpc-reply xmlns:c=\"urn:nothing\"><data xmlns:c=\"urn:velmor:yang:config\""
     " xmlns:a='urn:velmor:yang:ip-app'>" +
         kPrefixedChild + "</data></rpc-reply>"},
    {"CommentsThatLookLikeTags", "<data><!-- </data> -->" + kBare + "<!-- <data> --></data>"},
    {"ProcessingInstruction", "<data><?x </data> ?>" + kBare + "</data>"},
    {"SecondRootInTheWrapper",
     "<data>" + kBare + "<internal xmlns=\"urn:velmor:yang:internal\"/></data>"},
    {"JsonData", "{\"data\": " + kBareJson + "}"},
    {"JsonRestconfData", " {\n\"ietf-restconf:data\" :\n" + kBareJson + "\n}\n"},
};

class SameConfiguration : public testing::TestWithParam<TextCase> {};

TEST_P(SameConfiguration, AsBare) {
  const SnapshotPtr bare = ParseText(kBare);
  ASSERT_GT(CountChanges(*store::Snapshot::Empty(tests::DataModel()), *bare), 0u);
  EXPECT_EQ(CountChanges(*bare, *ParseText(GetParam().text)), 0u);
}

INSTANTIATE_TEST_SUITE_P(Forms, SameConfiguration, testing::ValuesIn(kSameConfiguration),
                         NameOfCase);

const TextCase kEmptyConfigurations[] = {
    {"EmptyObject", "{}"},
    {"EmptyWrapper", "<data/>"},
    {"WrapperWithBlanks", InBase("data") + "\n</data>"},
    {"EmptyDataInReply", InBase("rpc-reply") + "<data/></rpc-reply>"},
    {"EmptyJsonWrapper", "{\"data\": {}}"},
};

class EmptyConfiguration : public testing::TestWithParam<TextCase> {};

TEST_P(EmptyConfiguration, IsAccepted) {
  EXPECT_EQ(CountChanges(*store::Snapshot::Empty(tests::DataModel()), *ParseText(GetParam().text)),
            0u);
}

INSTANTIATE_TEST_SUITE_P(Forms, EmptyConfiguration, testing::ValuesIn(kEmptyConfigurations),
                         NameOfCase);

const TextErrorCase kErrors[] = {
    {"Empty", "", "input: the file is empty"},
    {"OnlyBlanks", " \n\t\r\n", "input: the file is empty"},
    {"OnlyByteOrderMark", "\xef\xbb\xbf", "input: the file is empty"},
    {"OtherText", "hello", "input:1: neither XML nor JSON: it begins with \"hello\""},
    {"JsonArray", "[]", "input:1: a JSON array, but a configuration is an object, {...}"},
    {"Utf16", std::string("\xff\xfe<\0c\0", 6),
     "input:1: neither XML nor JSON: it is in UTF-16, not in UTF-8"},
    {"BinaryGarbage",
     "\x7f"
     "ELF\x02\x01",
     "input:1: neither XML nor JSON: binary data"},
    {"NotUtf8", "{\n\"\xff\"", "input:2: not UTF-8; convert the file, such as by iconv -t UTF-8"},
    {"OverlongUtf8", "{\"\xc0\xaf\"",
     "input:1: not UTF-8; convert the file, such as by iconv -t UTF-8"},
    {"SurrogateInUtf8", "{\"\xed\xa0\x80\"",
     "input:1: not UTF-8; convert the file, such as by iconv -t UTF-8"},
    {"CutUtf8", "{\"\xe2\x82", "input:1: not UTF-8; convert the file, such as by iconv -t UTF-8"},
    {"NoCharacter", "{\"\n\xef\xbf\xbe\"}",
     "input:2: U+FFFE and U+FFFF are no characters of a configuration"},
    {"LastCharacterBeforeThem", "{\"\xef\xbf\xbd\": 1}",
     "input:1: \"\xef\xbf\xbd\" has no module name and is not known in the configuration, which holds "
     "\"KX-RTM-MIB:KX-RTM-MIB\", \"velmor-internal:internal\", \"velmor-config:config\", "
     "\"velmor-static-route:rtmStaticRtEntry-global\""},
    {"NulByte", std::string("{}\n\n\0", 5), "input:3: NUL byte in the text"},
    {"TruncatedXml", "<config xmlns=\"urn:velmor:yang:config\">\n<interface>\n",
     "input:3: the text ends inside <interface>, which begins on line 2"},
    {"TruncatedXmlInTag", "<config xmlns=\"urn:velmor:yang:config\">\n<interf",
     "input:2: the text ends inside a tag, which begins on line 2"},
    {"UnclosedXmlComment", "<!-- <config/>",
     "input:1: the text ends inside a comment, which begins on line 1"},
    {"MismatchedTag", "<config xmlns=\"urn:velmor:yang:config\">\n</confix>",
     "input:2: </confix> cannot close <config>, which begins on line 1"},
    {"TextAfterXml", kBare + "\njunk", "input:2: text after the end of the configuration: junk"},
    {"TruncatedJson", "{\"velmor-config:config\":\n{",
     "input:2: the text ends inside an object, which begins on line 2"},
    {"JsonSyntax", "{\"velmor-config:config\":\n{\"interface\":}}",
     "input:2: a value is expected before }"},
    {"TextAfterJson", kBareJson + "\n\n{}", "input:3: text after the end of the configuration"},
    {"UnknownElement", XmlWithL3("<name>7</name>\n<colour>red</colour>"),
     "input:5: <colour> is not known in <l3>, which holds <name>, <vrf>, <lower-layer-if>, <ipv4>, <ipv6>"},
    {"UnknownNamespace", "<config xmlns=\"urn:x\"/>",
     "input:1: <config> is written <config xmlns=\"urn:velmor:yang:config\"> here, or with a prefix of that namespace"},
    {"NoNamespace", "<configuration/>",
     "input:1: <configuration> has no namespace (xmlns) and is not known in the configuration, which holds <KX-RTM-MIB>, <internal>, <config>, <rtmStaticRtEntry-global>"},
    {"UnknownJsonMember", "{\"velmor-config:config\":{\n\"colour\":1}}",
     "input:2: \"colour\" is not known in \"config\", which holds \"interface\""},
    {"ValueOutOfRange",
     XmlWithL3("<name>7</name>\n<lower-layer-if><vlan>4095</vlan></lower-layer-if>"),
     "input:5: <vlan> is \"4095\", but takes a whole number from 1 to 4094: A VLAN identifier is 1 "
     "to 4094."},
    {"ValueOfOtherType",
     XmlWithL3("<name>7</name>\n<lower-layer-if><vlan>x</vlan></lower-layer-if>"),
     "input:5: <vlan> is \"x\", but takes a whole number from 1 to 4094: A VLAN identifier is 1 to "
     "4094."},
    {"DuplicateEntry",
     XmlWithL3("<name>7</name></l3><l3 xmlns=\"urn:velmor:yang:ip-app\"><name>7</name>"),
     "input:4: a second <l3> with name \"7\"; the first is on line 3"},
    {"DuplicateLeafInJson",
     R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":"7","vrf":"a","vrf":"b"}]}}})",
     "input:1: \"vrf\" stands twice in one \"l3\"; the first is on line 1"},
    {"MissingKey", XmlWithL3("<vrf>red</vrf>"), "input:3: this <l3> lacks its key <name>"},
    {"DocumentType", "<!DOCTYPE config [<!ENTITY a \"b\">]>\n" + kBare,
     "input:1: document type declarations are not accepted"},
    {"DocumentTypeInTheWrapper", "<data>\n<!DOCTYPE config>" + kBare + "</data>",
     "input:2: document type declarations are not accepted"},
    {"Entity", XmlWithL3("<name>&lol;</name>"),
     "input:4: &lol; is not known: XML itself has &lt; &gt; &amp; &quot; &apos;"},
    {"WrapperNotClosed", "\n<data>" + kBare,
     "input:2: the text ends inside <data>, which begins on line 2"},
    {"ReplyNotClosed", "<rpc-reply>\n<data>" + kBare + "</data>",
     "input:2: the text ends inside <rpc-reply>, which begins on line 1"},
    {"WrapperClosedByAnother", "<data>" + kBare + "\n</config>",
     "input:2: </config> cannot close <data>, which begins on line 1"},
    {"ElementAfterWrapper", "<data>" + kBare + "</data>\n" + kBare,
     "input:2: element behind the end of the NETCONF wrapper"},
    {"TruncatedInWrapper", "<data>\n<config xmlns=\"urn:velmor:yang:config\"",
     "input:2: the text ends inside a tag, which begins on line 2"},
    {"ErrorInWrapperKeepsItsLine",
     InBase("data") + "\n" + XmlWithL3("<name>7</name>\n<colour/>") + "</data>",
     "input:6: <colour> is not known in <l3>, which holds <name>, <vrf>, <lower-layer-if>, <ipv4>, <ipv6>"},
    {"WrapperInWrapper", "<data>\n<data/></data>",
     "input:2: <data> of the namespace \"\" is no wrapper that is known; that of NETCONF is <data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"},
    {"WrapperInOtherNamespace", "<data xmlns=\"urn:x\"/>",
     "input:1: <data> of the namespace \"urn:x\" is no wrapper that is known; that of NETCONF is <data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"},
    {"ErrorInJsonWrapperKeepsItsLine", "{\n\"data\":\n{\n\"colour:x\":1}}",
     "input:4: \"colour:x\": no module of the data model has the name \"colour\""},
    {"MemberBesideJsonWrapper", "{\"data\":\n{}, \"x\": {}}",
     "input:2: nothing may stand beside \"data\""},
};

class BadConfiguration : public testing::TestWithParam<TextErrorCase> {};

TEST_P(BadConfiguration, GetsOneLine) { EXPECT_EQ(ErrorOfText(GetParam().text), GetParam().error); }

INSTANTIATE_TEST_SUITE_P(Texts, BadConfiguration, testing::ValuesIn(kErrors),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(BadConfigurationValue, IsCutInTheMessage) {
  const std::string error = ErrorOfText(XmlWithL3(
      "<name>7</name><ipv4><address><ip>" + std::string(1000000, 'x') + "</ip></address></ipv4>"));
  EXPECT_EQ(error, "input:4: <ip> is \"" + std::string(60, 'x') +
                       "...\": Not an IPv4 address with prefix length, such as 192.0.2.1/24.");
}

// Files that cannot be read. `file` is a name in a folder that the test makes.
class UnreadableFile : public testing::Test {
 protected:
  UnreadableFile() {
    std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
    folder_ = mkdtemp(pattern.data());
  }
  ~UnreadableFile() override { std::filesystem::remove_all(folder_); }

  std::string ErrorOfFile(const std::string& file) {
    try {
      ReadConfiguration(tests::DataModel(), file);
    } catch (const InputError& error) {
      return error.what();
    }
    return "accepted";
  }

  std::filesystem::path folder_;
};

TEST_F(UnreadableFile, Missing) {
  const std::string file = folder_ / "missing.xml";
  EXPECT_EQ(ErrorOfFile(file), file + ": No such file or directory");
}

TEST_F(UnreadableFile, Directory) {
  EXPECT_EQ(ErrorOfFile(folder_), folder_.string() + ": Is a directory");
}

// Gives up the rights of root, who may read every file, until it goes out of scope.
class WithoutRoot {
 public:
  WithoutRoot() : user_(geteuid()), changed_(user_ != 0 || seteuid(kNobody) == 0) {}
  ~WithoutRoot() { EXPECT_EQ(seteuid(user_), 0); }
  WithoutRoot(const WithoutRoot&) = delete;
  WithoutRoot& operator=(const WithoutRoot&) = delete;

  bool changed() const { return changed_; }

 private:
  static constexpr uid_t kNobody = 65534;
  uid_t user_;
  bool changed_;
};

TEST_F(UnreadableFile, WithoutPermission) {
  const std::string file = folder_ / "secret.xml";
  std::ofstream(file) << kBare;
  chmod(file.c_str(), 0);
  chmod(folder_.c_str(), 0755);
  tests::DataModel();  // may itself be out of the other user's reach
  const WithoutRoot without_root;
  ASSERT_TRUE(without_root.changed());
  EXPECT_EQ(ErrorOfFile(file), file + ": Permission denied");
}

TEST_F(UnreadableFile, NameWithNewline) {
  EXPECT_EQ(ErrorOfFile(folder_ / "a\nb"),
            (folder_ / "a b").string() + ": No such file or directory");
}

TEST_F(UnreadableFile, BigFileOfAnotherKindIsNotReadToItsEnd) {
  const std::string file = folder_ / "big";
  std::ofstream(file) << "garbage";
  // As large as a file can be that has no more than a few bytes on the disk.
  std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
  EXPECT_EQ(ErrorOfFile(file), file + ":1: neither XML nor JSON: binary data");
}

TEST_F(UnreadableFile, LargerThanTheLimit) {
  const std::string file = folder_ / "big.xml";
  std::ofstream(file) << "<config>";
  std::filesystem::resize_file(file, kMaxConfigurationSize + 1);
  EXPECT_EQ(ErrorOfFile(file), file + ": larger than 256 MiB");
}

TEST_F(UnreadableFile, GoodFileIsRead) {
  const std::string file = folder_ / "good.xml";
  std::ofstream(file) << kBare;
  EXPECT_EQ(ErrorOfFile(file), "accepted");
}

struct OneLineCase {
  const char* name;
  std::string text;
  std::string line;
};

std::ostream& operator<<(std::ostream& out, const OneLineCase& row) { return out << row.name; }

const OneLineCase kOneLineCases[] = {
    {"Empty", "", ""},
    {"Plain", "a b", "a b"},
    {"Newlines", "a\n\n b\r\n", "a b"},
    {"BlanksAround", "  a ", "a"},
    {"ControlBytes",
     "a\x1b[31m\x7f"
     "b",
     "a [31m b"},
    {"ControlCharacters",
     "a\xc2\x9b"
     "31mb\xc2\x80"
     "c\xc2\x9f"
     "d\xc2\xa0"
     "e",
     "a 31mb c d\xc2\xa0"
     "e"},
    {"Directions",
     "a\xe2\x80\xae"
     "b\xe2\x81\xa6"
     "c\xe2\x80\x8f"
     "d\xe2\x80\xa9"
     "e",
     "a b c d\xe2\x80\xa9"
     "e"},
    {"CutCharacter", "a\xe2", "a\xe2"},
    {"Longest", std::string(500, 'x'), std::string(500, 'x')},
    {"TooLong", std::string(501, 'x'), std::string(500, 'x') + "..."},
    {"CutBeforeACharacter", std::string(500, 'x') + "\xc3\xa4", std::string(500, 'x') + "..."},
    {"CutBehindACharacter", std::string(499, 'x') + "\xc3\xa4y",
     std::string(499, 'x') + "\xc3\xa4..."},
};

class OneLineText : public testing::TestWithParam<OneLineCase> {};

TEST_P(OneLineText, IsClean) { EXPECT_EQ(OneLine(GetParam().text), GetParam().line); }

INSTANTIATE_TEST_SUITE_P(Texts, OneLineText, testing::ValuesIn(kOneLineCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ipvald
