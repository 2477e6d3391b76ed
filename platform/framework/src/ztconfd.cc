#include "ztconfd.h"

#include "framework/host.h"

namespace {

const framework::Daemon* DaemonOf(const void* handle) {
  return static_cast<const framework::Daemon*>(handle);
}

// A socket with an open session, or -1.
int OpenSession(const ZtConfdInterface* interface, cdb_db_type db, bool lock_free) {
  if (interface == nullptr) return -1;
  const int sock = DaemonOf(interface)->cdb_socket;
  if (sock < 0) return -1;
  const int opened = lock_free ? cdb_start_session2(sock, db, 0) : cdb_start_session(sock, db);
  return opened == CONFD_OK ? sock : -1;
}

}  // namespace

namespace framework {

void* ContextRegistry::Find(const std::string& name) const {
  const auto context = contexts_.find(name);
  return context == contexts_.end() ? nullptr : context->second;
}

}  // namespace framework

int ztconfd_maapi_socket_get(void* handle) {
  return handle == nullptr ? -1 : DaemonOf(handle)->maapi_socket;
}

void* get_lib_context(void* registry, const char* name) {
  if (registry == nullptr) return nullptr;
  return static_cast<const framework::ContextRegistry*>(registry)->Find(name);
}

// ZtConfdInterface is never defined: a pointer to it only carries the daemon's address from here to
// OpenSession, which turns it back before it looks at the daemon.
ZtConfdInterface* ztconfd_instance_get(ztconfd_t handle) {
  return static_cast<ZtConfdInterface*>(handle);
}

ZtConfdCdbSessionBase::ZtConfdCdbSessionBase(ZtConfdInterface* interface, cdb_db_type db,
                                             bool lock_free)
    : socket_(OpenSession(interface, db, lock_free)) {}

ZtConfdCdbSessionBase::~ZtConfdCdbSessionBase() {
  if (socket_ >= 0) cdb_end_session(socket_);
}

ZtConfdCdbSession::~ZtConfdCdbSession() = default;
