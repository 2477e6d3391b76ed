// The functions of confd_lib.h on values.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "calls.h"
#include "confd_lib.h"
#include "value.h"
#include "value_text.h"

namespace confd {
namespace {

// As snprintf with "%s", which takes longer.
int CopyOut(char* buf, int bufsiz, const std::string& text) {
  const size_t size = strlen(text.c_str());
  if (bufsiz > 0) {
    const size_t copied = std::min(size, static_cast<size_t>(bufsiz) - 1);
    memcpy(buf, text.data(), copied);
    buf[copied] = '\0';
  }
  return static_cast<int>(size);
}

}  // namespace
}  // namespace confd

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v) {
  return confd::CopyOut(buf, bufsiz, confd::PrintValue(*v));
}

void confd_free_value(confd_value_t* v) {
  confd::NoteRelease("confd_free_value");
  confd::FreeOwned(v);
}

confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* newv) {
  switch (v->type) {
    case C_BUF:
    case C_BINARY:
    case C_HEXSTR:
    case C_BITBIG:
      *newv = confd::BufferValue(v->type, v->val.buf.ptr, v->val.buf.size);
      return newv;
    case C_STR:
      *newv = *v;
      newv->val.s = strdup(v->val.c_s);
      return newv;
    case C_LIST:
    case C_OBJECTREF:
    case C_OID:
    case C_QNAME:
      return nullptr;  // types that the stand-in never hands out
    default:
      *newv = *v;
      return newv;
  }
}

void confd_free_dup_to_value(confd_value_t* v) {
  if (v->type == C_STR) {
    free(v->val.s);
    v->type = C_NOEXISTS;
  } else {
    confd::FreeOwned(v);
  }
}

confd_value_t* confd_value_dup(const confd_value_t* v) {
  auto copy = std::make_unique<confd_value_t>();
  return confd_value_dup_to(v, copy.get()) == nullptr ? nullptr : copy.release();
}

void confd_free_dup_value(confd_value_t* v) {
  confd_free_dup_to_value(v);
  delete v;
}

int confd_val_eq(const confd_value_t* v1, const confd_value_t* v2) {
  const auto is_text = [](const confd_value_t* v) { return v->type == C_STR || v->type == C_BUF; };
  if (v1->type != v2->type && !(is_text(v1) && is_text(v2))) return 0;
  if (v1->type == C_XMLTAG) {
    return v1->val.xmltag.tag == v2->val.xmltag.tag && v1->val.xmltag.ns == v2->val.xmltag.ns;
  }
  switch (v1->type) {
    case C_IDENTITYREF:
      return v1->val.idref.ns == v2->val.idref.ns && v1->val.idref.id == v2->val.idref.id;
    case C_DOUBLE:
      return v1->val.d == v2->val.d;
    case C_BIT32:
      return v1->val.b32 == v2->val.b32;
    case C_BIT64:
      return v1->val.b64 == v2->val.b64;
    case C_NOEXISTS:
    case C_DEFAULT:
    case C_EMPTY:
      return 1;
    default:
      break;
  }
  // Equal values have equal texts; a type without a text is not carried, and nothing is known to be
  // equal.
  const std::string text = confd::PrintValue(*v1);
  if (text.empty() && !is_text(v1) && !confd::OwnsBuffer(v1->type)) return 0;
  return text == confd::PrintValue(*v2);
}
