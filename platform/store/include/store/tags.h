// Numbers that stand for node names and namespaces, as a schema compiler would assign them.
#ifndef STORE_TAGS_H_
#define STORE_TAGS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace store {

/// Number of a node name, enum label or namespace URI: positive, 31 bits, never 0. Seven node names
/// have the numbers that the device's schema gives them; every other text has a hash of our own, as
/// the real algorithm is not public.
uint32_t TagOf(std::string_view text);

/// What stands for a node of the data model: the numbers of its name and of its namespace.
struct NodeTag {
  uint32_t tag;
  uint32_t ns;
};

/// The texts of one schema and their numbers, both ways.
class TagTable {
 public:
  /// @throws Error  another text of the table has the same number.
  uint32_t Add(const std::string& text);

  /// The text behind a number, null when the table does not hold it. Lives as long as the table.
  const char* Text(uint32_t tag) const;

 private:
  std::unordered_map<uint32_t, std::string> texts_;
};

}  // namespace store

#endif  // STORE_TAGS_H_
