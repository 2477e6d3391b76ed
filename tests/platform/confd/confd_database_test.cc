#include "database.h"

#include <gtest/gtest.h>

#include <optional>

#include "confd_cdb.h"
#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using confd::Database;
using store::Snapshot;
using tests::SampleSchema;
using tests::StoreTest;

constexpr const char* kPath = "/values/text";

TEST_F(StoreTest, AnUnknownSocketIsNoSession) {
  Open("{}");
  EXPECT_EQ(maapi_exists(sock_ + 1000, thandle_, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
  EXPECT_EQ(maapi_exists(-1, thandle_, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
}

TEST_F(StoreTest, AnUnknownTransactionIsNoTransaction) {
  Open("{}");
  EXPECT_EQ(maapi_exists(sock_, thandle_ + 1000, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
  EXPECT_EQ(maapi_exists(sock_, -1, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
}

TEST_F(StoreTest, ASocketSeesOnlyWhatItIsAttachedTo) {
  Open("{}");
  const int other = store_->OpenSocket();
  EXPECT_EQ(maapi_exists(other, thandle_, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
  store_->Attach(other, thandle_);
  EXPECT_EQ(maapi_exists(other, thandle_, kPath), 0);
}

TEST_F(StoreTest, AFinishedTransactionIsNoTransaction) {
  Open("{}");
  const int other = store_->StartTransaction(candidate_);
  store_->Attach(sock_, other);
  EXPECT_EQ(maapi_exists(sock_, other, kPath), 0);
  EXPECT_EQ(store_->FinishTransaction(other), 0);
  EXPECT_EQ(maapi_exists(sock_, other, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
  EXPECT_EQ(maapi_exists(sock_, thandle_, kPath), 0) << "the first one goes on";
}

TEST_F(StoreTest, TransactionsReadTheirOwnCandidate) {
  Open(R"({"store-sample:values":{"text":"first"}})");
  const int other = store_->StartTransaction(Snapshot::Empty(SampleSchema()));
  store_->Attach(sock_, other);
  EXPECT_EQ(maapi_exists(sock_, thandle_, kPath), 1);
  EXPECT_EQ(maapi_exists(sock_, other, kPath), 0);
}

TEST_F(StoreTest, HandlesAreNumbersOfZeroOrMoreAndNotUsedTwice) {
  Open("{}");
  Database other(running_);
  const int sock = other.OpenSocket();
  EXPECT_GE(sock, 0);
  EXPECT_NE(sock, sock_);
  EXPECT_NE(other.StartTransaction(candidate_), thandle_);
}

TEST_F(StoreTest, DestroyingTheDatastoreClosesAll) {
  Open("{}");
  ASSERT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_OK);
  store_.reset();
  EXPECT_EQ(maapi_exists(sock_, thandle_, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
  EXPECT_EQ(cdb_exists(sock_, kPath), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
}

TEST_F(StoreTest, DestroyingOneDatastoreLeavesTheOther) {
  Open("{}");
  {
    Database other(running_);
    other.StartTransaction(candidate_);
  }
  EXPECT_EQ(maapi_exists(sock_, thandle_, kPath), 0);
}

}  // namespace
