// A transaction over two configurations of a data model, for the tests of the configuration store.
#ifndef TESTS_SUPPORT_STORE_FIXTURE_H_
#define TESTS_SUPPORT_STORE_FIXTURE_H_

#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "confd/call_count.h"
#include "confd/transaction.h"
#include "confd/watch_calls.h"
#include "confd_maapi.h"
#include "store/schema.h"
#include "store/snapshot.h"

namespace tests {

/// The data model of tests/support/yang: a leaf of every type, a list with one key of each type,
/// every kind of node.
inline std::shared_ptr<const store::Schema> SampleSchema() {
  static const auto schema = store::Schema::Load(IPAV_BINARY_DIR "/tests/sample-yang");
  return schema;
}

/// Running and candidate configuration, a transaction between them and a socket that is attached to
/// it. Every test must give back the values that it was given.
class StoreTest : public testing::Test {
 protected:
  StoreTest() : values_before_(confd::OutstandingValues()) { confd_errno = 0; }
  ~StoreTest() override {
    confd::WatchCalls(nullptr);
    if (store_) {
      EXPECT_EQ(store_->FinishTransaction(thandle_), open_walks_) << "cursors left open";
    }
    store_.reset();
    EXPECT_EQ(confd::OutstandingValues(), values_before_) << "values not released";
  }

  /// JSON or XML texts.
  void Open(const std::string& running, const std::string& candidate) {
    running_ = store::Snapshot::FromText(SampleSchema(), running);
    candidate_ = store::Snapshot::FromText(SampleSchema(), candidate);
    store_.emplace(running_);
    thandle_ = store_->StartTransaction(candidate_);
    sock_ = store_->OpenSocket();
    store_->Attach(sock_, thandle_);
  }
  void Open(const std::string& candidate) { Open("{}", candidate); }

  /// Number of cursors that the test leaves open on purpose.
  void LeaveOpen(int cursors) { open_walks_ = cursors; }

  int Exists(const char* path) { return maapi_exists(sock_, thandle_, "%s", path); }

  /// Text of the leaf's value as confd_pp_value prints it, or "error N" with confd_errno.
  std::string Get(const char* path) {
    confd_value_t value;
    CONFD_SET_NOEXISTS(&value);
    const int result = maapi_get_elem(sock_, thandle_, &value, "%s", path);
    const std::string text =
        result == CONFD_OK ? Print(value) : "error " + std::to_string(confd_errno);
    if (result != CONFD_OK) {
      EXPECT_EQ(value.type, C_NOEXISTS) << "a failed read wrote its output";
    }
    confd_free_value(&value);
    return text;
  }

  /// Node of the candidate by libyang's own path syntax.
  const lyd_node* Find(const char* libyang_path) const {
    lyd_node* node = nullptr;
    lyd_find_path(candidate_->tree(), libyang_path, 0, &node);
    EXPECT_NE(node, nullptr) << libyang_path;
    return node;
  }

  static std::string Print(const confd_value_t& value) {
    char text[512];
    const int length = confd_pp_value(text, sizeof(text), &value);
    EXPECT_LT(length, static_cast<int>(sizeof(text)));
    return text;
  }

  static std::string Print(const confd_hkeypath_t* path) {
    char text[512];
    const int length = confd_pp_kpath(text, sizeof(text), path);
    EXPECT_LT(length, static_cast<int>(sizeof(text)));
    return text;
  }

  std::shared_ptr<const store::Snapshot> running_;
  std::shared_ptr<const store::Snapshot> candidate_;
  std::optional<confd::Database> store_;
  int sock_ = -1;
  int thandle_ = -1;

 private:
  int64_t values_before_;
  int open_walks_ = 0;
};

/// A part of a table row's name: letters and digits only.
template <typename Row>
std::string RowName(const testing::TestParamInfo<Row>& row) {
  return row.param.name;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_STORE_FIXTURE_H_
