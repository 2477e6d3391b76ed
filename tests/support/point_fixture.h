// The validation points as a host sees them: the real module, loaded with dlopen, against the
// configuration store.
#ifndef TESTS_SUPPORT_POINT_FIXTURE_H_
#define TESTS_SUPPORT_POINT_FIXTURE_H_

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "confd/keypath.h"
#include "confd/transaction.h"
#include "confd/watch_calls.h"
#include "confd_dp.h"
#include "framework/host.h"
#include "store/snapshot.h"
#include "support/device.h"

namespace tests {

/// The module's entry points, and its handle for dlsym.
struct Module {
  void* handle;
  int (*lib_init)(void**);
  int (*get_validation_point)(char*, int);
  int (*validate)(confd_trans_ctx*, confd_hkeypath_t*, confd_value_t*);
  int (*lib_finish)(void**);
};

/// Loads the module; whoever calls this closes the handle.
Module OpenModule();

/// Stays loaded for the life of the program.
const Module& LoadedModule();

/// One Config, from lib_init to lib_finish, over any number of transactions. A test fails when a
/// cursor stays open or a value is not released.
class PointTest : public testing::Test {
 protected:
  PointTest();
  ~PointTest() override;

  /// Begins a transaction. The Config stays, as it does in a daemon that keeps it.
  void Configure(const std::string& running, const std::string& candidate);
  void Configure(const std::string& candidate) { Configure("{}", candidate); }
  void Configure(const Device& candidate) { Configure(candidate.Json()); }
  void Configure(const Device& running, const Device& candidate) {
    Configure(running.Json(), candidate.Json());
  }

  /// Replaces the Config by a fresh one.
  void RenewConfig();

  /// Calls `validate` for the point with that opaque text and the node at `path`.
  /// @returns "accepted", "refused" (without a text), or the text of the refusal
  std::string Validate(const std::string& opaque, const std::string& path);
  std::string Validate(const std::string& opaque, confd::Keypath& keypath);

  /// Fills `context` as the daemon does before it calls `validate`, but for validate_opaque.
  void Fill(confd_trans_ctx* context);

  const store::Snapshot& candidate() const { return *candidate_; }

  /// Calls of the last Validate: function, blank, formatted path ("maapi_exists /config/...").
  const std::vector<std::string>& calls() const { return calls_; }

  /// Asks the call with that position in the next Validate, counted from 0, for something else than
  /// to proceed. -1 stands for none.
  void DisturbCall(int position, confd::CallRequest request) {
    disturbed_call_ = position;
    request_ = request;
  }
  void FailCall(int position) { DisturbCall(position, confd::CallAction::kFail); }

  /// What the plug-in reported since the last time.
  std::vector<framework::Fault> TakeFaults() { return framework::TakeFaults(); }
  std::vector<std::string> TakeLogLines() { return framework::TakeLogLines(); }

 private:
  void EndTransaction();

  int64_t values_before_;
  framework::ContextRegistry registry_;
  framework::Daemon daemon_;
  void* config_ = nullptr;
  std::shared_ptr<const store::Snapshot> candidate_;
  std::optional<confd::Database> datastore_;
  int thandle_ = -1;
  std::vector<std::string> calls_;
  int disturbed_call_ = -1;
  confd::CallRequest request_ = confd::CallAction::kProceed;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_POINT_FIXTURE_H_
