// Tables of the configuration snapshot on their own, bound to a transaction of the store.
#ifndef TESTS_SUPPORT_TABLE_FIXTURE_H_
#define TESTS_SUPPORT_TABLE_FIXTURE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "confd/call_count.h"
#include "confd/watch_calls.h"
#include "config.h"
#include "framework/host.h"
#include "support/data_model.h"
#include "support/device.h"
#include "support/point_fixture.h"

namespace tests {

/// The calls that a reader is expected to make: function, blank, formatted path.
class ExpectedCalls {
 public:
  friend bool operator==(const std::vector<std::string>& calls, const ExpectedCalls& expected) {
    return calls == expected.calls_;
  }
  friend void PrintTo(const ExpectedCalls& expected, std::ostream* out) {
    *out << testing::PrintToString(expected.calls_);
  }

  /// Asks for something that is not there.
  ExpectedCalls& Exists(const std::string& path) { return Add("maapi_exists " + path); }

  /// Walks a list that has `entries` entries.
  ExpectedCalls& Walk(const std::string& list, int entries) {
    Exists(list).Add("maapi_init_cursor " + list);
    for (int i = 0; i <= entries; ++i) Add("maapi_get_next");
    return Add("maapi_destroy_cursor");
  }

  /// Reads what is there.
  ExpectedCalls& Ipv4(const std::string& path) {
    return Exists(path).Add("maapi_get_ipv4_and_plen_elem " + path);
  }
  ExpectedCalls& Ipv6(const std::string& path) {
    return Exists(path).Add("maapi_get_ipv6_and_plen_elem " + path);
  }
  ExpectedCalls& Element(const std::string& path) {
    return Exists(path).Add("maapi_get_elem " + path);
  }
  /// With the release of the text.
  ExpectedCalls& Text(const std::string& path) { return Element(path).Add("confd_free_value"); }

  ExpectedCalls& Add(const std::string& call) {
    calls_.push_back(call);
    return *this;
  }

 private:
  std::vector<std::string> calls_;
};

/// A transaction for tables. A test fails when a cursor stays open or a value is not released.
class TableTest : public testing::Test {
 protected:
  TableTest() : values_before_(confd::OutstandingValues()) { framework::TakeFaults(); }
  ~TableTest() override { Close(); }

  /// Begins a transaction; tables that were bound to the last one have to be bound again.
  void Configure(const std::string& candidate) {
    Close();
    const auto snapshot = store::Snapshot::FromText(DataModel(), candidate);
    store_.emplace(store::Snapshot::Empty(DataModel()));
    context_.thandle = store_->StartTransaction(snapshot);
    sock_ = store_->OpenSocket();
    store_->Attach(sock_, context_.thandle);
    confd::WatchCalls([this](const confd::Call& call) { return Watch(call); });
  }
  void Configure(const Device& candidate) { Configure(candidate.Json()); }

  void Bind(ip_application::config_valid::GenericConfig& table) {
    table.sock_ = sock_;
    table.trans_ = &context_;
  }

  /// Returns and clears the calls, as ExpectedCalls has them.
  std::vector<std::string> TakeCalls() { return std::exchange(calls_, {}); }

  /// Makes every call of these texts fail, until the next FailCall or FailCalls.
  void FailCalls(const std::vector<std::string>& calls) {
    fails_ = [calls](const std::string& made, size_t /*position*/) {
      return std::find(calls.begin(), calls.end(), made) != calls.end();
    };
  }
  void FailCall(const std::string& call) { FailCalls({call}); }
  /// Makes the call at that position since the last TakeCalls fail, counted from 0.
  void FailCall(size_t position) {
    fails_ = [position](const std::string& /*made*/, size_t at) { return at == position; };
  }

  /// Runs before a call is carried out, and may throw.
  std::function<void(const std::string& call)> on_call;

 private:
  confd::CallAction Watch(const confd::Call& call) {
    calls_.push_back(call.path.empty() ? call.function
                                       : std::string(call.function) + " " + call.path);
    if (on_call) on_call(calls_.back());
    const bool fails = fails_ && fails_(calls_.back(), calls_.size() - 1);
    return fails ? confd::CallAction::kFail : confd::CallAction::kProceed;
  }

  void Close() {
    confd::WatchCalls(nullptr);
    if (!store_) return;
    EXPECT_EQ(store_->FinishTransaction(context_.thandle), 0) << "cursors left open";
    store_.reset();
    EXPECT_EQ(confd::OutstandingValues(), values_before_) << "values not released";
  }

  int64_t values_before_;
  std::optional<confd::Database> store_;
  int sock_ = -1;
  confd_trans_ctx context_{};
  std::vector<std::string> calls_;
  std::function<bool(const std::string&, size_t)> fails_;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_TABLE_FIXTURE_H_
