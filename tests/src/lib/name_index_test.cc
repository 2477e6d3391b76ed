#include "name_index.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/hash_twins.h"

namespace ip_application::config_valid {
namespace {

// A table of names with its index.
class Names {
 public:
  void Add(const std::string& name) {
    index_.Add(name, names_.size());
    names_.push_back(name);
  }
  size_t Find(const std::string& name) const {
    return index_.Find(name, [&](size_t position) { return names_[position] == name; });
  }

 private:
  std::vector<std::string> names_;
  NameIndex index_;
};

TEST(NameIndex, OfAnEmptyTableFindsNothing) {
  const Names names;
  EXPECT_EQ(names.Find(""), NameIndex::kNone);
  EXPECT_EQ(names.Find("l3 7"), NameIndex::kNone);
}

TEST(NameIndex, FindsEveryNameAtEverySize) {
  Names names;
  for (size_t size = 0; size < 1100; ++size) {
    EXPECT_EQ(names.Find("l3 " + std::to_string(size)), NameIndex::kNone) << size;
    names.Add("l3 " + std::to_string(size));
    if (size % 16 > 1 && size % 64 < 62) continue;  // around each doubling, and now and then
    for (size_t i = 0; i <= size; ++i) EXPECT_EQ(names.Find("l3 " + std::to_string(i)), i);
  }
}

TEST(NameIndex, FindsTheEmptyName) {
  Names names;
  names.Add("l3 7");
  names.Add("");
  EXPECT_EQ(names.Find(""), 1u);
}

TEST(NameIndex, TellsNamesWithOneHashApart) {
  const auto [first, second] = tests::NamesWithOneHash();
  Names names;
  names.Add(first);
  EXPECT_EQ(names.Find(second), NameIndex::kNone);
  names.Add(second);
  EXPECT_EQ(names.Find(first), 0u);
  EXPECT_EQ(names.Find(second), 1u);
}

}  // namespace
}  // namespace ip_application::config_valid
