// What a hostile or broken file may cost: a time that grows with its size, and never more than the
// time limit.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "configuration_text.h"
#include "support/run_program.h"

namespace {

constexpr int kMany = 80000;  // where libyang alone takes half a minute and more

std::string Repeated(const std::string& piece, int times, const std::string& separator = "") {
  std::string text;
  for (int i = 0; i < times; ++i) {
    if (i > 0) text += separator;
    text += piece;
  }
  return text;
}

std::string Numbered(const std::string& begin, const std::string& middle, const std::string& end,
                     int times) {
  std::string text;
  for (int i = 0; i < times; ++i) {
    const std::string number = std::to_string(i);
    text.append(begin).append(number).append(middle).append(number).append(end);
  }
  return text;
}

const std::string kJsonL3 = "{\"velmor-config:config\": {\"interface\": {\"velmor-ip-app:l3\": [";

const TextErrorCase kLargeTexts[] = {
    {"Declarations",
     "<config xmlns=\"urn:velmor:yang:config\"" + Numbered(" xmlns:a", "=\"u", "\"", kMany) + "/>",
     "input:1: <config> has more than 256 attributes and namespace declarations"},
    {"Attributes", "<data" + Numbered(" a", "=\"", "\"", kMany) + "/>",
     "input:1: <data> has more than 256 attributes and namespace declarations"},
    {"EqualLeaves", XmlWithL3("<name>7</name>" + Repeated("<vrf>a</vrf>", kMany)),
     "input:4: <vrf> stands twice in one <l3>; the first is on line 4"},
    {"EqualContainers", Repeated("<internal xmlns=\"urn:velmor:yang:internal\"/>", kMany),
     "input:1: <internal> stands twice; the first is on line 1"},
    {"EqualMembers", "{" + Repeated("\"velmor-config:config\": {}", kMany, ",") + "}",
     "input:1: \"config\" stands twice; the first is on line 1"},
    {"EqualJsonEntries", kJsonL3 + Repeated("{\"name\": \"7\"}", kMany, ",") + "]}}}",
     "input:1: a second \"l3\" with name \"7\"; the first is on line 1"},
    {"EqualXmlEntries",
     XmlWithL3(Repeated("<name>7</name></l3><l3 xmlns=\"urn:velmor:yang:ip-app\">", kMany) +
               "<name>8</name>"),
     "input:4: a second <l3> with name \"7\"; the first is on line 3"},
    {"DeepArrays", "{\"velmor-config:config\": " + Repeated("[", kMany),
     "input:1: \"config\" takes an object, {...}"},
    {"Annotations",
     "{\"velmor-config:config\": {" + Repeated("\"@interface\": {}", kMany, ",") + "}}",
     "input:1: the annotation \"@interface\" is not read; leave it out"},
    {"LongName", "{\"" + std::string(4'000'000, 'a') + "\": 1}",
     "input:1: \"" + std::string(499, 'a') + "..."},
    {"ManyRoots",
     Numbered("<rtmStaticRtEntry-global xmlns=\"urn:velmor:yang:static-route\"><fte-index>",
              "</fte-index><network/><prefix-length>0</prefix-length><next-hop/><!--",
              "--></rtmStaticRtEntry-global>", kMany / 4) +
         "<x/>",
     "input:1: <x> has no namespace (xmlns) and is not known in the configuration, which holds "
     "<KX-RTM-MIB>, <internal>, <config>, <rtmStaticRtEntry-global>"},
    {"DeepElements", Repeated("<data>", kMany),
     "input:1: <data> of the namespace \"\" is no wrapper that is known; that of NETCONF is <data "
     "xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"},
};

class LargeText : public testing::TestWithParam<TextErrorCase> {};

TEST_P(LargeText, IsRefusedInTime) {
  const clock_t begin = clock();
  EXPECT_EQ(ErrorOfText(GetParam().text), GetParam().error);
  // A few milliseconds; a build with sanitizers on a busy machine takes a second.
  EXPECT_LT(static_cast<double>(clock() - begin) / CLOCKS_PER_SEC, 5.0);
}

INSTANTIATE_TEST_SUITE_P(Texts, LargeText, testing::ValuesIn(kLargeTexts),
                         [](const auto& row) { return std::string(row.param.name); });

// The last that is read, and one more.
TEST(Limits, AreAsDocumented) {
  const auto declarations = [](int count) {
    return "<config xmlns=\"urn:velmor:yang:config\"" +
           Numbered(" xmlns:a", "=\"u", "\"", count - 1) + "/>";
  };
  EXPECT_EQ(ErrorOfText(declarations(256)), "accepted");
  EXPECT_EQ(ErrorOfText(declarations(257)),
            "input:1: <config> has more than 256 attributes and namespace declarations");
  const auto attributes = [](int count) {
    return "<data xmlns:x=\"u\"" + Numbered(" a", "=\"", "\"", count - 1) + "/>";
  };
  EXPECT_EQ(ErrorOfText(attributes(256)), "accepted");
  EXPECT_EQ(ErrorOfText(attributes(257)),
            "input:1: <data> has more than 256 attributes and namespace declarations");
}

// What is different as text and one value for libyang still takes libyang long: the time limit ends
// it.
std::string OneAddressInManyForms() {
  std::string text = kJsonL3 + "{\"name\": \"7\", \"ipv6\": {\"address\": [";
  for (int i = 0; i < 1 << 17; ++i) {
    std::string address = "abcd:efab:cdef:abcd:efab:cdef:abcd:efab/64";
    for (int bit = 0, at = 0; bit < 17; ++at) {
      if (address[static_cast<size_t>(at)] == ':') continue;
      if ((i >> bit++ & 1) != 0) address[static_cast<size_t>(at)] -= 'a' - 'A';
    }
    text += (i == 0 ? "{\"ip\": \"" : ",{\"ip\": \"") + address + "\"}";
  }
  return text + "]}}]}}}";
}

class ReadingDeadline : public testing::Test {
 protected:
  ReadingDeadline() {
    std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
    folder_ = mkdtemp(pattern.data());
  }
  ~ReadingDeadline() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path folder_;
};

void ExpectOutOfTime(const ProgramResult& result, const std::string& name) {
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "ipvald: " + name + ": not read and checked within 1 s (--timeout)\n");
}

TEST_F(ReadingDeadline, EndsTheParser) {
  const std::string file = folder_ / "forms.json";
  std::ofstream(file) << OneAddressInManyForms();
  ExpectOutOfTime(RunProgram({IPAV_IPVALD, "check", "--timeout", "1", file}), file);
  ExpectOutOfTime(RunProgram({IPAV_IPVALD, "check", "--timeout", "1", "--running", file, "-"}),
                  file);
}

TEST_F(ReadingDeadline, EndsTheWaitForAPipe) {
  const std::string pipe = folder_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  ExpectOutOfTime(RunProgram({IPAV_IPVALD, "check", "--timeout", "1", pipe}), pipe);
  // Opened for writing, too, it never ends.
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  ExpectOutOfTime(RunProgram({IPAV_IPVALD, "check", "--timeout", "1", pipe}), pipe);
  close(writer);
}

// The limit is on reading: a plug-in that answers later than it still answers.
TEST_F(ReadingDeadline, IsOverOnceTheFilesAreRead) {
  const std::string example = IPAV_SOURCE_DIR "/examples/ra-running.json";
  const ProgramResult result = RunProgram(
      {IPAV_IPVALD, "check", "--timeout", "2", "--plugin", IPAV_MISBEHAVING_PLUGIN, example},
      {.environment = {"MISBEHAVE=validate:hang"}});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.out.find("no answer within 2 s"), std::string::npos) << result.out;
}

}  // namespace
