// A ConfD client library of a few lines, for tests of what the plug-in asks, in which order and
// with which format. The functions that fake_maapi.cc defines win over those of libconfd in the
// program that links it; all others stay.
#ifndef TESTS_SUPPORT_FAKE_MAAPI_H_
#define TESTS_SUPPORT_FAKE_MAAPI_H_

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "confd_dp.h"

namespace tests {

/// What the calls answer for one path.
struct FakeLeaf {
  int exists = 0;                 ///< result of maapi_exists
  std::optional<uint16_t> value;  ///< without one, a read fails and leaves its argument alone
  int failure = CONFD_ERR;        ///< result of a read that fails
};

/// Takes the calls while it lives; one at a time.
class FakeMaapi {
 public:
  FakeMaapi();
  ~FakeMaapi();
  FakeMaapi(const FakeMaapi&) = delete;
  FakeMaapi& operator=(const FakeMaapi&) = delete;

  /// Returns and clears the calls, such as
  ///   maapi_exists(<socket>, <transaction handle>, "<format as passed>")
  ///   confd_trans_seterr("<format as passed>")
  std::vector<std::string> TakeCalls();

  /// By formatted path; a path that is not here neither exists nor can be read.
  std::map<std::string, FakeLeaf> leaves;

  /// The error text that was set last, and the transaction that it was set for.
  std::optional<std::string> error;
  const confd_trans_ctx* refused = nullptr;

  /// Runs after a call was recorded and before it is carried out, and may throw.
  std::function<void()> on_call;

  // Of the functions in fake_maapi.cc.
  void Record(const std::string& call);
  FakeLeaf Find(const std::string& path) const;

 private:
  std::vector<std::string> calls_;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_FAKE_MAAPI_H_
