// Replacements in a text, carried out all at once.
#include "text_edits.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

namespace ipvald {
namespace {

const char kText[] = "one\ntwo\nthree";

struct EditCase {
  const char* name;
  std::function<void(TextEdits&)> edit;
  std::string edited;
};

std::ostream& operator<<(std::ostream& out, const EditCase& row) { return out << row.name; }

const EditCase kCases[] = {
    {"Nothing", [](TextEdits&) {}, "one\ntwo\nthree"},
    {"ByAsMuch", [](TextEdits& edits) { edits.Replace(0, 3, "ONE"); }, "ONE\ntwo\nthree"},
    {"ByMore", [](TextEdits& edits) { edits.Replace(4, 7, "twenty"); }, "one\ntwenty\nthree"},
    {"ByLess", [](TextEdits& edits) { edits.Replace(4, 7, ""); }, "one\n\nthree"},
    {"BeforeTheFirstByte", [](TextEdits& edits) { edits.Replace(0, 0, "x"); }, "xone\ntwo\nthree"},
    {"BehindTheLastByte", [](TextEdits& edits) { edits.Replace(13, 13, "x"); }, "one\ntwo\nthreex"},
    {"Everything", [](TextEdits& edits) { edits.Replace(0, 13, "x"); }, "x"},
    {"SideBySide",
     [](TextEdits& edits) {
       edits.Replace(0, 1, "O");
       edits.Replace(1, 2, "N");
       edits.Replace(2, 2, "-");
       edits.Replace(2, 3, "E");
     },
     "ON-E\ntwo\nthree"},
    {"BlanksButLineEnds", [](TextEdits& edits) { edits.Blank(kText, 2, 9); }, "on \n   \n hree"},
    {"NoBlanks", [](TextEdits& edits) { edits.Blank(kText, 2, 2); }, "one\ntwo\nthree"},
    {"DroppedFromItsBegin",
     [](TextEdits& edits) {
       edits.Replace(0, 1, "O");
       edits.Replace(4, 5, "T");
       edits.Replace(8, 9, "T");
       edits.DropFrom(4);
     },
     "One\ntwo\nthree"},
    {"KeptBeforeItsBegin",
     [](TextEdits& edits) {
       edits.Replace(4, 7, "TWO");
       edits.DropFrom(5);
     },
     "one\nTWO\nthree"},
    {"AllDropped",
     [](TextEdits& edits) {
       edits.Replace(0, 1, "O");
       edits.DropFrom(0);
       edits.DropFrom(0);
     },
     "one\ntwo\nthree"},
    {"AnotherInThePlaceOfTheDropped",
     [](TextEdits& edits) {
       edits.Replace(4, 7, "TWO");
       edits.DropFrom(4);
       edits.Replace(4, 5, "T");
     },
     "one\nTwo\nthree"},
};

class Edits : public testing::TestWithParam<EditCase> {};

TEST_P(Edits, AreCarriedOut) {
  TextEdits edits;
  GetParam().edit(edits);
  EXPECT_EQ(edits.Apply(kText), GetParam().edited);
  EXPECT_EQ(edits.Apply(kText), GetParam().edited) << "for the second time";
}

INSTANTIATE_TEST_SUITE_P(Texts, Edits, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ipvald
