// Reads of a transaction through the management interface, as confd_lib_maapi(3) describes them.
//
// Every function with a `fmt` formats its path first (%s %d %u %x %h, and %ip4, %ip6, %*x, %*h) and
// then parses the text: absolute, prefixes optional, keys in braces separated by blanks. All return
// CONFD_ERR with confd_errno set on an error and leave output arguments untouched then:
//   BADPATH   the text is no path, names an unknown node, or a key does not fit its type
//   NOEXISTS  leaf, or a list entry above it, is absent
//   BADTYPE   the leaf has another type than the getter
//   NOTRANS   no such transaction, or it is not attached to the socket
//   NOSESSION no such socket
#ifndef CONFD_MAAPI_H
#define CONFD_MAAPI_H

#include <stdarg.h>
#include <stddef.h>

#include "confd_dp.h"
#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

/// 1 exists, 0 does not, CONFD_ERR on an error. A list without keys exists when all that is above
/// it does.
int maapi_exists(int sock, int thandle, const char* fmt, ...);

/// Number of entries of the list, 0 or more.
int maapi_num_instances(int sock, int thandle, const char* fmt, ...);

/// Value of a leaf, a default in effect included; release with confd_free_value.
int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...);

int maapi_get_int8_elem(int sock, int thandle, int8_t* rval, const char* fmt, ...);
int maapi_get_int16_elem(int sock, int thandle, int16_t* rval, const char* fmt, ...);
int maapi_get_int32_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...);
int maapi_get_int64_elem(int sock, int thandle, int64_t* rval, const char* fmt, ...);
int maapi_get_u_int8_elem(int sock, int thandle, uint8_t* rval, const char* fmt, ...);
int maapi_get_u_int16_elem(int sock, int thandle, uint16_t* rval, const char* fmt, ...);
int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...);
int maapi_get_u_int64_elem(int sock, int thandle, uint64_t* rval, const char* fmt, ...);
int maapi_get_bool_elem(int sock, int thandle, int* rval, const char* fmt, ...);
int maapi_get_enum_value_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...);

/// Addresses in network byte order.
int maapi_get_ipv4_elem(int sock, int thandle, struct in_addr* rval, const char* fmt, ...);
int maapi_get_ipv6_elem(int sock, int thandle, struct in6_addr* rval, const char* fmt, ...);

/// Address with its host bits, network byte order, and prefix length in bits.
int maapi_get_ipv4_and_plen_elem(int sock, int thandle, struct confd_ipv4_prefix* rval,
                                 const char* fmt, ...);
int maapi_get_ipv6_and_plen_elem(int sock, int thandle, struct confd_ipv6_prefix* rval,
                                 const char* fmt, ...);

/// Copies at most n-1 bytes and a NUL; CONFD_ERR_PROTOUSAGE when the text does not fit.
int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...);

/// Bytes of a string or binary leaf, with a NUL behind them; release with free().
int maapi_get_buf_elem(int sock, int thandle, unsigned char** rval, int* bufsiz, const char* fmt,
                       ...);
int maapi_get_binary_elem(int sock, int thandle, unsigned char** rval, int* bufsiz, const char* fmt,
                          ...);

/// A walk over the entries of one list. `n` is the number of keys of the current entry, 0 when
/// there is none; the keys belong to the library and live until the next step.
struct maapi_cursor {
  int n;
  confd_value_t keys[MAXKEYLEN];
  const char* secondary_index;
  const char* xpath_expr;
  void* walk;  // private to the library
};

/// Entries come in key order, or in configuration order when the list is ordered by the user. After
/// a failed init the cursor holds no entry and may be stepped and destroyed.
int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...);
int maapi_get_next(struct maapi_cursor* mc);
void maapi_destroy_cursor(struct maapi_cursor* mc);

/// Evaluates a location path relative to the node at `fmtpath`.
/// @param res  malloc'ed string value of the first node in document order, "" for an empty node
/// set; null on failure. An expression that does not parse fails with CONFD_ERR_XPATH.
int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res, void (*trace)(char*),
                          const char* fmtpath, ...);

typedef enum confd_iter_ret (*maapi_iterate_fn)(confd_hkeypath_t* kp, enum confd_iter_op op,
                                                confd_value_t* oldv, confd_value_t* newv,
                                                void* state);

/// Calls `iter` for every change that the transaction makes: parents before children, nodes in
/// schema order, entries in list order, key leaves of a new entry first. Keypaths are absolute;
/// `oldv` is always null.
int maapi_diff_iterate(int sock, int thandle, maapi_iterate_fn iter, int flags, void* initstate);

/// The same, only for changes at or below the node at `fmtpath`; a list path without keys covers
/// all its entries.
int maapi_keypath_diff_iterate(int sock, int thandle, maapi_iterate_fn iter, int flags,
                               void* initstate, const char* fmtpath, ...);

#ifdef __cplusplus
}
#endif

#endif  // CONFD_MAAPI_H
