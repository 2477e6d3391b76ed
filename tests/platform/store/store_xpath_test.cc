#include "store/xpath.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::StoreTest;

struct XPathCase {
  const char* name;
  const char* context;
  const char* expression;
  const char* result;  // string value, or "error N" with confd_errno
};

std::ostream& operator<<(std::ostream& out, const XPathCase& c) { return out << c.expression; }

class XPath : public StoreTest, public testing::WithParamInterface<XPathCase> {
 protected:
  void OpenShelves() {
    Open(R"({
      "store-sample:values": {"text": "sample", "color": "red", "answer": 43},
      "store-sample:panel": {"lamp": "sample"}, "store-other:panel": {"lamp": "other"},
      "store-sample:gauge": [{"id": 7, "reading": 1}],
      "store-sample:room": {"store-other:depth": 6, "shelf": [
        {"name": "a", "material": "oak"},
        {"name": "a[b]", "material": "brackets"},
        {"name": "it's", "material": "apostrophe"},
        {"name": "19\"", "material": "quote"},
        {"name": "sample:x", "material": "colon"},
        {"name": "b", "material": "oak", "slot": [{"row": 1, "column": "x", "item": "i"}]}]}})");
  }

  std::string Evaluate(const char* expression, const char* context) {
    char* result = const_cast<char*>("not touched");
    const int status =
        maapi_xpath_eval_expr(sock_, thandle_, expression, &result, nullptr, "%s", context);
    if (status != CONFD_OK) {
      EXPECT_EQ(result, nullptr);
      return "error " + std::to_string(confd_errno);
    }
    const std::string text = result;
    free(result);
    return text;
  }
};

TEST_P(XPath, HasStringValue) {
  OpenShelves();
  EXPECT_EQ(Evaluate(GetParam().expression, GetParam().context), GetParam().result);
}

const XPathCase kPathCases[] = {
    {"Relative", "/room", "shelf[name='a']/material", "oak"},
    {"RelativeFromTheRoot", "/", "room/shelf[name='a']/material", "oak"},
    {"Absolute", "/values", "/room/shelf[name='a']/material", "oak"},
    {"ContextIsAnEntry", "/room/shelf{b}", "slot/item", "i"},
    {"ContextIsALeaf", "/values/text", "../answer", "43"},
    {"ContextItself", "/values/text", ".", "sample"},
    {"Prefix", "/", "/sample:values/sample:text", "sample"},
    {"ModuleName", "/", "/store-sample:values/store-sample:text", "sample"},
    {"PrefixBelow", "/room", "sample:shelf[sample:name='b']/sample:slot/sample:item", "i"},
    {"OtherPrefix", "/", "/other:panel/other:lamp", "other"},
    {"OtherModuleAcrossAugment", "/room", "depth", "6"},
    {"OtherModuleAcrossAugmentWithPrefix", "/room", "other:depth", "6"},
    {"FirstOfSeveralInDocumentOrder", "/room", "shelf[material='oak']/name", "a"},
    {"NonKeyPredicate", "/room", "shelf[slot/item='i']/name", "b"},
    {"TwoPredicates", "/room", "shelf[name='b'][material='oak']/name", "b"},
    {"Axis", "/room", "child::shelf[name='a']/child::sample:material", "oak"},
    {"Descendants", "/room", ".//item", "i"},
    {"StringValueOfAnEntry", "/", "/gauge[id='7']", "71"},
    {"Empty", "/room", "shelf[name='nobody']/material", ""},
    {"UnknownName", "/room", "nowhere", ""},
    {"EmptyListNode", "/keyed", "by-int8/v", ""},
};
INSTANTIATE_TEST_SUITE_P(Paths, XPath, testing::ValuesIn(kPathCases), RowName<XPathCase>);

const XPathCase kNameCases[] = {
    {"Brackets", "/room", "shelf[name='a[b]']/material", "brackets"},
    {"QuoteInApostrophes", "/room", "shelf[name='19\"']/material", "quote"},
    {"ApostropheInQuotes", "/room", "shelf[name=\"it's\"]/material", "apostrophe"},
    {"ApostropheInApostrophes", "/room", "shelf[name='it's']/material", "error 50"},
    {"PrefixInALiteralIsText", "/room", "shelf[name='sample:x']/material", "colon"},
    {"EmptyLiteral", "/room", "shelf[name='']/material", ""},
};
INSTANTIATE_TEST_SUITE_P(Names, XPath, testing::ValuesIn(kNameCases), RowName<XPathCase>);

const XPathCase kErrorCases[] = {
    {"BracketOpen", "/room", "shelf[name='a'", "error 50"},
    {"LiteralOpen", "/room", "shelf[name='a", "error 50"},
    {"NoExpression", "/room", "", "error 50"},
    {"NoPath", "/room", "][", "error 50"},
    {"UnknownPrefix", "/room", "nobody:shelf", "error 50"},
    {"UnknownContext", "/nowhere", "shelf", "error 8"},
    {"ContextAbsentEntry", "/room/shelf{nobody}", "material", "error 8"},
    {"ContextAbsentPresenceContainer", "/box", "size", "error 8"},
    {"ContextIsAListWithoutKeys", "/room/shelf", "material", "error 8"},
};
INSTANTIATE_TEST_SUITE_P(Errors, XPath, testing::ValuesIn(kErrorCases), RowName<XPathCase>);

class XPathCall : public XPath {};

TEST_F(XPathCall, WithoutAContextIsEvaluatedAtTheRoot) {
  OpenShelves();
  char* result = nullptr;
  ASSERT_EQ(maapi_xpath_eval_expr(sock_, thandle_, "values/text", &result, nullptr, nullptr),
            CONFD_OK);
  EXPECT_STREQ(result, "sample");
  free(result);
}

TEST_F(XPathCall, NeedsATransaction) {
  OpenShelves();
  char* result = const_cast<char*>("not touched");
  EXPECT_EQ(maapi_xpath_eval_expr(sock_, thandle_ + 1000, "values", &result, nullptr, "/"),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
  EXPECT_EQ(result, nullptr);
}

TEST_F(XPathCall, ContainersWithoutPresenceAreAContext) {
  Open("{}");
  EXPECT_EQ(Evaluate("shelf[name='a']/material", "/room"), "");
}

}  // namespace
