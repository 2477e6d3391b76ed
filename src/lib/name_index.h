// Where in a table a name stands, found in a time that does not grow with the table.
#ifndef SRC_LIB_NAME_INDEX_H_
#define SRC_LIB_NAME_INDEX_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ip_application::config_valid {

/// Positions by name. The names themselves stay in the table. Belongs to its table; positions are
/// never removed.
///
/// Open addressing with eight bytes per slot instead of a map of strings: the slots of a large
/// table stay in the processor's caches, and a map's nodes do not.
class NameIndex {
 public:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  static uint32_t HashOf(const std::string& text) {
    return static_cast<uint32_t>(std::hash<std::string>()(text));
  }

  /// The position that was added for `name`, or kNone.
  ///
  /// @param has_name  whether the table's entry at a position has that name
  template <typename HasName>
  size_t Find(const std::string& name, HasName has_name) const {
    return Find(HashOf(name), has_name);
  }

  /// The same by the hash of a name, which may have several parts. Names with one hash are told
  /// apart by `has_name`.
  template <typename HasName>
  size_t Find(uint32_t hash, HasName has_name) const {
    if (slots_.empty()) return kNone;
    for (size_t i = First(hash); slots_[i].position != kFree; i = Next(i)) {
      if (slots_[i].hash == hash && has_name(slots_[i].position)) return slots_[i].position;
    }
    return kNone;
  }

  /// REQUIRES: Find gives kNone for `name`, and `position` is below 2^32 - 1.
  void Add(const std::string& name, size_t position) { Add(HashOf(name), position); }

  void Add(uint32_t hash, size_t position) {
    if (2 * (size_ + 1) > slots_.size()) Grow();
    Put({hash, static_cast<uint32_t>(position)});
    ++size_;
  }

 private:
  static constexpr uint32_t kFree = static_cast<uint32_t>(-1);
  static constexpr size_t kFirstSize = 64;  // a power of two, as all sizes are

  struct Slot {
    uint32_t hash = 0;
    uint32_t position = kFree;
  };

  size_t First(uint32_t hash) const { return hash & (slots_.size() - 1); }
  size_t Next(size_t i) const { return (i + 1) & (slots_.size() - 1); }

  void Put(const Slot& slot) {
    size_t i = First(slot.hash);
    while (slots_[i].position != kFree) i = Next(i);
    slots_[i] = slot;
  }

  void Grow() {
    std::vector<Slot> old(slots_.empty() ? kFirstSize : 2 * slots_.size());
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.position != kFree) Put(slot);
    }
  }

  std::vector<Slot> slots_;  // at most half of them taken, so that a search ends soon
  size_t size_ = 0;
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_NAME_INDEX_H_
