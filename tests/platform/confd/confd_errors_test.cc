#include "errors.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "confd/transaction.h"
#include "confd_dp.h"
#include "out_of_memory.h"

namespace {

TEST(Fail, SetsNumberAndText) {
  EXPECT_EQ(confd::Fail(CONFD_ERR_NOEXISTS, "not here"), CONFD_ERR);
  EXPECT_EQ(confd_errno, 1);
  EXPECT_STREQ(confd_lasterr(), "not here");
  EXPECT_STREQ(confd_strerror(confd_errno), "item does not exist");
}

TEST(OutOfMemory, IsNoOtherError) {
  EXPECT_THROW(store::ThrowIfOutOfMemory(LY_EMEM), std::bad_alloc);
  for (const LY_ERR result : {LY_SUCCESS, LY_ESYS, LY_EINVAL, LY_EINT, LY_EVALID, LY_EOTHER}) {
    EXPECT_NO_THROW(store::ThrowIfOutOfMemory(result)) << result;
  }
}

TEST(ErrorText, OfAnUnknownCodeIsNotNull) { EXPECT_STREQ(confd_strerror(12345), "unknown error"); }

TEST(TransactionError, IsEmptyAtFirst) {
  confd::TransactionContext context;
  EXPECT_FALSE(context.has_error());
  EXPECT_EQ(context.error(), "");
}

TEST(TransactionError, IsFormattedAndReplaced) {
  confd::TransactionContext context;
  confd_trans_seterr(context.get(), "%s: %d", "first", 1);
  EXPECT_EQ(context.error(), "first: 1");
  EXPECT_EQ(context.get()->error.code, CONFD_ERRCODE_APPLICATION);
  confd_trans_seterr(context.get(), "%s", "100% of second");
  EXPECT_EQ(context.error(), "100% of second");
}

TEST(TransactionError, MayBeAnEmptyText) {
  confd::TransactionContext context;
  confd_trans_seterr(context.get(), "%s", "");
  EXPECT_TRUE(context.has_error());
  EXPECT_EQ(context.error(), "");
}

TEST(TransactionError, HasNoLimitOnItsLength) {
  confd::TransactionContext context;
  const std::string text(100000, 'x');
  confd_trans_seterr(context.get(), "%s", text.c_str());
  EXPECT_EQ(context.error(), text);
}

TEST(TransactionError, IsClearedAsOftenAsAsked) {
  confd::TransactionContext context;
  confd_trans_seterr(context.get(), "text");
  context.ClearError();
  EXPECT_FALSE(context.has_error());
  context.ClearError();
  EXPECT_FALSE(context.has_error());
}

}  // namespace
