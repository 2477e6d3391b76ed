// Configurations in JSON as libyang gets them: what is taken off, and what is refused before.
#include "json_configuration.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "host/input/small_model.h"

namespace ipvald {
namespace {

std::string Prepared(const std::string& text, SchemaWalk::Depth depth) {
  try {
    return JsonConfiguration(tests::SmallModel(), {"input", text}, depth);
  } catch (const InputError& error) {
    return error.what();
  }
}

struct TextCase {
  const char* name;
  std::string text;
  std::string prepared;  // "" for the text itself
};

std::ostream& operator<<(std::ostream& out, const TextCase& row) { return out << row.name; }

const auto kRowName = [](const auto& row) { return std::string(row.param.name); };

const TextCase kTexts[] = {
    {"Bare", R"({"small:single": "a"})", ""},
    {"Empty", " {\n} ", ""},
    {"Wrapper", "{\"data\" :\n{\"small:single\": \"a\"}\n}",
     "         \n{\"small:single\": \"a\"}\n "},
    {"RestconfWrapper", "\t{\"ietf-restconf:data\":{}}\n", std::string(23, ' ') + "{} \n"},
    {"WrapperInAnOddForm", R"({"\u0064ata":{}})", std::string(13, ' ') + "{} "},
    {"Surrogates", R"({"small:single": "\ud83d\ude00\u00e4"})",
     "{\"small:single\": \"\xf0\x9f\x98\x80\\u00e4\"}"},
    {"SurrogatesInTheWrapper", R"({"data":{"small:single":"\ud83d\ude00"}})",
     "        {\"small:single\":\"\xf0\x9f\x98\x80\"} "},
    {"AnydataIsNotLookedAt", R"({"small:top": {"any": {"x": [1, {"@": null}], "x": {}}}})", ""},
    {"EmptyValue", R"({"small:top": {"mark": [null]}})", ""},
    {"EmptyValuesOfALeafList", R"({"small:top": {"empties": [[null], 7]}})", ""},
    {"EveryKindOfNode",
     R"({"small:top": {"entry": [{"number": 1, "name": "a"}], "word": ["a", "b"], "inner": {}}})",
     ""},
    {"NoObject", "\n[]", "input:2: a configuration is an object, {...}"},
    {"NoObjectInTheWrapper", R"({"data": "a"})", "input:1: a configuration is an object, {...}"},
    {"WrapperBehindAMember", "{\"small:single\": \"a\",\n\"data\": {}}",
     "input:2: nothing may stand beside \"data\""},
    {"WrapperInAWrapper", "{\"data\": {\n\"data\": {}}}",
     "input:2: \"data\" has no module name and is not known in the configuration, which holds "
     "\"small:top\", \"small:single\", \"small:types\""},
    {"ArrayOfNullForAText", R"({"small:single": [null]})", "input:1: \"single\" takes one value"},
    {"ArrayOfNullInAnArray", R"({"small:top": {"mark": [[null]]}})",
     "input:1: \"mark\" takes one value"},
    {"ValueForAContainer", R"({"small:top": null})", "input:1: \"top\" takes an object, {...}"},
    {"ValueInAList", R"({"small:top": {"entry": [1]}})",
     "input:1: \"entry\" takes an array of objects, [{...}]"},
    {"FaultBehindTheStructure", "{\"small:single\": \"a\",\n",
     "input:2: the text ends inside an object, which begins on line 1"},
};

class Text : public testing::TestWithParam<TextCase> {};

TEST_P(Text, IsPrepared) {
  const std::string& expected = GetParam().prepared.empty() ? GetParam().text : GetParam().prepared;
  EXPECT_EQ(Prepared(GetParam().text, SchemaWalk::Depth::kStructure), expected);
  EXPECT_EQ(Prepared(GetParam().text, SchemaWalk::Depth::kValues), expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, Text, testing::ValuesIn(kTexts), kRowName);

// Values in the wrong form, which a look at the structure leaves to libyang.
const TextCase kForms[] = {
    {"Null", R"({"small:single": null})",
     "input:1: \"single\" is null; leave the member out, or give it a value"},
    {"NumberForAText", R"({"small:single": 7})",
     "input:1: \"single\" is 7, but takes a text, in quotes"},
    {"WordForAText", R"({"small:single": true})",
     "input:1: \"single\" is true, but takes a text, in quotes"},
    {"TextForANumber", R"({"small:types": {"uint8": "7"}})",
     "input:1: \"uint8\" is \"7\", but takes a whole number from 0 to 255, without quotes"},
    {"NumberForAnEmptyValue", R"({"small:top": {"mark": 1}})",
     "input:1: \"mark\" has no value: it is there as [null]"},
};

class Form : public testing::TestWithParam<TextCase> {};

TEST_P(Form, IsLookedAtWithTheValues) {
  EXPECT_EQ(Prepared(GetParam().text, SchemaWalk::Depth::kStructure), GetParam().text);
  EXPECT_EQ(Prepared(GetParam().text, SchemaWalk::Depth::kValues), GetParam().prepared);
}

INSTANTIATE_TEST_SUITE_P(Values, Form, testing::ValuesIn(kForms), kRowName);

// A union takes every form.
TEST(ValueOfAUnion, IsTakenInEveryForm) {
  for (const char* value : {"7", "true", "\"7\"", "\"true\""}) {
    const std::string text = std::string("{\"small:types\": {\"union\": ") + value + "}}";
    EXPECT_EQ(Prepared(text, SchemaWalk::Depth::kValues), text);
  }
}

}  // namespace
}  // namespace ipvald
