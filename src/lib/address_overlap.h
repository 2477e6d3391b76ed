// Which interfaces can overlap at all. Comparing every address with every other grows with the
// square of the table; this tells the checks which comparisons cannot fail, so that they leave them
// out. It never decides: the pair test of the checker does, and its loops keep their order.
//
// What it rests on:
// 1. Two prefixes share an address if and only if one contains the other. So the largest prefixes
//    are disjoint, and every other prefix lies in exactly one of them. A largest prefix with all
//    that lies in it is a component.
// 2. Sharing an address space is an equivalence of VRF names, so components never cross one.
// 3. Let p be the first interface of a table that overlaps another of the table. Its partner
//    overlaps one, too, and so stands behind p: the loops "for I, for J after I" find their first
//    overlap at I = p.
// 4. In a component with two or more owners every owner takes part: the owner of the largest prefix
//    meets everything in it, and everything in it meets that owner. So p is the smallest owner in
//    any component with two or more owners.
#ifndef SRC_LIB_ADDRESS_OVERLAP_H_
#define SRC_LIB_ADDRESS_OVERLAP_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "config.h"

namespace ip_application::config_valid {

/// Whether addresses of two VRFs are compared at all: those of one VRF are, and the global and the
/// management VRF count as one. Names are compared byte by byte.
bool ShareAddressSpace(const std::string& vrf_a, const std::string& vrf_b);

/// The components of one table's addresses of one family (nettypes::IPv4AddrMask or IPv6AddrMask).
/// Keeps nothing of the table.
template <typename AddrMask>
class AddressOverlap {
 public:
  explicit AddressOverlap(const std::vector<Interface>& interfaces);
  ~AddressOverlap();
  AddressOverlap(const AddressOverlap&) = delete;
  AddressOverlap& operator=(const AddressOverlap&) = delete;

  /// Whether the interface at this position of the table may overlap one behind it. False is
  /// certain for every position before the first one for which it is true.
  bool MayOverlapLater(size_t position) const;

  /// Whether an interface of another table may overlap one of this table; false is certain.
  bool MayOverlap(const Interface& other) const;

 private:
  struct Components;
  std::unique_ptr<const Components> components_;  // null: a prefix length is out of range, where
                                                  // fact 1 does not hold, or an address gives no
                                                  // number; everything may overlap
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_ADDRESS_OVERLAP_H_
