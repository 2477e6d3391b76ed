// Keypaths as callbacks receive them, and their text.

#include <libyang/libyang.h>

#include <algorithm>
#include <memory>
#include <string>

#include "confd/keypath.h"
#include "path.h"
#include "store/error.h"
#include "store/schema.h"
#include "store/schema_node.h"
#include "store/snapshot.h"
#include "store/tags.h"
#include "value.h"
#include "value_text.h"

namespace confd {
namespace {

// What a data model may have fits, with the C_NOEXISTS behind the last value of an element.
static_assert(store::kMaxPathElements < MAXDEPTH);
static_assert(store::kMaxListKeys < MAXKEYLEN);

// A path of no elements.
std::unique_ptr<confd_hkeypath_t> BlankPath() {
  auto path = std::make_unique<confd_hkeypath_t>();
  for (auto& element : path->v) {
    for (confd_value_t& value : element) value.type = C_NOEXISTS;
  }
  return path;
}

// Fills a blank keypath from the deepest element upward; a schema with paths that do not fit was
// refused. Elements that are not used, and all values behind the last one of an element, are
// C_NOEXISTS.
class Builder {
 public:
  explicit Builder(confd_hkeypath_t* path) : path_(path) {}

  void AddTag(store::NodeTag tag) { NextElement()[0] = TagValue(tag); }

  void AddKeys(const lyd_node* entry) {
    confd_value_t* element = NextElement();
    if (entry->schema->nodetype == LYS_LEAFLIST) {
      element[0] = LeafValue(entry);
      return;
    }
    int count = 0;
    for (const lyd_node* key = lyd_child(entry); key != nullptr && lysc_is_key(key->schema);
         key = key->next) {
      element[count++] = LeafValue(key);
    }
  }

  void AddNode(const store::Schema& schema, const lyd_node* node) {
    for (; node != nullptr; node = lyd_parent(node)) {
      if (store::IsListLike(node->schema)) AddKeys(node);
      AddTag(schema.tag(node->schema));
    }
  }

 private:
  confd_value_t* NextElement() { return path_->v[path_->len++]; }

  confd_hkeypath_t* path_;
};

void FreeKeys(confd_hkeypath_t* path) {
  for (int i = 0; i < path->len; ++i) {
    for (confd_value_t* value = path->v[i]; value->type != C_NOEXISTS; ++value) {
      confd_free_dup_to_value(value);
      value->type = C_NOEXISTS;
    }
  }
  path->len = 0;
}

// Text of the elements from the root down to index `deepest`.
std::string PathText(const confd_hkeypath_t& path, int deepest) {
  std::string text;
  for (int i = path.len - 1; i >= deepest; --i) {
    const confd_value_t* element = path.v[i];
    if (element->type == C_XMLTAG) {
      text.append("/").append(PrintValue(*element));
      continue;
    }
    text += "{";
    for (const confd_value_t* key = element; key->type != C_NOEXISTS; ++key) {
      if (key != element) text += " ";
      text += PrintKey(*key);
    }
    text += "}";
  }
  return text.empty() ? "/" : text;
}

int CopyPathText(char* buf, int bufsiz, const confd_hkeypath_t* path, int deepest) {
  return snprintf(buf, bufsiz > 0 ? static_cast<size_t>(bufsiz) : 0, "%s",
                  PathText(*path, deepest).c_str());
}

}  // namespace

Keypath::Keypath() : path_(BlankPath()) {}

Keypath::Keypath(const store::Schema& schema, const lyd_node* node) : Keypath() {
  Builder(path_.get()).AddNode(schema, node);
}

void Keypath::Set(const store::Schema& schema, const lyd_node* node) {
  FreeKeys(path_.get());
  Builder(path_.get()).AddNode(schema, node);
}

Keypath::Keypath(const store::Schema& schema, const lyd_node* parent, const lysc_node* list)
    : Keypath() {
  Builder builder(path_.get());
  builder.AddTag(schema.tag(list));
  builder.AddNode(schema, parent);
}

Keypath::Keypath(const store::Snapshot& configuration, const std::string& path) : Keypath() {
  const auto place = FindPlace(configuration, path);
  if (!place || !place->exists) throw store::Error("nothing is at " + path);
  Builder builder(path_.get());
  if (place->without_keys) builder.AddTag(configuration.schema().tag(place->schema));
  builder.AddNode(configuration.schema(), place->without_keys ? place->parent : place->node);
}

Keypath::~Keypath() { FreeKeys(path_.get()); }

std::string Keypath::text() const { return PathText(*path_, 0); }

}  // namespace confd

int confd_pp_kpath(char* buf, int bufsiz, const confd_hkeypath_t* kp) {
  return confd::CopyPathText(buf, bufsiz, kp, 0);
}

int confd_pp_kpath_len(char* buf, int bufsiz, const confd_hkeypath_t* kp, int len) {
  return confd::CopyPathText(buf, bufsiz, kp, std::max(0, kp->len - len));
}

confd_hkeypath_t* confd_hkeypath_dup_len(const confd_hkeypath_t* src, int len) {
  const int kept = std::clamp(len, 0, src->len);
  const int dropped = src->len - kept;
  auto copy = confd::BlankPath();
  copy->len = kept;
  for (int i = 0; i < kept; ++i) {
    for (int k = 0; src->v[i + dropped][k].type != C_NOEXISTS; ++k) {
      confd_value_dup_to(&src->v[i + dropped][k], &copy->v[i][k]);
    }
  }
  return copy.release();
}

confd_hkeypath_t* confd_hkeypath_dup(const confd_hkeypath_t* src) {
  return confd_hkeypath_dup_len(src, src->len);
}

void confd_free_hkeypath(confd_hkeypath_t* hkp) {
  confd::FreeKeys(hkp);
  delete hkp;
}

char* confd_hash2str(uint32_t hash) {
  const auto schema = store::Schema::Current();
  return schema == nullptr ? nullptr : const_cast<char*>(schema->texts().Text(hash));
}

uint32_t confd_str2hash(const char* str) {
  const uint32_t tag = store::TagOf(str);
  const char* known = confd_hash2str(tag);
  return known != nullptr && std::string_view(known) == str ? tag : 0;
}

char* confd_ns2prefix(uint32_t ns) {
  const auto schema = store::Schema::Current();
  return schema == nullptr ? nullptr : const_cast<char*>(schema->NamespacePrefix(ns));
}
