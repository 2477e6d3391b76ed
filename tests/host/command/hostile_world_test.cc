// The program in a world that means it no good: input without end or bottom, outputs that take
// nothing, crowds, and configurations beyond all limits. What a hostile plug-in does is in
// plugin_failure_test and process_tricks_test.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/run_program.h"

namespace {

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();

const std::string kExamples = IPAV_SOURCE_DIR "/examples/";
const std::string kRunning = kExamples + "ra-running.json";

void ExpectResult(const ProgramResult& result, int status, const std::string& out,
                  const std::string& err) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, err);
}

ProgramResult Shell(const std::string& command) { return RunProgram({"/bin/sh", "-c", command}); }

// Runs `ipvald check` with `text` on standard input.
ProgramResult CheckText(const std::string& text) {
  return RunProgram({IPAV_IPVALD, "check", "-"}, {text, {}});
}

// A folder that lasts as long as a test.
class Hostile : public testing::Test {
 protected:
  Hostile() {
    std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
    folder_ = mkdtemp(pattern.data());
  }
  ~Hostile() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path folder_;
};

// Memory is bounded by the largest configuration, held twice while it grows.
constexpr long kMaxMemoryKib = 600 * 1024;

// Input.

std::string Repeat(size_t times, const std::string& piece) {
  std::string text;
  text.reserve(times * piece.size());
  for (size_t i = 0; i < times; ++i) text += piece;
  return text;
}

const char kConfig[] = "<config xmlns=\"urn:velmor:yang:config\">";

// A configuration of one L3 interface that holds `inside`.
std::string Interface(const std::string& inside) {
  return std::string(kConfig) + "<interface><l3 xmlns=\"urn:velmor:yang:ip-app\">" + inside +
         "</l3></interface></config>";
}

// A configuration whose one L3 interface has a name that is refused, so that the text shows which
// name was read.
std::string Name(const std::string& text) { return Interface("<name>" + text + "</name>"); }

std::string Refused(const std::string& name) {
  return "rejected\npoint:      intf_l3_name_validation\npath:       /config/interface/l3\n"
         "message:    L3 interface name " +
         name + " contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, -)\n";
}

std::string Error(const std::string& text) { return "ipvald: standard input:" + text + "\n"; }

struct TextCase {
  const char* name;
  std::string text;
  int status;
  std::string out;
  std::string err;
};

std::ostream& operator<<(std::ostream& out, const TextCase& row) { return out << row.name; }

const std::string kNoDoctype = "1: document type declarations are not accepted";
const std::string kNoNamespace =
    " has no namespace (xmlns) and is not known in the configuration, which holds <KX-RTM-MIB>, "
    "<internal>, <config>, <rtmStaticRtEntry-global>";
const std::string kJsonLeaf =
    R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":)";

const TextCase kTexts[] = {
    // Nesting.
    {"XmlNested", Repeat(1000, kConfig) + Repeat(1000, "</config>"), 2, "",
     Error("1: <config> is not known in <config>, which holds <interface>")},
    {"XmlNestedInTheWrapper",
     std::string("<data>") + kConfig + Repeat(100'000, "<a>") + Repeat(100'000, "</a>") +
         "</config></data>",
     2, "", Error("1: <a> is not known in <config>, which holds <interface>")},
    {"XmlWrappersNested", Repeat(1000, "<data>") + Repeat(1000, "</data>"), 2, "",
     Error("1: <data> of the namespace \"\" is no wrapper that is known; that of NETCONF is <data "
           "xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">")},
    {"XmlNotClosed", Repeat(100'000, "<a>"), 2, "", Error("1: <a>" + kNoNamespace)},
    {"JsonArraysForAContainer",
     "{\"velmor-config:config\":" + Repeat(100'000, "[") + Repeat(100'000, "]") + "}", 2, "",
     Error("1: \"config\" takes an object, {...}")},
    {"JsonArraysForALeaf", kJsonLeaf + Repeat(100'000, "[") + Repeat(100'000, "]") + "}]}}}", 2, "",
     Error("1: \"name\" takes one value")},
    {"JsonArraysForMetadata",
     "{\"@velmor-config:config\":{\"velmor-config:x\":" + Repeat(100'000, "[") +
         Repeat(100'000, "]") + "}}",
     2, "", Error("1: the annotation \"@velmor-config:config\" is not read; leave it out")},
    {"JsonArraysNotClosed", kJsonLeaf + Repeat(100'000, "["), 2, "",
     Error("1: \"name\" takes one value")},
    {"JsonObjects",
     "{\"velmor-config:config\":" + Repeat(100'000, "{\"interface\":") + "{}" +
         Repeat(100'000, "}") + "}",
     2, "",
     Error("1: \"interface\" is not known in \"interface\", which holds \"velmor-ip-app:l3\", "
           "\"velmor-ip-app:loopback\", \"velmor-ip-app:mgmt\"")},
    {"JsonWrappersNested", Repeat(100'000, "{\"data\":") + "{}" + Repeat(100'000, "}"), 2, "",
     Error("1: \"data\" has no module name and is not known in the configuration, which holds "
           "\"KX-RTM-MIB:KX-RTM-MIB\", \"velmor-internal:internal\", \"velmor-config:config\", "
           "\"velmor-static-route:rtmStaticRtEntry-global\"")},
    // Document types and entities. Nothing is expanded, fetched or read.
    {"EntitiesOfEntities",
     "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY a \"ha\"><!ENTITY b \"&a;&a;&a;&a;\">"
     "<!ENTITY c \"&b;&b;&b;&b;\">]>" +
         Name("&c;"),
     2, "", Error(kNoDoctype)},
    {"EntityFromAFile", "<!DOCTYPE a [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>" + Name("&a;"), 2,
     "", Error(kNoDoctype)},
    {"ParameterEntity",
     "<!DOCTYPE a [<!ENTITY % a SYSTEM \"http://192.0.2.1/a\"> %a;]>" + Name("a"), 2, "",
     Error(kNoDoctype)},
    {"DocumentTypeBehindOtherThings", "\xef\xbb\xbf<!-- --><?a?><!DOCTYPE a>" + Name("a"), 2, "",
     Error(kNoDoctype)},
    {"DocumentTypeInside", Interface("<!DOCTYPE a><name>7</name>"), 2, "", Error(kNoDoctype)},
    {"DocumentTypeInAValue", Name("<!DOCTYPE a>7"), 2, "", Error(kNoDoctype)},
    {"DocumentTypeAtTheEnd", Name("7") + "<!DOCTYPE a [<!ENTITY a SYSTEM \"/etc/passwd\">]>", 2, "",
     Error(kNoDoctype)},
    {"EntityNotDeclared", Name("&lol;"), 2, "",
     Error("1: &lol; is not known: XML itself has &lt; &gt; &amp; &quot; &apos;")},
    {"CharacterNul", Name("a&#0;"), 2, "", Error("1: &#0; is no character of XML")},
    {"CharacterSurrogate", Name("a&#xD800;"), 2, "", Error("1: &#xD800; is no character of XML")},
    // What is read of values that are written in an odd way is what XML says.
    {"Predefined", Name("&lt;&gt;&amp;&apos;&quot;&#33;&#x3f;"), 1, Refused("<>&'\"!?"), ""},
    {"CData", Name("<![CDATA[<a>&amp;]]>"), 1, Refused("<a>&amp;"), ""},
    {"CDataBetweenText", Name("a<![CDATA[ ]]>b"), 1, Refused("a b"), ""},
    {"CDataAfterCData", Name("<![CDATA[a]]><![CDATA[ b]]>"), 1, Refused("a b"), ""},
    {"CDataNotClosed", Name("<![CDATA[a"), 2, "", Error("1: the text ends inside a CDATA section")},
    {"CommentInAValue", Name("a<!-- x -->!"), 1, Refused("a!"), ""},
    {"InstructionInAValue", Name("a<?x y?>!"), 1, Refused("a!"), ""},
    {"InstructionsAround", "<?xml-stylesheet href=\"http://192.0.2.1/\"?>" + Name("!") + "<?x?>", 1,
     Refused("!"), ""},
    {"SecondByteOrderMark", "\xef\xbb\xbf\xef\xbb\xbf" + Name("7"), 2, "",
     Error("1: neither XML nor JSON: it begins with \"\xef\xbb\xbf<config "
           "xmlns=\"urn:velmor:yang:config...\"")},
    {"NulInAValue", Name(std::string("a\0b", 3)), 2, "", Error("1: NUL byte in the text")},
    {"NotUtf8InAValue", Name("a\xc3("), 2, "",
     Error("1: not UTF-8; convert the file, such as by iconv -t UTF-8")},
};

// `count` namespace declarations.
std::string Declarations(int count, const std::string& prefix) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += " xmlns:" + prefix + std::to_string(i) + "=\"urn:x:" + std::to_string(i) + "\"";
  }
  return text;
}

// The declarations of a wrapper are repeated in every element inside, half a gigabyte in all here.
TEST(HostileWrapper, MayNotMakeMuchOutOfLittle) {
  std::string text = "<data" + Declarations(250, "p") + ">\n";
  for (int i = 0; i < 100'000; ++i) {
    text += "<rtmStaticRtEntry-global xmlns=\"urn:velmor:yang:static-route\"><fte-index>" +
            std::to_string(i) +
            "</fte-index><network/><prefix-length>0</prefix-length><next-hop/>"
            "</rtmStaticRtEntry-global>";
  }
  const ProgramResult refused = CheckText(text + "</data>");
  ExpectResult(refused, 2, "",
               Error("2: too many namespace declarations around the configuration"));
  EXPECT_LT(refused.peak_memory_kib, kSanitized ? 2 * kMaxMemoryKib : kMaxMemoryKib);
  EXPECT_LT(refused.cpu_seconds, 20);
}

class HostileText : public testing::TestWithParam<TextCase> {};

TEST_P(HostileText, IsReadRightOrRefused) {
  const TextCase& row = GetParam();
  const ProgramResult result = CheckText(row.text);
  ExpectResult(result, row.status, row.out, row.err);
  EXPECT_LT(result.cpu_seconds, 5);
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileText, testing::ValuesIn(kTexts),
                         [](const auto& row) { return std::string(row.param.name); });

// Pipes.

struct EndlessCase {
  const char* name;
  const char* writer;
  const char* error;
};

std::ostream& operator<<(std::ostream& out, const EndlessCase& row) { return out << row.name; }

const EndlessCase kEndless[] = {
    {"Elements", "yes '<a/>'", " larger than 256 MiB"},
    {"Blanks", "yes ' '", " larger than 256 MiB"},
    {"Objects", "yes '{}'", " larger than 256 MiB"},
    {"OtherText", "yes", "1: neither XML nor JSON: it begins with \"y\""},
    {"Zeros", "cat /dev/zero", "1: neither XML nor JSON: binary data"},
};

class EndlessPipe : public Hostile, public testing::WithParamInterface<EndlessCase> {};

TEST_P(EndlessPipe, IsReadUpToTheLimit) {
  const std::string fifo = folder_ / "fifo";
  const ProgramResult result = Shell("mkfifo " + fifo + "; " + GetParam().writer + " > " + fifo +
                                     " & exec " IPAV_IPVALD " check " + fifo);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  // The writer may have its own to say about the end of the pipe.
  const std::string error = "ipvald: " + fifo + ":" + GetParam().error + "\n";
  EXPECT_NE(result.err.find(error), std::string::npos) << result.err;
  EXPECT_LT(result.peak_memory_kib, kSanitized ? 2 * kMaxMemoryKib : kMaxMemoryKib);
}

INSTANTIATE_TEST_SUITE_P(Writers, EndlessPipe, testing::ValuesIn(kEndless),
                         [](const auto& row) { return std::string(row.param.name); });

// Whoever gives a pipe may write when he likes, within the time limit. Signals end it sooner.
class SilentPipe : public Hostile {
 protected:
  ProgramResult Interrupt(const std::string& signal, const std::string& before) {
    return Shell("cd " + folder_.string() + "; test -p fifo || mkfifo fifo; " + before +
                 " timeout --preserve-status -s " + signal + " 0.3 " IPAV_IPVALD " check fifo");
  }
};

TEST_F(SilentPipe, NobodyWrites) {
  ExpectResult(Interrupt("INT", ""), 128 + SIGINT, "", "");
  ExpectResult(Interrupt("TERM", ""), 128 + SIGTERM, "", "");
}

TEST_F(SilentPipe, WriterIsSilent) {
  ExpectResult(Interrupt("INT", "exec 3<>fifo; echo '<a>' >&3;"), 128 + SIGINT, "", "");
}

// Output. A full disk and a closed output are in ipvald_test.

struct OutputCase {
  const char* name;
  const char* command;
};

std::ostream& operator<<(std::ostream& out, const OutputCase& row) { return out << row.name; }

const OutputCase kOutputs[] = {
    {"Json", " check --format json "},
    {"Trace", " check --trace "},
    {"Points", " points #"},
    {"PointsAsJson", " points --format json #"},
    {"Help", " --help #"},
    {"HelpOfCheck", " check --help #"},
    {"Version", " --version #"},
};

class LostOutput : public testing::TestWithParam<OutputCase> {};

TEST_P(LostOutput, IsNoSuccess) {
  const std::string command = IPAV_IPVALD + std::string(GetParam().command) + kRunning;
  const auto with = [&](const std::string& redirection) {
    return Shell("exec " + redirection + "; " + command);
  };
  ExpectResult(with(">/dev/full"), 2, "", "ipvald: standard output: No space left on device\n");
  ExpectResult(with(">&-"), 2, "", "ipvald: standard output: Bad file descriptor\n");
  EXPECT_EQ(with(">/dev/full 2>&1").status, 2);
  EXPECT_EQ(with(">&- 2>&- <&-").status, 2);
}

INSTANTIATE_TEST_SUITE_P(Commands, LostOutput, testing::ValuesIn(kOutputs),
                         [](const auto& row) { return std::string(row.param.name); });

// The memory of a process that is gone, here of the shell that ipvald replaces, takes nothing and
// tells no error.
TEST(OutputThatTakesNothing, IsNoVerdict) {
  for (const std::string& command : {std::string(" points"), " check " + kRunning}) {
    ExpectResult(Shell("exec timeout 20 " IPAV_IPVALD + command + " > /proc/self/mem"), 2, "",
                 "ipvald: standard output: Input/output error\n");
  }
}

TEST_F(Hostile, OutputThatGetsFullMidwayIsNoVerdict) {
  // A file may have 512 bytes; the JSON report is larger.
  const std::string file = folder_ / "verdict";
  const std::string command =
      "ulimit -f 1; " IPAV_IPVALD " check --format json " + kRunning + " > " + file;
  EXPECT_EQ(Shell(command).status, 128 + SIGXFSZ);
  ExpectResult(Shell("trap '' XFSZ; " + command), 2, "",
               "ipvald: standard output: File too large\n");
  EXPECT_EQ(std::filesystem::file_size(file), 512u);
}

// Standard input and output that do not block. The setting belongs to the open file, so the pipe's
// other user decides, such as a program that runs ipvald from an event loop. Python does here.
std::string NonBlocking(const std::string& body) {
  return "exec python3 -c 'import os, subprocess, time\n"
         "r, w = os.pipe()\n"
         "os.set_blocking(r, False)\n"
         "os.set_blocking(w, False)\n" +
         body + "'";
}

TEST_F(Hostile, OutputThatDoesNotBlockGetsTheWholeVerdict) {
  // More than the pipe holds, and the reader comes late.
  ExpectResult(
      RunProgram(
          {"/bin/sh", "-c",
           NonBlocking(
               "p = subprocess.Popen([\"" IPAV_IPVALD
               "\", \"check\", \"--format\", \"json\", \"--plugin\", \"" IPAV_MISBEHAVING_PLUGIN
               "\", \"" +
               kRunning +
               "\"], stdout=w)\n"
               "os.close(w)\n"
               "os.set_blocking(r, True)\n"
               "time.sleep(0.3)\n"
               "text = os.fdopen(r).read()\n"
               "print(len(text) > 65536, text[-2:], p.wait())\n")},
          {"", {"MISBEHAVE=validate:print-much"}}),
      0, "True }\n 3\n", "");
}

TEST_F(Hostile, InputThatDoesNotBlockIsWaitedFor) {
  ExpectResult(
      Shell(NonBlocking("p = subprocess.Popen([\"" IPAV_IPVALD "\", \"check\", \"-\"], stdin=r)\n"
                        "os.close(r)\n"
                        "time.sleep(0.2)\n"
                        "os.write(w, b\"{}\")\n"
                        "os.close(w)\n"
                        "print(p.wait())\n")),
      0, "accepted\n0\n", "");
}

// Crowds.

TEST(Crowd, OfChecksGetsTheVerdictsOfSingleOnes) {
  constexpr int kChecks = 200;
  const std::vector<std::string> files = {kExamples + "ra-accepted.json",
                                          kExamples + "ra-interval-refused.json",
                                          kExamples + "address-overlap-refused.json"};
  const auto check = [](const std::string& file) {
    return RunProgram({IPAV_IPVALD, "check", file});
  };
  std::vector<ProgramResult> alone;
  for (const std::string& file : files) alone.push_back(check(file));
  ASSERT_EQ(alone[0].status, 0);
  ASSERT_EQ(alone[1].status, 1);
  ASSERT_EQ(alone[2].status, 1);

  std::vector<ProgramResult> together(kChecks);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < together.size(); ++i) {
    threads.emplace_back([&, i] { together[i] = check(files[i % files.size()]); });
  }
  for (std::thread& thread : threads) thread.join();
  for (size_t i = 0; i < together.size(); ++i) {
    const ProgramResult& expected = alone[i % files.size()];
    ExpectResult(together[i], expected.status, expected.out, expected.err);
  }
}

// Large configurations, by way of bench/make_config.py. IPAV_LARGE multiplies their size.

int Scale() {
  const char* scale = std::getenv("IPAV_LARGE");
  return scale == nullptr ? 1 : std::atoi(scale);
}

struct LargeCase {
  const char* name;
  const char* option;
  int count;
  std::string verdict;  // with the count in place of N
};

std::ostream& operator<<(std::ostream& out, const LargeCase& row) { return out << row.name; }

const LargeCase kLarge[] = {
    {"InterfacesInJson", "--interfaces", 10'000,
     "rejected\npoint:      intf_l3_name_validation\npath:       /config/interface/l3\n"
     "message:    too many 'interface l3', N configured, at most 256 must be configured\n"},
    {"InterfacesInXml", "--format xml --interfaces", 10'000,
     "rejected\npoint:      intf_l3_name_validation\npath:       /config/interface/l3\n"
     "message:    too many 'interface l3', N configured, at most 256 must be configured\n"},
    {"Routes", "--interfaces 256 --routes", 10'000,
     "rejected\npoint:      ipv6_addr_route_validation\n"
     "path:       /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry\n"
     "message:    The maximum number of available static routes was exceeded.\n"},
};

class Large : public Hostile, public testing::WithParamInterface<LargeCase> {};

TEST_P(Large, IsRefusedForItsSize) {
  const LargeCase& row = GetParam();
  const std::string count = std::to_string(row.count * Scale());
  const std::string file = folder_ / "large";
  ASSERT_EQ(Shell("python3 " IPAV_SOURCE_DIR "/bench/make_config.py " + std::string(row.option) +
                  " " + count + " > " + file)
                .status,
            0);
  std::string verdict = row.verdict;
  if (const size_t place = verdict.find(", N "); place != std::string::npos) {
    verdict.replace(place + 2, 1, count);
  }
  const ProgramResult result = RunProgram({IPAV_IPVALD, "check", file});
  ExpectResult(result, 1, verdict, "");
  std::printf("%s %s: %.1f s, %ld KiB\n", row.name, count.c_str(), result.cpu_seconds,
              result.peak_memory_kib);
}

INSTANTIATE_TEST_SUITE_P(Configurations, Large, testing::ValuesIn(kLarge),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
