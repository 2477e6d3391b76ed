// Services of the validation daemon around ConfD: sockets, the context registry and CDB sessions.
// Stand-in for the header of the device's framework library.
#ifndef ZTCONFD_H
#define ZTCONFD_H

#include "confd_cdb.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The handle that the daemon registers with its validation callbacks
/// (confd_trans_ctx::vcb_opaque).
typedef void* ztconfd_t;

/// MAAPI socket of the daemon behind `handle`; negative when there is none.
int ztconfd_maapi_socket_get(void* handle);

/// The context pointer that a plug-in's lib_init produced, as filed under the plug-in's name; null
/// when there is none.
/// @param registry  confd_trans_ctx::v_opaque
void* get_lib_context(void* registry, const char* name);

#ifdef __cplusplus
}  // extern "C"

/// The daemon's ConfD connection, from which CDB sessions get their sockets.
class ZtConfdInterface;

/// Interface object of the daemon behind `handle`; null when there is none.
extern "C" ZtConfdInterface* ztconfd_instance_get(ztconfd_t handle);

/// A CDB session that lives as long as the object.
class ZtConfdCdbSessionBase {
 public:
  /// Opens a session on `db`.
  /// @param lock_free  true: without the read lock, which is safe while a transaction is validated
  ZtConfdCdbSessionBase(ZtConfdInterface* interface, cdb_db_type db, bool lock_free);

  /// Ends the session.
  virtual ~ZtConfdCdbSessionBase();

  ZtConfdCdbSessionBase(const ZtConfdCdbSessionBase&) = delete;
  ZtConfdCdbSessionBase& operator=(const ZtConfdCdbSessionBase&) = delete;

  /// Socket for cdb_ calls; negative when no session could be opened.
  int Socket() const { return socket_; }

 private:
  int socket_;
};

/// The session class that plug-ins use.
class ZtConfdCdbSession : public ZtConfdCdbSessionBase {
 public:
  using ZtConfdCdbSessionBase::ZtConfdCdbSessionBase;
  ~ZtConfdCdbSession() override;
};
#endif  // __cplusplus

#endif  // ZTCONFD_H
