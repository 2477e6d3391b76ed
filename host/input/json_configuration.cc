#include "json_configuration.h"

#include <libyang/libyang.h>

#include <utility>
#include <vector>

#include "json_reader.h"
#include "value_words.h"

namespace ipvald {
namespace {

bool IsA(const SchemaWalk::Child& child, uint16_t node_types) {
  return (child.node->nodetype & node_types) != 0;
}

class Configuration : public JsonHandler {
 public:
  Configuration(const ly_ctx* context, const SourceText& source, SchemaWalk::Depth depth)
      : source_(source), walk_(context, source, InputFormat::kJson, depth) {}

  std::string Read() {
    ReadJson(source_, *this, edits_);
    return edits_.Apply(source_.text);
  }

  void BeginObject(size_t offset) override {
    if (Skips(offset)) {
      ++skipped_;
    } else if (coming_ == Coming::kConfiguration) {
      if (!open_.empty()) edits_.Blank(source_.text, 0, offset);
      open_.push_back({Part::kConfiguration, {}});
    } else {
      if (IsA(Next(), LYS_LIST) ? !InArray() : !IsA(Next(), LYS_CONTAINER)) throw WrongForm(offset);
      walk_.Open(Next(), offset);
      open_.push_back({Part::kNode, Next()});
    }
  }

  void EndObject(size_t offset) override {
    if (skipped_ > 0) {
      --skipped_;
      return;
    }
    if (open_.back().part == Part::kNode) walk_.Close();
    open_.pop_back();
    if (open_.empty() && wrapped_) edits_.Blank(source_.text, offset, offset + 1);
  }

  void BeginArray(size_t offset) override {
    if (Skips(offset)) {
      ++skipped_;
      return;
    }
    const SchemaWalk::Child child = Next();
    if (BeginsEmptyValue()) {
      open_.push_back({Part::kEmptyValue, child});
    } else if (!InArray() && IsA(child, LYS_LIST | LYS_LEAFLIST)) {
      open_.push_back({Part::kArray, child});
    } else {
      throw WrongForm(offset);
    }
  }

  void EndArray(size_t /*offset*/) override {
    if (skipped_ > 0) {
      --skipped_;
    } else {
      open_.pop_back();
    }
  }

  void Member(std::string_view name, size_t offset) override {
    if (skipped_ > 0) return;
    if (open_.size() == 1 && IsWrapperMember(name, offset)) return;
    if (name.starts_with('@')) {
      // Metadata (RFC 7952) says what is to become of a node, which is no part of a configuration.
      throw source_.ErrorAt(offset,
                            "the annotation " + walk_.Shown(name) + " is not read; leave it out");
    }
    coming_ = Coming::kNode;
    next_ = Find(name, offset);
    walk_.AddOnce(next_, offset);
  }

  void Scalar(JsonKind kind, std::string_view text, size_t offset) override {
    if (Skips(offset)) return;
    const SchemaWalk::Child leaf = Next();
    const bool is_empty = open_.back().part == Part::kEmptyValue;
    const bool fits =
        is_empty ? kind == JsonKind::kNull : IsA(leaf, InArray() ? LYS_LEAFLIST : LYS_LEAF);
    if (!fits) throw WrongForm(offset);
    walk_.Open(leaf, offset);
    const std::string shown = ShownValue(text, kind == JsonKind::kString);
    if (walk_.looks_at_values() && !is_empty) CheckForm(kind, shown, offset);
    walk_.Value(is_empty ? "" : text, shown);
    walk_.Close();
  }

 private:
  // What an object or array that is open holds. [null] is the value of the type empty.
  enum class Part { kConfiguration, kNode, kArray, kEmptyValue };

  struct Open {
    Part part;
    SchemaWalk::Child child;  // of all but kConfiguration
  };

  // What the next value is.
  enum class Coming { kConfiguration, kNode };

  // Whether the next value is none of the configuration's own.
  bool Skips(size_t offset) const {
    if (skipped_ > 0) return true;
    if (coming_ == Coming::kNode) return IsA(Next(), LYS_ANYDATA);
    if (source_.text[offset] != '{') {
      throw source_.ErrorAt(offset, "a configuration is an object, {...}");
    }
    return false;
  }

  bool InArray() const { return open_.back().part == Part::kArray; }

  // The node whose value comes next.
  const SchemaWalk::Child& Next() const {
    const Part part = open_.back().part;
    return part == Part::kArray || part == Part::kEmptyValue ? open_.back().child : next_;
  }

  // Whether an array that begins is [null], of a leaf or in the array of a leaf-list.
  bool BeginsEmptyValue() const {
    const SchemaWalk::Child& child = Next();
    if (open_.back().part == Part::kEmptyValue || !IsA(child, LYS_LEAF | LYS_LEAFLIST))
      return false;
    const JsonForm form = JsonFormOf(child.node);
    const bool may_be_empty = form == JsonForm::kEmpty || form == JsonForm::kAny;
    return may_be_empty && IsA(child, LYS_LEAF) != InArray();
  }

  // Whether the member is the wrapper around a configuration.
  bool IsWrapperMember(std::string_view name, size_t offset) {
    const bool is_first = !std::exchange(has_member_, true);
    const bool is_wrapper = name == "data" || name == "ietf-restconf:data";
    if (wrapped_ || (is_wrapper && !is_first)) {
      throw source_.ErrorAt(offset, "nothing may stand beside " + walk_.Shown("data"));
    }
    if (name == "ietf-restconf:errors") {
      throw source_.ErrorAt(offset, "an error reply of a RESTCONF server is no configuration");
    }
    if (!is_wrapper) return false;
    wrapped_ = true;
    coming_ = Coming::kConfiguration;
    return true;
  }

  SchemaWalk::Child Find(std::string_view name, size_t offset) {
    const size_t colon = name.find(':');
    if (colon == name.npos) return walk_.Find("", name, offset);
    return walk_.Find(name.substr(0, colon), name.substr(colon + 1), offset);
  }

  InputError WrongForm(size_t offset) const {
    const SchemaWalk::Child& child = Next();
    std::string form = "one value";
    if (IsA(child, LYS_CONTAINER)) form = "an object, {...}";
    if (IsA(child, LYS_LIST)) form = "an array of objects, [{...}]";
    if (IsA(child, LYS_LEAFLIST)) form = "an array of values, [...]";
    return source_.ErrorAt(offset, walk_.Shown(child.node->name) + " takes " + form);
  }

  // RFC 7951, section 6: which values stand in quotes.
  void CheckForm(JsonKind kind, const std::string& shown, size_t offset) const {
    const JsonForm form = JsonFormOf(walk_.node());
    if (form == JsonForm::kEmpty) {
      throw source_.ErrorAt(offset, walk_.ShownNode() + " has no value: it is there as [null]");
    }
    if (kind == JsonKind::kNull) {
      throw source_.ErrorAt(
          offset, walk_.ShownNode() + " is null; leave the member out, or give it a value");
    }
    const bool is_string = kind == JsonKind::kString;
    if (form == JsonForm::kAny || is_string == (form == JsonForm::kString)) return;
    throw source_.ErrorAt(offset, walk_.ShownNode() + " is " + shown + ", but takes " +
                                      ValuesOf(walk_.node()) +
                                      (is_string ? ", without quotes" : ", in quotes"));
  }

  const SourceText& source_;
  SchemaWalk walk_;
  TextEdits edits_;
  std::vector<Open> open_;  // objects and arrays
  Coming coming_ = Coming::kConfiguration;
  SchemaWalk::Child next_;   // what the last member names
  bool has_member_ = false;  // of the outermost object
  bool wrapped_ = false;
  size_t skipped_ = 0;  // open objects and arrays of anydata
};

}  // namespace

std::string JsonConfiguration(const ly_ctx* context, const SourceText& source,
                              SchemaWalk::Depth depth) {
  return Configuration(context, source, depth).Read();
}

}  // namespace ipvald
