// Transaction context of the ConfD client API and the error text of a transaction, as
// confd_lib_dp(3) describes them.
#ifndef CONFD_DP_H
#define CONFD_DP_H

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

#define CONFD_VALIDATION_FLAG_TEST 1
#define CONFD_VALIDATION_FLAG_COMMIT 2

enum confd_dbname {
  CONFD_NO_DB = 0,
  CONFD_CANDIDATE = 1,
  CONFD_RUNNING = 2,
  CONFD_STARTUP = 3,
  CONFD_OPERATIONAL = 4,
  CONFD_TRANSACTION = 5,
  CONFD_PRE_COMMIT_RUNNING = 6,
  CONFD_INTENDED = 7
};

enum confd_trans_mode { CONFD_READ = 1, CONFD_READ_WRITE = 2 };

enum confd_errcode {
  CONFD_ERRCODE_IN_USE = 0,
  CONFD_ERRCODE_RESOURCE_DENIED = 1,
  CONFD_ERRCODE_INCONSISTENT_VALUE = 2,
  CONFD_ERRCODE_ACCESS_DENIED = 3,
  CONFD_ERRCODE_APPLICATION = 4,
  CONFD_ERRCODE_APPLICATION_INTERNAL = 5,
  CONFD_ERRCODE_PROTO_USAGE = 6,
  CONFD_ERRCODE_INTERNAL = 7,
  CONFD_ERRCODE_DATA_MISSING = 8,
  CONFD_ERRCODE_INTERRUPT = 9
};

/// Error of a transaction. The layout is the stand-in's own: the public manual does not give one.
struct confd_error {
  enum confd_errcode code;
  char* str;  // malloc'ed text, null when none is set
};

struct confd_daemon_ctx;
struct confd_user_info;
struct confd_tr_item;

/// State of one transaction as its callbacks see it. Use the fields by name only: their offsets
/// differ on a device.
struct confd_trans_ctx {
  int fd;
  int vfd;
  struct confd_daemon_ctx* dx;
  enum confd_trans_mode mode;
  enum confd_dbname dbname;
  struct confd_user_info* uinfo;
  void* t_opaque;
  void* v_opaque;  // set by the daemon when validation begins
  struct confd_error error;
  struct confd_tr_item* accumulated;
  int thandle;  // for every MAAPI call
  void* cb_opaque;
  void* vcb_opaque;  // of the validation point registration whose callback is running
  int secondary_index;
  int validation_info;
  char* callpoint_opaque;
  char* validate_opaque;  // tailf:opaque of the validation statement that triggered the call
};

/// Replaces the error text of the transaction; printf format.
void confd_trans_seterr(struct confd_trans_ctx* tctx, const char* fmt, ...)
    __attribute__((format(printf, 2, 3)));

#ifdef __cplusplus
}
#endif

#endif  // CONFD_DP_H
