#include "database.h"

#include <map>
#include <string>
#include <utility>

#include "confd/transaction.h"
#include "cursor.h"
#include "errors.h"

namespace confd {
namespace {

struct Socket {
  int database;
  std::set<int> attached;
  bool cdb_session = false;
};

struct Handles {
  int last = 0;
  std::map<int, SearchedSnapshot> running;  // by database
  std::map<int, Socket> sockets;
  std::map<int, Transaction> transactions;
};

Handles& All() {
  static Handles handles;
  return handles;
}

Socket* FindSocket(int sock) {
  const auto entry = All().sockets.find(sock);
  if (entry != All().sockets.end()) return &entry->second;
  Fail(CONFD_ERR_NOSESSION, "no socket " + std::to_string(sock));
  return nullptr;
}

}  // namespace

Transaction* FindTransaction(int sock, int thandle) {
  const Socket* socket = FindSocket(sock);
  if (socket == nullptr) return nullptr;
  const auto entry = All().transactions.find(thandle);
  if (entry != All().transactions.end() && socket->attached.contains(thandle)) {
    return &entry->second;
  }
  Fail(CONFD_ERR_NOTRANS, "no transaction " + std::to_string(thandle) + " on this socket");
  return nullptr;
}

SearchedSnapshot* FindCdbSession(int sock) {
  const Socket* socket = FindSocket(sock);
  if (socket == nullptr) return nullptr;
  if (socket->cdb_session) return &All().running.at(socket->database);
  Fail(CONFD_ERR_NOSESSION, "no CDB session on socket " + std::to_string(sock));
  return nullptr;
}

int OpenCdbSession(int sock) {
  Socket* socket = FindSocket(sock);
  if (socket == nullptr) return CONFD_ERR;
  if (socket->cdb_session) return Fail(CONFD_ERR_PROTOUSAGE, "a CDB session is already open");
  socket->cdb_session = true;
  return CONFD_OK;
}

int EndCdbSession(int sock) {
  if (FindCdbSession(sock) == nullptr) return CONFD_ERR;
  All().sockets.at(sock).cdb_session = false;
  return CONFD_OK;
}

Database::Database(std::shared_ptr<const store::Snapshot> running) : id_(++All().last) {
  All().running.emplace(id_, SearchedSnapshot{std::move(running)});
}

Database::~Database() {
  Handles& all = All();
  for (auto entry = all.transactions.begin(); entry != all.transactions.end();) {
    const int thandle = (entry++)->first;
    if (all.transactions.at(thandle).database == id_) FinishTransaction(thandle);
  }
  std::erase_if(all.sockets, [this](const auto& entry) { return entry.second.database == id_; });
  all.running.erase(id_);
}

int Database::OpenSocket() {
  const int sock = ++All().last;
  All().sockets.emplace(sock, Socket{id_, {}, false});
  return sock;
}

int Database::StartTransaction(std::shared_ptr<const store::Snapshot> candidate) {
  const int thandle = ++All().last;
  All().transactions.emplace(
      thandle, Transaction{id_, {All().running.at(id_).snapshot}, {std::move(candidate)}, {}});
  return thandle;
}

void Database::Attach(int sock, int thandle) { All().sockets.at(sock).attached.insert(thandle); }

int Database::FinishTransaction(int thandle) {
  Transaction& transaction = All().transactions.at(thandle);
  for (CursorWalk* walk : transaction.walks) walk->transaction = nullptr;
  const auto open_walks = static_cast<int>(transaction.walks.size());
  All().transactions.erase(thandle);
  for (auto& [sock, socket] : All().sockets) socket.attached.erase(thandle);
  return open_walks;
}

}  // namespace confd
