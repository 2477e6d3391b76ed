// The IP configuration validation plug-in as a validation daemon sees it: four entry points with C
// linkage, for C and C++.
//
// Life of the plug-in: get_validation_point once, to learn the name under which the daemon files
// the plug-in's context; lib_init, which makes that context; validate for every triggered
// validation point; lib_finish.
//
// What the daemon promises
// - One caller at a time. The entry points take no lock, and all calls share the one context.
// - It files the pointer that lib_init produced under "ip_app_validation" in the registry that it
//   hands over as confd_trans_ctx::v_opaque, and hands over its own handle as vcb_opaque.
// - It makes a fresh context for every transaction that is to be judged by its own content: a
//   context reads each table at most once per address family and keeps what it has read, whatever
//   transaction it is called for later.
// - It expects exceptions: malformed key text throws std::invalid_argument, std::out_of_range or
//   boost::system::system_error out of validate, and memory that runs out std::bad_alloc or
//   std::length_error. The transaction then has no error text.
// - It expects the process to end, after an assertion message on standard error, when a keypath or
//   a value has a type that the data model excludes. This holds in every build type.
#ifndef IP_APP_VALIDATION_IP_APP_VALIDATION_H_
#define IP_APP_VALIDATION_IP_APP_VALIDATION_H_

#include "confd_dp.h"
#include "confd_lib.h"

/// Marks what the shared library exports.
#define IPAV_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/// Makes the plug-in's context.
///
/// @param out  receives the context, owned by the caller until lib_finish
/// @returns 0, always. std::bad_alloc passes through; `*out` is then as it was.
/// REQUIRES: `out` is not null; it is not looked at before it is written to.
IPAV_EXPORT int lib_init(void** out);

/// Writes the context name, "ip_app_validation", into `buf`.
///
/// @param size  bytes that `buf` holds: the name is cut to size - 1 bytes; 0 writes nothing
/// @returns 0, always.
IPAV_EXPORT int get_validation_point(char* buf, int size);

/// Judges the transaction from the point of view of one validation point.
///
/// @param tctx     v_opaque, vcb_opaque, thandle and validate_opaque are read. validate_opaque is
///                 never null and begins with the name of the validation point
/// @param keypath  the node that carries the validation point, in the shape that the point needs
/// @param newval   not looked at but never null: a node without a value gets any value
/// @returns 0 accepted, -1 refused. A refusal has set the transaction's error text, one finished
/// sentence, with confd_trans_seterr; the only refusals without a text are: a null argument, no
/// MAAPI socket, an unknown validation point. An accepted call leaves the error text alone.
IPAV_EXPORT int validate(struct confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                         confd_value_t* newval);

/// Destroys the context in `*ctx`; does nothing when `*ctx` is null. `*ctx` is not reset, so
/// whoever may come here twice sets it to null in between.
///
/// @returns 0, always.
/// REQUIRES: `ctx` is not null, and `*ctx` is null or a context that lib_init made and lib_finish
/// has not destroyed. Neither is looked at: a null `ctx` is read through, and a context that is
/// gone is destroyed once more.
IPAV_EXPORT int lib_finish(void** ctx);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // IP_APP_VALIDATION_IP_APP_VALIDATION_H_
