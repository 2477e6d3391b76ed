// The walkers over a transaction's changes. Each judges one kind of change on its own, where the
// checks on the tables look at the outcome only.
//
// A walker lives for one call of the validation point and owns nothing of ConfD between its calls.
#ifndef SRC_LIB_VALIDATE_INTF_VRF_H_
#define SRC_LIB_VALIDATE_INTF_VRF_H_

#include <list>
#include <string>

#include "confd_dp.h"
#include "confd_lib.h"
#include "nettypes/ipv4.h"

/// Base of the walkers.
class ValidateIntfVrf {
 public:
  /// @param sock   MAAPI socket
  /// @param tctx   its thandle goes into every MAAPI call, and it receives the error text
  /// @param path   keypath text of the list whose changes are walked, without keys behind it
  ValidateIntfVrf(int sock, confd_trans_ctx* tctx, const std::string& path)
      : sock_(sock), trans_(tctx), path_(path) {}
  virtual ~ValidateIntfVrf() = default;
  ValidateIntfVrf(const ValidateIntfVrf&) = delete;
  ValidateIntfVrf& operator=(const ValidateIntfVrf&) = delete;

  /// Judges one change. A value of another type than the data model promises ends the process.
  ///
  /// @param keypath  of the changed node, for the time of the call
  /// @param newval   value of a leaf that was set, likewise; null when there is none
  /// @returns ITER_STOP after a refusal, whose text is then in error_; otherwise ITER_RECURSE
  virtual confd_iter_ret IterValidate(confd_hkeypath_t* keypath, confd_iter_op op,
                                      confd_value_t* oldval, confd_value_t* newval) = 0;

  /// Walks the changes up to the first refusal.
  /// @returns 0 accepted, also when the changes cannot be walked; -1 refused, the error text of the
  ///          transaction is set.
  [[nodiscard]] int RunValidation();

  // Reads that no walker uses.

  /// The address and prefix length at `path`; the unspecified mask when absent or unreadable.
  nettypes::IPv4AddrMask get_ipv4_addr_mask(const std::string& path) const;

  /// First key of every entry of a list as text of at most 8191 bytes, in the list's order.
  std::list<std::string> get_key_list(const std::string& list_path) const;

 protected:
  const int sock_;
  confd_trans_ctx* const trans_;
  const std::string path_;
  std::string error_;  ///< text of the refusal, empty before it
};

/// A loopback that OSPFv3 uses joins no VRF.
class ValidateIntfLoVrf : public ValidateIntfVrf {
 public:
  using ValidateIntfVrf::ValidateIntfVrf;
  ~ValidateIntfLoVrf() override = default;
  confd_iter_ret IterValidate(confd_hkeypath_t* keypath, confd_iter_op op, confd_value_t* oldval,
                              confd_value_t* newval) override;
};

/// An L3 interface that OSPFv3 uses joins no VRF.
class ValidateIntfL3Vrf : public ValidateIntfVrf {
 public:
  using ValidateIntfVrf::ValidateIntfVrf;
  ~ValidateIntfL3Vrf() override = default;
  confd_iter_ret IterValidate(confd_hkeypath_t* keypath, confd_iter_op op, confd_value_t* oldval,
                              confd_value_t* newval) override;
};

/// Refuses nothing: that OSPFv2 interfaces are in the VRF of their process is checked on the
/// tables.
class ValidateIntfVrfOspf : public ValidateIntfVrf {
 public:
  using ValidateIntfVrf::ValidateIntfVrf;
  ~ValidateIntfVrfOspf() override = default;
  confd_iter_ret IterValidate(confd_hkeypath_t* keypath, confd_iter_op op, confd_value_t* oldval,
                              confd_value_t* newval) override;
};

/// OSPFv3 takes no interface that is in a VRF.
class ValidateIntfVrfOspfv3 : public ValidateIntfVrf {
 public:
  using ValidateIntfVrf::ValidateIntfVrf;
  ~ValidateIntfVrfOspfv3() override = default;
  confd_iter_ret IterValidate(confd_hkeypath_t* keypath, confd_iter_op op, confd_value_t* oldval,
                              confd_value_t* newval) override;
};

#endif  // SRC_LIB_VALIDATE_INTF_VRF_H_
