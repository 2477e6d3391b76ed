// A transaction over two configurations, and plug-in contexts that are asked about it.
#ifndef FUZZ_JUDGE_H_
#define FUZZ_JUDGE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "confd/keypath.h"
#include "confd/transaction.h"
#include "framework/host.h"
#include "scenario_decoder.h"
#include "store/snapshot.h"

namespace fuzz {

/// A call with the keypath that it gets.
struct PlannedCall {
  CallPlan plan;
  confd_hkeypath_t* keypath;  ///< owned by the transaction that planned the call

  /// Whether the call is one to the point of that name, with nothing wrong about its arguments.
  bool Reaches(std::string_view point) const {
    return plan.fault == Fault::kNone && plan.opaque.starts_with(point);
  }
};

/// A transaction.
class TransactionOnDevice {
 public:
  /// @param may_throw  a route of the candidate has an output interface whose name is too short
  TransactionOnDevice(std::shared_ptr<const store::Snapshot> running,
                      std::shared_ptr<const store::Snapshot> candidate, bool may_throw);

  /// The call with a keypath of the candidate; nothing when no node fits.
  std::optional<PlannedCall> Plan(const CallPlan& plan);

  framework::Daemon& daemon() { return daemon_; }
  int thandle() const { return thandle_; }
  bool may_throw() const { return may_throw_; }
  void CountException() { ++exceptions_; }

  /// Ends the transaction. Requires that every cursor and value that was taken was given back.
  /// Deliberate: reading the routes leaves its cursor open, with the two binary keys of the entry,
  /// when the name of an output interface is too short and the reader throws.
  void Finish();

 private:
  std::unique_ptr<confd::Keypath> FittingKeypath(const CallPlan& plan) const;
  std::unique_ptr<confd::Keypath> AnyKeypath(const CallPlan& plan) const;

  int64_t values_before_;
  std::shared_ptr<const store::Snapshot> candidate_;
  std::vector<const lyd_node*> nodes_;  // of the candidate, but for those that are always there
  std::vector<std::unique_ptr<confd::Keypath>> keypaths_;
  confd::Database datastore_;
  framework::Daemon daemon_;
  int thandle_;
  bool may_throw_;
  int exceptions_ = 0;
};

/// One `Config`, from lib_init to lib_finish.
class Judge {
 public:
  Judge();
  ~Judge();
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  /// "accepted", "refused" (without a text), the text of the refusal, or "exception" and what
  /// happened. Requires what holds for every call: a result of 0 or -1, a text with every refusal
  /// that is not one of the silent ones, none with an acceptance, the documented exceptions only.
  std::string Ask(TransactionOnDevice& transaction, const PlannedCall& call);

 private:
  framework::ContextRegistry registry_;
  void* config_ = nullptr;
};

}  // namespace fuzz

#endif  // FUZZ_JUDGE_H_
