// A walk through a small data model, step by step: what is found, and what is told of the rest.
#include "schema_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "host/input/small_model.h"

namespace ipvald {
namespace {

// A walk over a text of lines of one byte each, so that byte 10 is on line 11. Steps are numbered
// by their bytes.
class Walk {
 public:
  Walk(InputFormat format, SchemaWalk::Depth depth)
      : walk_(tests::SmallModel(), source_, format, depth) {}

  // Carries out steps, separated by blanks, until one throws; returns its error or "". Step i is at
  // byte i.
  //   small:entry   goes down to that child; with "!" before it, one that may be there once
  //   =text         the value of the open leaf
  //   .             goes up
  std::string Run(const std::string& steps) {
    try {
      for (size_t begin = 0; begin < steps.size();) {
        const size_t end = std::min(steps.find(' ', begin), steps.size());
        Step(steps.substr(begin, end - begin));
        begin = end + 1;
      }
    } catch (const InputError& error) {
      return error.what();
    }
    return "";
  }

  SchemaWalk& walk() { return walk_; }

 private:
  void Step(const std::string& step) {
    const size_t offset = at_++;
    if (step == ".") return walk_.Close();
    if (step.starts_with('=')) return walk_.Value(step.substr(1), "<" + step.substr(1) + ">");
    const bool once = step.starts_with('!');
    const size_t colon = step.find(':');
    const SchemaWalk::Child child =
        walk_.Find(step.substr(once, colon - once), step.substr(colon + 1), offset);
    if (once) walk_.AddOnce(child, offset);
    walk_.Open(child, offset);
  }

  SourceText source_{"input", std::string(1000, '\n')};
  SchemaWalk walk_;
  size_t at_ = 0;
};

struct WalkCase {
  const char* name;
  std::string steps;
  std::string error;
};

std::ostream& operator<<(std::ostream& out, const WalkCase& row) { return out << row.name; }

const auto kRowName = [](const auto& row) { return std::string(row.param.name); };

const WalkCase kJson[] = {
    {"OwnModuleIsNotNamed", "small:top :inner :note =a . :note =b . . .", ""},
    {"OwnModuleIsNamed", "small:top small:inner", ""},
    {"LeafOfAnotherModule", "small:top :inner other:note =a . other:extra", ""},
    {"TopWithoutModule", ":single", "input:1: \"single\" is written \"small:single\" here"},
    {"ModuleOfTheParent", "small:top :inner :extra",
     "input:3: \"extra\" is written \"other:extra\" here"},
    {"UnknownModule", "smal:nothing",
     "input:1: \"smal:nothing\": no module of the data model has the name \"smal\""},
    {"UnknownAtTheTop", "small:nothing",
     "input:1: \"small:nothing\" is not known in the configuration, which holds \"small:top\", "
     "\"small:single\", \"small:types\""},
    {"MistypedAtTheTop", ":singel",
     "input:1: \"singel\" has no module name and is not known in the configuration, which holds "
     "\"small:top\", \"small:single\", \"small:types\"; did you mean \"single\"?"},
    {"ModuleNamesWhereTheyAreNeeded", "small:top :inner :x-y-z",
     "input:3: \"x-y-z\" is not known in \"inner\", which holds \"note\", \"other:note\", "
     "\"other:extra\""},
    {"EightNamesAreShown", "small:types :nothing",
     "input:2: \"nothing\" is not known in \"types\", which holds \"int8\", \"int16\", \"int32\", "
     "\"int64\", \"uint8\", \"uint16\", \"uint32\", \"uint64\", ..."},
    {"Twice", "!small:single =a . !small:single",
     "input:4: \"single\" stands twice; the first is on line 1"},
    {"TwiceInOne", "small:top :inner !:note . !:note",
     "input:5: \"note\" stands twice in one \"inner\"; the first is on line 3"},
    {"SameNameOfAnotherModule", "small:top :inner !:note . !other:note", ""},
    {"OnceInEach", "small:top :entry !:note . !:name =a . !:number =1 . . :entry !:note", ""},
    {"KeysInAnyOrder", "small:top :entry !:number =1 . !:note =x . !:name =a . .", ""},
    {"NoFirstKey", "small:top :entry !:number =1 . .",
     "input:2: this \"entry\" lacks its key \"name\""},
    {"NoSecondKey", "small:top :entry !:name =a . .",
     "input:2: this \"entry\" lacks its key \"number\""},
    {"SameKeys", "small:top :entry !:name =a . !:number =1 . . :entry !:number =1 . !:name =a . .",
     "input:10: a second \"entry\" with name \"a\", number \"1\"; the first is on line 2"},
    {"OneOtherKey",
     "small:top :entry !:name =a . !:number =1 . . :entry !:name =a . !:number =2 . .", ""},
    {"KeysThatAreJoinedTheSame",
     "small:top :entry !:name =a1 . !:number =1 . . :entry !:name =a . !:number =11 . .", ""},
    {"LeafListValueTwice", "small:top :word =a . :word =b . :word =a",
     "input:8: a second \"word\" with the value \"a\"; the first is on line 2"},
    {"LeafListsOfTwoParents", "small:top :word =a . . small:top :word =a .", ""},
    {"SameTextInTwoLeafLists", "small:top :word =::/0 . :plen =::/0 .", ""},
};

class JsonWalk : public testing::TestWithParam<WalkCase> {};

TEST_P(JsonWalk, IsPossibleOrNot) {
  Walk walk(InputFormat::kJson, SchemaWalk::Depth::kStructure);
  EXPECT_EQ(walk.Run(GetParam().steps), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Steps, JsonWalk, testing::ValuesIn(kJson), kRowName);

const WalkCase kXml[] = {
    {"NoNamespace", ":single",
     "input:1: <single> is written <single xmlns=\"urn:small\"> here, or with a prefix of that "
     "namespace"},
    {"UnknownNamespace", "nowhere:nothing",
     "input:1: <nothing>: no module of the data model has the namespace \"nowhere\""},
    {"UnknownWithoutNamespace", ":nothing",
     "input:1: <nothing> has no namespace (xmlns) and is not known in the configuration, which "
     "holds <top>, <single>, <types>"},
};

class XmlWalk : public testing::TestWithParam<WalkCase> {};

TEST_P(XmlWalk, IsPossibleOrNot) {
  Walk walk(InputFormat::kXml, SchemaWalk::Depth::kStructure);
  EXPECT_EQ(walk.Run(GetParam().steps), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Steps, XmlWalk, testing::ValuesIn(kXml), kRowName);

TEST(ElementInALeaf, IsToldWithTheMissingTag) {
  Walk walk(InputFormat::kXml, SchemaWalk::Depth::kStructure);
  walk.walk().Open(walk.walk().Find("urn:small", "single", 0), 0);
  try {
    walk.walk().Find("urn:small", "top", 5);
    ADD_FAILURE() << "found";
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(),
                 "input:6: <top> stands in <single>, which has a value and nothing else; is "
                 "</single> missing?");
  }
}

const WalkCase kValues[] = {
    {"NoValue", "small:types :uint8 =256",
     "input:2: \"uint8\" is <256>, but takes a whole number from 0 to 255"},
    {"OtherTextOfOneKey",
     "small:top :entry !:name =a . !:number =1 . . :entry !:name =a . !:number =+1 . .",
     "input:10: a second \"entry\" with name \"a\", number \"1\"; the first is on line 2"},
    {"OtherTextOfOneLeafListValue", "small:top :plen =2001:db8::/32 . :plen =2001:DB8::1/32",
     "input:5: a second \"plen\" with the value \"2001:DB8::1/32\"; the first is on line 2"},
};

class ValueWalk : public testing::TestWithParam<WalkCase> {};

// A look at the structure alone leaves values to libyang.
TEST_P(ValueWalk, IsPossibleForTheStructureAlone) {
  Walk structure(InputFormat::kJson, SchemaWalk::Depth::kStructure);
  EXPECT_EQ(structure.Run(GetParam().steps), "");
  EXPECT_FALSE(structure.walk().looks_at_values());
  Walk values(InputFormat::kJson, SchemaWalk::Depth::kValues);
  EXPECT_EQ(values.Run(GetParam().steps), GetParam().error);
  EXPECT_TRUE(values.walk().looks_at_values());
}

INSTANTIATE_TEST_SUITE_P(Steps, ValueWalk, testing::ValuesIn(kValues), kRowName);

// RFC 7950, section 7.8.5.
TEST(KeysInXml, StandInTheirOrder) {
  const auto error_of = [](SchemaWalk::Depth depth, const char* first, const char* second) {
    Walk walk(InputFormat::kXml, depth);
    SchemaWalk& open = walk.walk();
    open.Open(open.Find("urn:small", "top", 0), 0);
    open.Open(open.Find("urn:small", "entry", 1), 1);
    try {
      for (const char* name : {first, second}) {
        const SchemaWalk::Child key = open.Find("urn:small", name, 2);
        open.AddOnce(key, 2);
        open.Open(key, 2);
        open.Value("1", "1");
        open.Close();
      }
    } catch (const InputError& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  constexpr auto kValuesToo = SchemaWalk::Depth::kValues;
  EXPECT_EQ(error_of(kValuesToo, "name", "number"), "");
  EXPECT_EQ(error_of(kValuesToo, "number", "name"),
            "input:3: <number> is a key of <entry> and stands behind <name>");
  EXPECT_EQ(error_of(SchemaWalk::Depth::kStructure, "number", "name"), "");
}

TEST(OpenNode, IsWhereTheWalkStands) {
  Walk walk(InputFormat::kJson, SchemaWalk::Depth::kStructure);
  EXPECT_EQ(walk.walk().node(), nullptr);
  EXPECT_EQ(walk.walk().ShownNode(), "the configuration");
  ASSERT_EQ(walk.Run("small:top :entry"), "");
  EXPECT_STREQ(walk.walk().node()->name, "entry");
  EXPECT_EQ(walk.walk().begin(), 1u);
  EXPECT_EQ(walk.walk().ShownNode(), "\"entry\"");
  EXPECT_NE(walk.walk().ChildNamed("note"), nullptr);
  EXPECT_EQ(walk.walk().ChildNamed("inner"), nullptr);
}

struct ShownCase {
  const char* name;
  std::string text;
  bool in_quotes;
  std::string shown;
};

std::ostream& operator<<(std::ostream& out, const ShownCase& row) { return out << row.name; }

const ShownCase kShown[] = {
    {"InQuotes", "a", true, "\"a\""},
    {"Empty", "", true, "\"\""},
    {"WithoutQuotes", "1e5", false, "1e5"},
    {"Longest", std::string(60, 'a'), true, "\"" + std::string(60, 'a') + "\""},
    {"TooLong", std::string(61, 'a'), true, "\"" + std::string(60, 'a') + "...\""},
    {"TooLongWithoutQuotes", std::string(61, '1'), false, std::string(60, '1') + "..."},
};

class Shown : public testing::TestWithParam<ShownCase> {};

TEST_P(Shown, IsCut) {
  EXPECT_EQ(ShownValue(GetParam().text, GetParam().in_quotes), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Values, Shown, testing::ValuesIn(kShown), kRowName);

}  // namespace
}  // namespace ipvald
