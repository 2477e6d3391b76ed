#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>

#include "confd/keypath.h"
#include "store/schema.h"
#include "support/keypath_builder.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::SampleSchema;
using tests::StoreTest;

constexpr const char* kConfiguration = R"({
  "store-sample:values": {"word": ["w"]},
  "store-sample:room": {"shelf": [
    {"name": "a b", "fragile": [null], "slot": [{"row": 1, "column": "x", "item": "i"}]}]},
  "store-sample:gauge": [{"id": 7}],
  "store-sample:keyed": {"by-enum": [{"k": "low"}], "by-octets": [{"k": "0a:00"}],
                         "by-nothing": [{"k": [null]}]}
})";

class KeypathShape : public StoreTest {
 protected:
  KeypathShape() { Open(kConfiguration); }

  static uint32_t TagAt(const confd_hkeypath_t* path, int element) {
    return CONFD_GET_XMLTAG(&path->v[element][0]);
  }
};

TEST_F(KeypathShape, IsDeepestFirstWithTheKeysInTheirOwnElement) {
  confd::Keypath path(*SampleSchema(),
                      Find("/store-sample:room/shelf[name='a b']/slot[row='1'][column='x']/item"));
  const confd_hkeypath_t* kp = path.get();
  ASSERT_EQ(kp->len, 6);
  EXPECT_EQ(TagAt(kp, 0), confd_str2hash("item"));
  EXPECT_EQ(CONFD_GET_UINT8(&kp->v[1][0]), 1);
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&kp->v[1][1]), "x");
  EXPECT_EQ(TagAt(kp, 2), confd_str2hash("slot"));
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&kp->v[3][0]), "a b");
  EXPECT_EQ(TagAt(kp, 4), confd_str2hash("shelf"));
  EXPECT_EQ(TagAt(kp, 5), confd_str2hash("room"));
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&kp->v[5][0]), confd_str2hash("urn:velmor:yang:store-sample"));
}

TEST_F(KeypathShape, ClosesEveryElementAndLeavesNothingUninitialised) {
  confd::Keypath path(*SampleSchema(),
                      Find("/store-sample:room/shelf[name='a b']/slot[row='1'][column='x']"));
  const confd_hkeypath_t* kp = path.get();
  ASSERT_EQ(kp->len, 5);
  const int values[] = {2, 1, 1, 1, 1};
  for (int i = 0; i < MAXDEPTH; ++i) {
    for (int k = i < kp->len ? values[i] : 0; k < MAXKEYLEN; ++k) {
      EXPECT_EQ(kp->v[i][k].type, C_NOEXISTS) << i << ", " << k;
    }
  }
}

TEST_F(KeypathShape, OfAnEntryHasTheKeysInFront) {
  confd::Keypath path(*SampleSchema(), Find("/store-sample:gauge[id='7']"));
  ASSERT_EQ(path.get()->len, 2);
  EXPECT_EQ(CONFD_GET_UINT32(&path.get()->v[0][0]), 7u);
  EXPECT_EQ(TagAt(path.get(), 1), confd_str2hash("gauge"));
}

TEST_F(KeypathShape, OfAListWithoutKeysHasItsTagInFront) {
  const auto& schema = *SampleSchema();
  const lysc_node* gauge = schema.FindChild(nullptr, "", "gauge");
  confd::Keypath top(*SampleSchema(), nullptr, gauge);
  ASSERT_EQ(top.get()->len, 1);
  EXPECT_EQ(TagAt(top.get(), 0), confd_str2hash("gauge"));
  EXPECT_EQ(top.text(), "/gauge");

  const lyd_node* shelf = Find("/store-sample:room/shelf[name='a b']");
  confd::Keypath nested(*SampleSchema(), shelf, schema.FindChild(shelf->schema, "", "slot"));
  ASSERT_EQ(nested.get()->len, 4);
  EXPECT_EQ(TagAt(nested.get(), 0), confd_str2hash("slot"));
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&nested.get()->v[1][0]), "a b");
  EXPECT_EQ(nested.text(), "/room/shelf{\"a b\"}/slot");
}

struct TextCase {
  const char* name;
  const char* libyang_path;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const TextCase& c) { return out << c.libyang_path; }

class KeypathText : public StoreTest, public testing::WithParamInterface<TextCase> {};

TEST_P(KeypathText, IsReadable) {
  Open(kConfiguration);
  confd::Keypath path(*SampleSchema(), Find(GetParam().libyang_path));
  EXPECT_EQ(path.text(), GetParam().text);
  EXPECT_EQ(Print(path.get()), GetParam().text);
}

const TextCase kTextCases[] = {
    {"Container", "/store-sample:room", "/room"},
    {"EntryAtTheTop", "/store-sample:gauge[id='7']", "/gauge{7}"},
    {"KeyWithBlank", "/store-sample:room/shelf[name='a b']/fragile",
     "/room/shelf{\"a b\"}/fragile"},
    {"TwoKeys", "/store-sample:room/shelf[name='a b']/slot[row='1'][column='x']",
     "/room/shelf{\"a b\"}/slot{1 x}"},
    {"Octets", "/store-sample:keyed/by-octets[k='0a:00']", "/keyed/by-octets{0a:00}"},
    {"LeafListEntry", "/store-sample:values/word[.='w']", "/values/word{w}"},
    {"EmptyKey", "/store-sample:keyed/by-nothing[k='']", "/keyed/by-nothing{\"\"}"},
};
INSTANTIATE_TEST_SUITE_P(Nodes, KeypathText, testing::ValuesIn(kTextCases), RowName<TextCase>);

class KeypathCopy : public KeypathShape {
 protected:
  confd::Keypath path_{*SampleSchema(),
                       Find("/store-sample:room/shelf[name='a b']/slot[row='1'][column='x']/item")};
};

TEST_F(KeypathCopy, IsDeep) {
  confd_hkeypath_t* copy = confd_hkeypath_dup(path_.get());
  EXPECT_EQ(copy->len, path_.get()->len);
  EXPECT_NE(copy->v[1][1].val.buf.ptr, path_.get()->v[1][1].val.buf.ptr);
  EXPECT_EQ(Print(copy), path_.text());
  confd_free_hkeypath(copy);
  EXPECT_EQ(path_.text(), "/room/shelf{\"a b\"}/slot{1 x}/item");
}

struct LengthCase {
  const char* name;
  int length;
  const char* text;
  int elements;
};

std::ostream& operator<<(std::ostream& out, const LengthCase& c) {
  return out << c.length << " elements";
}

class KeypathPart : public KeypathCopy, public testing::WithParamInterface<LengthCase> {};

TEST_P(KeypathPart, IsCountedFromTheRoot) {
  confd_hkeypath_t* part = confd_hkeypath_dup_len(path_.get(), GetParam().length);
  EXPECT_EQ(part->len, GetParam().elements);
  EXPECT_EQ(Print(part), GetParam().text);
  if (part->len == 3) {
    EXPECT_EQ(part->v[0][0].type, C_BUF) << "the last element comes first";
  }
  confd_free_hkeypath(part);
  char text[64];
  EXPECT_EQ(confd_pp_kpath_len(text, sizeof(text), path_.get(), GetParam().length),
            static_cast<int>(std::strlen(GetParam().text)));
  EXPECT_STREQ(text, GetParam().text);
}

const LengthCase kLengthCases[] = {
    {"None", 0, "/", 0},
    {"Root", 1, "/room", 1},
    {"ListWithoutKeys", 2, "/room/shelf", 2},
    {"Entry", 3, "/room/shelf{\"a b\"}", 3},
    {"Whole", 6, "/room/shelf{\"a b\"}/slot{1 x}/item", 6},
    {"MoreThanThereIs", 7, "/room/shelf{\"a b\"}/slot{1 x}/item", 6},
    {"Negative", -1, "/", 0},
};
INSTANTIATE_TEST_SUITE_P(Lengths, KeypathPart, testing::ValuesIn(kLengthCases),
                         RowName<LengthCase>);

TEST_F(KeypathCopy, IsCutAndFullLengthReturned) {
  char text[6] = "-----";
  EXPECT_EQ(confd_pp_kpath(text, sizeof(text), path_.get()), 33);
  EXPECT_STREQ(text, "/room");
  EXPECT_EQ(confd_pp_kpath(nullptr, 0, path_.get()), 33);
}

TEST(KeypathByHand, NotInstantiatedEntryHasEmptyBraces) {
  tests::KeypathBuilder builder;
  builder.Tag(1).Key("gone").Tag(2);
  CONFD_SET_NOEXISTS(&builder.get()->v[1][0]);
  char text[64];
  confd_pp_kpath(text, sizeof(text), builder.get());
  EXPECT_STREQ(text, "/tag<2>{}/tag<1>");
}

TEST(Hashes, NameNodesAndNamespacesOfTheSchemaLoadedLast) {
  const auto schema = SampleSchema();
  const uint32_t shelf = confd_str2hash("shelf");
  EXPECT_NE(shelf, 0u);
  EXPECT_STREQ(confd_hash2str(shelf), "shelf");
  EXPECT_EQ(confd_str2hash("no-such-node"), 0u);
  EXPECT_EQ(confd_hash2str(0), nullptr);
  EXPECT_EQ(confd_hash2str(1), nullptr);
  EXPECT_STREQ(confd_ns2prefix(confd_str2hash("urn:velmor:yang:store-other")), "other");
  EXPECT_EQ(confd_ns2prefix(shelf), nullptr);
}

}  // namespace
