// Types, macros and library functions of the ConfD client API, as far as this project uses them. A
// stand-in with the names, prototypes, numbers and rules of the public manual pages confd_types(3)
// and confd_lib_lib(3); source compatible, not binary compatible, with a device SDK.
#ifndef CONFD_LIB_H
#define CONFD_LIB_H

#include <assert.h>
#include <netinet/in.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

// Return codes.
#define CONFD_OK 0
#define CONFD_ERR (-1)
#define CONFD_EOF (-2)
#define CONFD_VALIDATION_WARN (-3)
#define CONFD_ACCUMULATE 1
#define CONFD_DELAYED_RESPONSE 2

#define CONFD_TRUE 1
#define CONFD_FALSE 0
#define CONFD_PORT 4565

// Codes that confd_errno takes.
#define CONFD_ERR_NOEXISTS 1
#define CONFD_ERR_ALREADY_EXISTS 2
#define CONFD_ERR_ACCESS_DENIED 3
#define CONFD_ERR_NOT_WRITABLE 4
#define CONFD_ERR_BADTYPE 5
#define CONFD_ERR_NOTCREATABLE 6
#define CONFD_ERR_NOTDELETABLE 7
#define CONFD_ERR_BADPATH 8
#define CONFD_ERR_NOSTACK 9
#define CONFD_ERR_LOCKED 10
#define CONFD_ERR_INUSE 11
#define CONFD_ERR_NOTSET 12
#define CONFD_ERR_BADSTATE 17
#define CONFD_ERR_INTERNAL 18
#define CONFD_ERR_EXTERNAL 19
#define CONFD_ERR_MALLOC 20
#define CONFD_ERR_PROTOUSAGE 21
#define CONFD_ERR_NOSESSION 22
#define CONFD_ERR_OS 24
#define CONFD_ERR_UNAVAILABLE 44
#define CONFD_ERR_XPATH 50
#define CONFD_ERR_NOT_IMPLEMENTED 51
#define CONFD_ERR_NOTRANS 61

// Deepest path plus one, and most keys of a list plus one.
#define MAXDEPTH 20
#define MAXKEYLEN 9

#define CONFD_TIMEZONE_UNDEF (-111)

enum confd_vtype {
  C_NOEXISTS = 1,
  C_XMLTAG = 2,
  C_SYMBOL = 3,
  C_STR = 4,
  C_BUF = 5,
  C_INT8 = 6,
  C_INT16 = 7,
  C_INT32 = 8,
  C_INT64 = 9,
  C_UINT8 = 10,
  C_UINT16 = 11,
  C_UINT32 = 12,
  C_UINT64 = 13,
  C_DOUBLE = 14,
  C_IPV4 = 15,
  C_IPV6 = 16,
  C_BOOL = 17,
  C_QNAME = 18,
  C_DATETIME = 19,
  C_DATE = 20,
  C_TIME = 23,
  C_DURATION = 27,
  C_ENUM_VALUE = 28,
  C_BIT32 = 29,
  C_BIT64 = 30,
  C_LIST = 31,
  C_XMLBEGIN = 32,
  C_XMLEND = 33,
  C_OBJECTREF = 34,
  C_UNION = 35,
  C_PTR = 36,
  C_CDBBEGIN = 37,
  C_OID = 38,
  C_BINARY = 39,
  C_IPV4PREFIX = 40,
  C_IPV6PREFIX = 41,
  C_DEFAULT = 42,
  C_DECIMAL64 = 43,
  C_IDENTITYREF = 44,
  C_XMLBEGINDEL = 45,
  C_DQUAD = 46,
  C_HEXSTR = 47,
  C_IPV4_AND_PLEN = 48,
  C_IPV6_AND_PLEN = 49,
  C_BITBIG = 50,
  C_XMLMOVEFIRST = 51,
  C_XMLMOVEAFTER = 52,
  C_EMPTY = 53,
  C_MAXTYPE = 54
};
#define C_ENUM_HASH C_ENUM_VALUE

/// A data model node: hash of its name and hash of its namespace.
struct xml_tag {
  uint32_t tag;
  uint32_t ns;
};

typedef struct confd_buf {
  unsigned int size;
  unsigned char* ptr;
} confd_buf_t;

typedef struct confd_buf_const {
  unsigned int size;
  const unsigned char* ptr;
} confd_buf_const_t;

struct confd_qname {
  confd_buf_t prefix;
  confd_buf_t name;
};

/// Address in network byte order; `len` in bits, 0 to 32.
struct confd_ipv4_prefix {
  struct in_addr ip;
  uint8_t len;
};

/// Address in network byte order; `len` in bits, 0 to 128.
struct confd_ipv6_prefix {
  struct in6_addr ip6;
  uint8_t len;
};

struct confd_value;
struct confd_hkeypath;

struct confd_list {
  unsigned int size;
  struct confd_value* ptr;
};

struct confd_datetime {
  int16_t year;
  uint8_t month;
  uint8_t day;
  uint8_t hour;
  uint8_t min;
  uint8_t sec;
  uint32_t micro;
  int8_t timezone;
  int8_t timezone_minutes;
};

struct confd_date {
  int16_t year;
  uint8_t month;
  uint8_t day;
  int8_t timezone;
  int8_t timezone_minutes;
};

struct confd_time {
  uint8_t hour;
  uint8_t min;
  uint8_t sec;
  uint32_t micro;
  int8_t timezone;
  int8_t timezone_minutes;
};

struct confd_duration {
  uint32_t years;
  uint32_t months;
  uint32_t days;
  uint32_t hours;
  uint32_t mins;
  uint32_t secs;
  uint32_t micros;
};

struct confd_decimal64 {
  int64_t value;
  uint8_t fraction_digits;
};

struct confd_identityref {
  uint32_t ns;
  uint32_t id;
};

struct confd_dotted_quad {
  unsigned char quad[4];
};

struct confd_snmp_oid {
  uint32_t oid[128];
  int len;
};

struct confd_vptr {
  enum confd_vtype type;
  void* ptr;
};

/// One typed value. C_BUF, C_BINARY, C_LIST, C_OBJECTREF, C_OID, C_QNAME, C_HEXSTR and C_BITBIG own
/// memory; a value of such a type that a read returned is released with confd_free_value. Received
/// C_BUF, C_BINARY and C_HEXSTR data has a NUL byte after its `size` bytes, also when `size` is 0.
typedef struct confd_value {
  enum confd_vtype type;
  union {
    struct xml_tag xmltag;
    uint32_t symbol;
    confd_buf_t buf;
    confd_buf_const_t c_buf;
    char* s;
    const char* c_s;
    int8_t i8;
    int16_t i16;
    int32_t i32;
    int64_t i64;
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    uint64_t u64;
    double d;
    struct in_addr ip;
    struct in6_addr ip6;
    int boolean;
    struct confd_qname qname;
    struct confd_datetime datetime;
    struct confd_date date;
    struct confd_time time;
    struct confd_duration duration;
    int32_t enumvalue;
    uint32_t b32;
    uint64_t b64;
    struct confd_list list;
    struct confd_hkeypath* hkp;
    struct confd_vptr ptr;
    struct confd_snmp_oid* oidp;
    struct confd_ipv4_prefix ipv4prefix;
    struct confd_ipv6_prefix ipv6prefix;
    struct confd_decimal64 d64;
    struct confd_identityref idref;
    struct confd_dotted_quad dquad;
    uint32_t enumhash;
  } val;
} confd_value_t;

/// A path from the root to a node, deepest element first. A node is one element with its C_XMLTAG
/// in v[i][0]; a list entry has one further element, at the index below the list's tag, with all
/// its keys. Every element ends with a C_NOEXISTS value. `len` counts elements. A path that ends at
/// a list without keys has the list's tag in v[0][0].
typedef struct confd_hkeypath {
  int len;
  confd_value_t v[MAXDEPTH][MAXKEYLEN];
} confd_hkeypath_t;

typedef struct confd_tag_value {
  struct xml_tag tag;
  confd_value_t v;
} confd_tag_value_t;

// Every CONFD_GET_ macro first checks the type; define CONFD_ASSERT before this header to handle a
// failure otherwise.
#ifndef CONFD_ASSERT
#define CONFD_ASSERT(E) assert(E)
#endif

#define CONFD_GET_XMLTAG(V) (CONFD_ASSERT((V)->type == C_XMLTAG), (V)->val.xmltag.tag)
#define CONFD_GET_XMLTAG_NS(V) (CONFD_ASSERT((V)->type == C_XMLTAG), (V)->val.xmltag.ns)
#define CONFD_GET_BUFPTR(V) (CONFD_ASSERT((V)->type == C_BUF), (V)->val.buf.ptr)
#define CONFD_GET_BUFSIZE(V) (CONFD_ASSERT((V)->type == C_BUF), (V)->val.buf.size)
#define CONFD_GET_CBUFPTR(V) (CONFD_ASSERT((V)->type == C_BUF), (char*)(V)->val.buf.ptr)
#define CONFD_GET_BINARY_PTR(V) (CONFD_ASSERT((V)->type == C_BINARY), (V)->val.buf.ptr)
#define CONFD_GET_BINARY_SIZE(V) (CONFD_ASSERT((V)->type == C_BINARY), (V)->val.buf.size)
#define CONFD_GET_HEXSTR_PTR(V) (CONFD_ASSERT((V)->type == C_HEXSTR), (V)->val.buf.ptr)
#define CONFD_GET_HEXSTR_SIZE(V) (CONFD_ASSERT((V)->type == C_HEXSTR), (V)->val.buf.size)
#define CONFD_GET_INT8(V) (CONFD_ASSERT((V)->type == C_INT8), (V)->val.i8)
#define CONFD_GET_INT16(V) (CONFD_ASSERT((V)->type == C_INT16), (V)->val.i16)
#define CONFD_GET_INT32(V) (CONFD_ASSERT((V)->type == C_INT32), (V)->val.i32)
#define CONFD_GET_INT64(V) (CONFD_ASSERT((V)->type == C_INT64), (V)->val.i64)
#define CONFD_GET_UINT8(V) (CONFD_ASSERT((V)->type == C_UINT8), (V)->val.u8)
#define CONFD_GET_UINT16(V) (CONFD_ASSERT((V)->type == C_UINT16), (V)->val.u16)
#define CONFD_GET_UINT32(V) (CONFD_ASSERT((V)->type == C_UINT32), (V)->val.u32)
#define CONFD_GET_UINT64(V) (CONFD_ASSERT((V)->type == C_UINT64), (V)->val.u64)
#define CONFD_GET_ENUM_VALUE(V) (CONFD_ASSERT((V)->type == C_ENUM_VALUE), (V)->val.enumvalue)
#define CONFD_GET_BOOL(V) (CONFD_ASSERT((V)->type == C_BOOL), (V)->val.boolean)
#define CONFD_GET_IPV4(V) (CONFD_ASSERT((V)->type == C_IPV4), (V)->val.ip)
#define CONFD_GET_IPV6(V) (CONFD_ASSERT((V)->type == C_IPV6), (V)->val.ip6)
#define CONFD_GET_IPV4PREFIX(V) (CONFD_ASSERT((V)->type == C_IPV4PREFIX), (V)->val.ipv4prefix)
#define CONFD_GET_IPV6PREFIX(V) (CONFD_ASSERT((V)->type == C_IPV6PREFIX), (V)->val.ipv6prefix)
#define CONFD_GET_IPV4_AND_PLEN(V) (CONFD_ASSERT((V)->type == C_IPV4_AND_PLEN), (V)->val.ipv4prefix)
#define CONFD_GET_IPV6_AND_PLEN(V) (CONFD_ASSERT((V)->type == C_IPV6_AND_PLEN), (V)->val.ipv6prefix)
#define CONFD_GET_DECIMAL64(V) (CONFD_ASSERT((V)->type == C_DECIMAL64), (V)->val.d64)
#define CONFD_GET_IDENTITYREF(V) (CONFD_ASSERT((V)->type == C_IDENTITYREF), (V)->val.idref)
#define CONFD_GET_LIST(V) (CONFD_ASSERT((V)->type == C_LIST), (V)->val.list.ptr)
#define CONFD_GET_LISTSIZE(V) (CONFD_ASSERT((V)->type == C_LIST), (V)->val.list.size)
#define CONFD_GET_OBJECTREF(V) (CONFD_ASSERT((V)->type == C_OBJECTREF), (V)->val.hkp)

#define CONFD_SET_NOEXISTS(V) \
  { (V)->type = C_NOEXISTS; }
#define CONFD_SET_EMPTY(V) \
  { (V)->type = C_EMPTY; }
#define CONFD_SET_XMLTAG(V, TAG, NS) \
  {                                  \
    (V)->type = C_XMLTAG;            \
    (V)->val.xmltag.tag = (TAG);     \
    (V)->val.xmltag.ns = (NS);       \
  }
#define CONFD_SET_BUF(V, PTR, SIZE) \
  {                                 \
    (V)->type = C_BUF;              \
    (V)->val.buf.ptr = (PTR);       \
    (V)->val.buf.size = (SIZE);     \
  }
#define CONFD_SET_CBUF(V, PTR, SIZE)                  \
  {                                                   \
    (V)->type = C_BUF;                                \
    (V)->val.c_buf.ptr = (const unsigned char*)(PTR); \
    (V)->val.c_buf.size = (SIZE);                     \
  }
#define CONFD_SET_STR(V, PTR) \
  {                           \
    (V)->type = C_STR;        \
    (V)->val.c_s = (PTR);     \
  }
#define CONFD_SET_BINARY(V, PTR, SIZE) \
  {                                    \
    (V)->type = C_BINARY;              \
    (V)->val.buf.ptr = (PTR);          \
    (V)->val.buf.size = (SIZE);        \
  }
#define CONFD_SET_SCALAR_(V, TYPE, MEMBER, X) \
  {                                           \
    (V)->type = (TYPE);                       \
    (V)->val.MEMBER = (X);                    \
  }
#define CONFD_SET_INT8(V, X) CONFD_SET_SCALAR_(V, C_INT8, i8, X)
#define CONFD_SET_INT16(V, X) CONFD_SET_SCALAR_(V, C_INT16, i16, X)
#define CONFD_SET_INT32(V, X) CONFD_SET_SCALAR_(V, C_INT32, i32, X)
#define CONFD_SET_INT64(V, X) CONFD_SET_SCALAR_(V, C_INT64, i64, X)
#define CONFD_SET_UINT8(V, X) CONFD_SET_SCALAR_(V, C_UINT8, u8, X)
#define CONFD_SET_UINT16(V, X) CONFD_SET_SCALAR_(V, C_UINT16, u16, X)
#define CONFD_SET_UINT32(V, X) CONFD_SET_SCALAR_(V, C_UINT32, u32, X)
#define CONFD_SET_UINT64(V, X) CONFD_SET_SCALAR_(V, C_UINT64, u64, X)
#define CONFD_SET_ENUM_VALUE(V, X) CONFD_SET_SCALAR_(V, C_ENUM_VALUE, enumvalue, X)
#define CONFD_SET_BOOL(V, X) CONFD_SET_SCALAR_(V, C_BOOL, boolean, X)
#define CONFD_SET_IPV4(V, X) CONFD_SET_SCALAR_(V, C_IPV4, ip, X)
#define CONFD_SET_IPV6(V, X) CONFD_SET_SCALAR_(V, C_IPV6, ip6, X)
#define CONFD_SET_IPV4PREFIX(V, X) CONFD_SET_SCALAR_(V, C_IPV4PREFIX, ipv4prefix, X)
#define CONFD_SET_IPV6PREFIX(V, X) CONFD_SET_SCALAR_(V, C_IPV6PREFIX, ipv6prefix, X)
#define CONFD_SET_IPV4_AND_PLEN(V, X) CONFD_SET_SCALAR_(V, C_IPV4_AND_PLEN, ipv4prefix, X)
#define CONFD_SET_IPV6_AND_PLEN(V, X) CONFD_SET_SCALAR_(V, C_IPV6_AND_PLEN, ipv6prefix, X)

// Operations and results of a walk over changes; the maapi_ and cdb_ spellings name the same
// constants.
enum confd_iter_op {
  MOP_CREATED = 1,
  MOP_DELETED = 2,
  MOP_MODIFIED = 3,
  MOP_VALUE_SET = 4,
  MOP_MOVED_AFTER = 5,
  MOP_ATTR_SET = 6
};
enum confd_iter_ret {
  ITER_STOP = 1,
  ITER_RECURSE = 2,
  ITER_CONTINUE = 3,
  ITER_SUSPEND = 4,
  ITER_UP = 5
};
#define maapi_iter_op confd_iter_op
#define maapi_iter_ret confd_iter_ret
#define cdb_iter_op confd_iter_op
#define cdb_iter_ret confd_iter_ret

#define ITER_WANT_ATTR 4
#define ITER_WANT_P_CONTAINER 256

/// Set whenever a function returns CONFD_ERR.
extern int confd_errno;

/// Detail text of the last error; never null, valid until the next call.
char* confd_lasterr(void);

/// Text of an error code; never null.
char* confd_strerror(int code);

/// Prints `v` into `buf`, at most `bufsiz` bytes with the NUL.
/// @returns length of the full text; `bufsiz` or more means truncated. Never negative.
int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v);

/// Prints a keypath such as /servers/server{www}/ip. Return value as confd_pp_value.
int confd_pp_kpath(char* buf, int bufsiz, const confd_hkeypath_t* kp);

/// As confd_pp_kpath, only the first `len` elements counted from the root.
int confd_pp_kpath_len(char* buf, int bufsiz, const confd_hkeypath_t* kp, int len);

/// Releases what `v` owns, not `v` itself, and makes it C_NOEXISTS. No effect on types that own
/// nothing.
void confd_free_value(confd_value_t* v);

/// Positive when the two values are equal, else 0.
int confd_val_eq(const confd_value_t* v1, const confd_value_t* v2);

/// Deep copies; confd_value_dup_to returns `newv`, or null for a type that cannot be copied.
confd_value_t* confd_value_dup(const confd_value_t* v);
void confd_free_dup_value(confd_value_t* v);
confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* newv);
void confd_free_dup_to_value(confd_value_t* v);

/// Deep copy of a keypath, and of its first `len` elements from the root; free with
/// confd_free_hkeypath.
confd_hkeypath_t* confd_hkeypath_dup(const confd_hkeypath_t* src);
confd_hkeypath_t* confd_hkeypath_dup_len(const confd_hkeypath_t* src, int len);
void confd_free_hkeypath(confd_hkeypath_t* hkp);

/// Name of a tag or namespace hash, null when unknown or no schema is loaded.
char* confd_hash2str(uint32_t hash);

/// Hash of a name, 0 when unknown or no schema is loaded.
uint32_t confd_str2hash(const char* str);

/// Prefix of a namespace hash, null when unknown.
char* confd_ns2prefix(uint32_t ns);

#ifdef __cplusplus
}
#endif

#endif  // CONFD_LIB_H
