#include "confd_maapi.h"

#include <libyang/libyang.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "calls.h"
#include "confd/keypath.h"
#include "cursor.h"
#include "database.h"
#include "errors.h"
#include "path.h"
#include "read.h"
#include "store/diff.h"
#include "store/schema_node.h"
#include "store/xpath.h"

namespace confd {
namespace {

// What every call does first: find the transaction, format the path, announce the call, look the
// path up. `place` is empty when one of these failed; the error is set then.
struct TransactionCall {
  TransactionCall(const char* function, int sock, int thandle, const char* format, va_list args)
      : transaction(FindTransaction(sock, thandle)), path(format, args) {
    if (!BeginCall(function, path.view()) || transaction == nullptr || !path.is_valid()) return;
    place = FindPlace(transaction->candidate, path.view());
  }

  Transaction* transaction;
  FormattedPath path;
  std::optional<store::Place> place;
};

template <typename Take>
int GetTyped(const TransactionCall& call, confd_vtype type, Take take) {
  return call.place ? ReadTyped(*call.place, type, take) : CONFD_ERR;
}

// Hands the bytes of a string or binary leaf over to the caller, who frees them.
int GetBytes(const TransactionCall& call, confd_vtype type, unsigned char** bytes, int* size) {
  return GetTyped(call, type, [bytes, size](const confd_value_t& value) {
    *bytes = static_cast<unsigned char*>(malloc(value.val.buf.size + 1));
    memcpy(*bytes, value.val.buf.ptr, value.val.buf.size + 1);
    *size = static_cast<int>(value.val.buf.size);
  });
}

void FreeCursorKeys(maapi_cursor* mc) {
  for (int i = 0; i < mc->n; ++i) FreeOwned(&mc->keys[i]);
  mc->n = 0;
}

int InitCursor(const TransactionCall& call, maapi_cursor* mc) {
  if (!call.place) return CONFD_ERR;
  if (!call.place->without_keys) return Fail(CONFD_ERR_BADPATH, "not the path of a list");
  if (!call.place->exists) {
    return Fail(CONFD_ERR_NOEXISTS, store::SchemaPath(call.place->schema) + " has no parent here");
  }
  const store::ListIndex& list =
      call.transaction->candidate.snapshot->List(call.place->parent, call.place->schema);
  auto walk = std::make_unique<CursorWalk>(CursorWalk{call.transaction, &list});
  call.transaction->walks.insert(walk.get());
  mc->walk = walk.release();
  return CONFD_OK;
}

// Gives the text of the first node that the expression names to the caller, who frees it.
int Evaluate(const TransactionCall& call, const char* expression, char** result) {
  if (!call.place) return CONFD_ERR;
  if (call.place->schema != nullptr && call.place->node == nullptr) {
    return Fail(CONFD_ERR_BADPATH, "the context node does not exist");
  }
  const auto text =
      store::EvaluateXPath(*call.transaction->candidate.snapshot, call.place->node, expression);
  if (!text) return Fail(CONFD_ERR_XPATH, std::string("cannot evaluate ") + expression);
  *result = strdup(text->c_str());
  return CONFD_OK;
}

confd_iter_op OperationOf(store::ChangeKind kind) {
  switch (kind) {
    case store::ChangeKind::kCreated:
      return MOP_CREATED;
    case store::ChangeKind::kDeleted:
      return MOP_DELETED;
    case store::ChangeKind::kModified:
      return MOP_MODIFIED;
    case store::ChangeKind::kValueSet:
      return MOP_VALUE_SET;
    case store::ChangeKind::kMovedAfter:
      break;
  }
  return MOP_MOVED_AFTER;
}

store::VisitResult ResultOf(confd_iter_ret answer) {
  switch (answer) {
    case ITER_STOP:
      return store::VisitResult::kStop;
    case ITER_RECURSE:
      return store::VisitResult::kRecurse;
    case ITER_CONTINUE:
      return store::VisitResult::kContinue;
    default:
      return store::VisitResult::kOther;
  }
}

struct IterateState {
  const store::Schema* schema;
  maapi_iterate_fn iter;
  void* state;
  std::optional<size_t> wrong_value;  // of the call that walks, not of those that `iter` makes
  Keypath keypath = {};               // of the change at hand
};

// One change as the caller's function receives it. The value belongs to the library.
confd_iter_ret Report(IterateState& to, const store::Change& change) {
  Keypath& keypath = to.keypath;
  keypath.Set(*to.schema, change.node());
  const size_t elements = static_cast<size_t>(keypath.get()->len);
  if (to.wrong_value > 0u && to.wrong_value <= elements) {
    ReplaceByOtherType(&keypath.get()->v[*to.wrong_value - 1][0]);
  }
  const confd_iter_op op = OperationOf(change.kind);
  if (op == MOP_VALUE_SET) {
    confd_value_t value = LeafValue(change.candidate);
    if (to.wrong_value == 0u) ReplaceByOtherType(&value);
    const confd_iter_ret result = to.iter(keypath.get(), op, nullptr, &value, to.state);
    FreeOwned(&value);
    return result;
  }
  if (op == MOP_MOVED_AFTER && change.after != nullptr) {
    Keypath after(*to.schema, change.after);
    return to.iter(keypath.get(), op, nullptr, after.get()->v[0], to.state);
  }
  return to.iter(keypath.get(), op, nullptr, nullptr, to.state);
}

int Iterate(const TransactionCall& call, maapi_iterate_fn iter, int flags, void* initstate) {
  if (!call.place) return CONFD_ERR;
  const store::Snapshot& running = *call.transaction->running.snapshot;
  const store::Snapshot& candidate = *call.transaction->candidate.snapshot;
  const auto running_place = FindPlace(call.transaction->running, call.path.view());
  IterateState state{&candidate.schema(), iter, initstate, WrongValue()};
  store::VisitChangesBelow(
      running, *running_place, candidate, *call.place, (flags & ITER_WANT_P_CONTAINER) != 0,
      [&state](const store::Change& change) { return ResultOf(Report(state, change)); });
  return CONFD_OK;
}

int IterateFrom(const char* function, int sock, int thandle, maapi_iterate_fn iter, int flags,
                void* initstate, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const TransactionCall call(function, sock, thandle, format, args);
  va_end(args);
  return Iterate(call, iter, flags, initstate);
}

}  // namespace
}  // namespace confd

// The typed reads differ in the type they demand and the member they give, so each is written by
// one line below.
// NOLINTBEGIN(bugprone-macro-parentheses): RESULT is a type
#define CONFD_TYPED_READ(NAME, RESULT, TYPE, MEMBER)                                          \
  int NAME(int sock, int thandle, RESULT* rval, const char* fmt, ...) {                       \
    va_list args;                                                                             \
    va_start(args, fmt);                                                                      \
    const confd::TransactionCall call(#NAME, sock, thandle, fmt, args);                       \
    va_end(args);                                                                             \
    return confd::GetTyped(call, TYPE,                                                        \
                           [rval](const confd_value_t& value) { *rval = value.val.MEMBER; }); \
  }
// NOLINTEND(bugprone-macro-parentheses)

CONFD_TYPED_READ(maapi_get_int8_elem, int8_t, C_INT8, i8)
CONFD_TYPED_READ(maapi_get_int16_elem, int16_t, C_INT16, i16)
CONFD_TYPED_READ(maapi_get_int32_elem, int32_t, C_INT32, i32)
CONFD_TYPED_READ(maapi_get_int64_elem, int64_t, C_INT64, i64)
CONFD_TYPED_READ(maapi_get_u_int8_elem, uint8_t, C_UINT8, u8)
CONFD_TYPED_READ(maapi_get_u_int16_elem, uint16_t, C_UINT16, u16)
CONFD_TYPED_READ(maapi_get_u_int32_elem, uint32_t, C_UINT32, u32)
CONFD_TYPED_READ(maapi_get_u_int64_elem, uint64_t, C_UINT64, u64)
CONFD_TYPED_READ(maapi_get_bool_elem, int, C_BOOL, boolean)
CONFD_TYPED_READ(maapi_get_enum_value_elem, int32_t, C_ENUM_VALUE, enumvalue)
CONFD_TYPED_READ(maapi_get_ipv4_elem, struct in_addr, C_IPV4, ip)
CONFD_TYPED_READ(maapi_get_ipv6_elem, struct in6_addr, C_IPV6, ip6)
CONFD_TYPED_READ(maapi_get_ipv4_and_plen_elem, struct confd_ipv4_prefix, C_IPV4_AND_PLEN,
                 ipv4prefix)
CONFD_TYPED_READ(maapi_get_ipv6_and_plen_elem, struct confd_ipv6_prefix, C_IPV6_AND_PLEN,
                 ipv6prefix)
#undef CONFD_TYPED_READ

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_exists", sock, thandle, fmt, args);
  va_end(args);
  return call.place ? confd::ReadExists(*call.place) : CONFD_ERR;
}

int maapi_num_instances(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_num_instances", sock, thandle, fmt, args);
  va_end(args);
  if (!call.place) return CONFD_ERR;
  return confd::ReadInstanceCount(*call.transaction->candidate.snapshot, *call.place);
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_get_elem", sock, thandle, fmt, args);
  va_end(args);
  return call.place ? confd::GiveValue(*call.place, v) : CONFD_ERR;
}

int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_get_str_elem", sock, thandle, fmt, args);
  va_end(args);
  bool fits = false;
  const int result = confd::GetTyped(call, C_BUF, [&](const confd_value_t& value) {
    fits = static_cast<int64_t>(value.val.buf.size) < n;
    if (fits) memcpy(buf, value.val.buf.ptr, value.val.buf.size + 1);
  });
  if (result != CONFD_OK || fits) return result;
  return confd::Fail(CONFD_ERR_PROTOUSAGE, "the text does not fit into the buffer");
}

int maapi_get_buf_elem(int sock, int thandle, unsigned char** rval, int* bufsiz, const char* fmt,
                       ...) {
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_get_buf_elem", sock, thandle, fmt, args);
  va_end(args);
  return confd::GetBytes(call, C_BUF, rval, bufsiz);
}

int maapi_get_binary_elem(int sock, int thandle, unsigned char** rval, int* bufsiz, const char* fmt,
                          ...) {
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_get_binary_elem", sock, thandle, fmt, args);
  va_end(args);
  return confd::GetBytes(call, C_BINARY, rval, bufsiz);
}

int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...) {
  mc->n = 0;
  mc->secondary_index = nullptr;
  mc->xpath_expr = nullptr;
  mc->walk = nullptr;
  va_list args;
  va_start(args, fmt);
  const confd::TransactionCall call("maapi_init_cursor", sock, thandle, fmt, args);
  va_end(args);
  return confd::InitCursor(call, mc);
}

int maapi_get_next(struct maapi_cursor* mc) {
  confd::FreeCursorKeys(mc);
  if (!confd::BeginCall("maapi_get_next", "")) return CONFD_ERR;
  auto* walk = static_cast<confd::CursorWalk*>(mc->walk);
  if (walk == nullptr) return confd::Fail(CONFD_ERR_BADSTATE, "the cursor was not initialised");
  if (walk->transaction == nullptr) {
    return confd::Fail(CONFD_ERR_NOTRANS, "the cursor's transaction has ended");
  }
  if (mc->secondary_index != nullptr || mc->xpath_expr != nullptr) {
    return confd::Fail(CONFD_ERR_NOT_IMPLEMENTED, "cursors follow no index and no filter");
  }
  if (walk->next == walk->list->entries().size()) return CONFD_OK;
  const lyd_node* entry = walk->list->entries()[walk->next++];
  for (const lyd_node* key = lyd_child(entry); key != nullptr && lysc_is_key(key->schema);
       key = key->next) {
    mc->keys[mc->n++] = confd::LeafValue(key);
  }
  const std::optional<size_t> wrong = confd::WrongValue();
  if (wrong && *wrong < static_cast<size_t>(mc->n)) confd::ReplaceByOtherType(&mc->keys[*wrong]);
  return CONFD_OK;
}

void maapi_destroy_cursor(struct maapi_cursor* mc) {
  confd::BeginCall("maapi_destroy_cursor", "");
  confd::FreeCursorKeys(mc);
  auto* walk = static_cast<confd::CursorWalk*>(mc->walk);
  if (walk == nullptr) return;
  if (walk->transaction != nullptr) walk->transaction->walks.erase(walk);
  delete walk;
  mc->walk = nullptr;
}

int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res,
                          void (* /*trace*/)(char*), const char* fmtpath, ...) {
  *res = nullptr;
  va_list args;
  va_start(args, fmtpath);
  // Without a path the context is the current position, which is always the root here.
  const char* context = fmtpath == nullptr ? "/" : fmtpath;
  const confd::TransactionCall call("maapi_xpath_eval_expr", sock, thandle, context, args);
  va_end(args);
  return confd::Evaluate(call, expr, res);
}

int maapi_diff_iterate(int sock, int thandle, maapi_iterate_fn iter, int flags, void* initstate) {
  return confd::IterateFrom("maapi_diff_iterate", sock, thandle, iter, flags, initstate, "/");
}

int maapi_keypath_diff_iterate(int sock, int thandle, maapi_iterate_fn iter, int flags,
                               void* initstate, const char* fmtpath, ...) {
  va_list args;
  va_start(args, fmtpath);
  const confd::TransactionCall call("maapi_keypath_diff_iterate", sock, thandle, fmtpath, args);
  va_end(args);
  return confd::Iterate(call, iter, flags, initstate);
}
