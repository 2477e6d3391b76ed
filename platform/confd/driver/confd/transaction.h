// Transactions and their contexts, for a host or a test that calls a plug-in. A device offers
// nothing of it. Single-threaded.
#ifndef CONFD_TRANSACTION_H_
#define CONFD_TRANSACTION_H_

#include <memory>
#include <string>

#include "confd_dp.h"
#include "store/snapshot.h"

namespace confd {

/// One configuration database: a running configuration, at most a few open transactions on it, and
/// sockets. Handles are numbers unique in the process. Destroying the database ends its
/// transactions and closes its sockets.
class Database {
 public:
  explicit Database(std::shared_ptr<const store::Snapshot> running);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// A socket for MAAPI or CDB calls, 0 or more.
  int OpenSocket();

  /// @returns the transaction handle for MAAPI calls.
  int StartTransaction(std::shared_ptr<const store::Snapshot> candidate);

  /// Gives `sock` access to the transaction, as maapi_attach does.
  void Attach(int sock, int thandle);

  /// Ends the transaction; sockets attached to it are detached and its cursors answer no more.
  /// @returns number of cursors still open on it; 0 when every walk was ended.
  int FinishTransaction(int thandle);

 private:
  int id_;
};

/// A transaction context ready for a validation callback; frees the error text.
class TransactionContext {
 public:
  TransactionContext() = default;
  ~TransactionContext();
  TransactionContext(const TransactionContext&) = delete;
  TransactionContext& operator=(const TransactionContext&) = delete;

  confd_trans_ctx* get() { return &ctx_; }

  /// Whether confd_trans_seterr was called since the last ClearError, and the text.
  bool has_error() const { return ctx_.error.str != nullptr; }
  std::string error() const { return has_error() ? ctx_.error.str : ""; }
  void ClearError();

 private:
  confd_trans_ctx ctx_{};
};

}  // namespace confd

#endif  // CONFD_TRANSACTION_H_
