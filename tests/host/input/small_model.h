// A small data model in memory, with a node of every kind and a leaf of every type.
#ifndef TESTS_HOST_INPUT_SMALL_MODEL_H_
#define TESTS_HOST_INPUT_SMALL_MODEL_H_

#include <libyang/libyang.h>

namespace tests {

inline constexpr char kSmallModule[] = R"(
module small {
  yang-version 1.1;
  namespace "urn:small";
  prefix s;
  import ietf-inet-types { prefix inet; }
  identity shape;
  identity round { base shape; }
  container top {
    list entry {
      key "name number";
      leaf note { type string; }
      leaf number { type uint8; }
      leaf name { type string; }
    }
    leaf-list word { type string; }
    leaf-list plen { type inet:ipv6-prefix; }
    container inner { leaf note { type string; } }
    anydata any;
    leaf reading { config false; type string; }
    leaf mark { type empty; }
    leaf-list empties { type union { type empty; type uint8; } }
  }
  list log { config false; leaf line { type string; } }
  leaf single { type string; }
  container types {
    leaf int8 { type int8; }
    leaf int16 { type int16; }
    leaf int32 { type int32; }
    leaf int64 { type int64; }
    leaf uint8 { type uint8; }
    leaf uint16 { type uint16; }
    leaf uint32 { type uint32; }
    leaf uint64 { type uint64; }
    leaf ranges { type int16 { range "-5..-1 | 7 | 10..20"; } }
    leaf own-words { type uint16 { range "1..4094" { error-message "One to 4094."; } } }
    leaf boolean { type boolean; }
    leaf empty { type empty; }
    leaf one-word { type enumeration { enum on; } }
    leaf two-words { type enumeration { enum on; enum off; } }
    leaf twelve-words { type enumeration { enum a; enum b; enum c; enum d; enum e; enum f;
                                           enum g; enum h; enum i; enum j; enum k; enum l; } }
    leaf thirteen-words { type enumeration { enum a; enum b; enum c; enum d; enum e; enum f; enum g;
                                             enum h; enum i; enum j; enum k; enum l; enum m; } }
    leaf ipv4 { type inet:ipv4-address; }
    leaf ipv6 { type inet:ipv6-address; }
    leaf ipv4-prefix { type inet:ipv4-prefix; }
    leaf ipv6-prefix { type inet:ipv6-prefix; }
    leaf text { type string { pattern "[a-z]*" { error-message "Small letters only."; } } }
    leaf short { type string { length "0..3"; } }
    leaf decimal { type decimal64 { fraction-digits 2; } }
    leaf bits { type bits { bit up; bit down; } }
    leaf binary { type binary; }
    leaf identity { type identityref { base shape; } }
    leaf instance { type instance-identifier; }
    leaf union { type union { type uint8; type boolean; } }
    leaf identity-union { type union { type uint8; type identityref { base shape; } } }
    leaf number-ref { type leafref { path "../uint8"; } }
    leaf ref-ref { type leafref { path "../number-ref"; } }
    leaf identity-ref { type leafref { path "../identity"; } }
  }
}
)";

/// Adds a leaf of a name that the container has not, and one of a name that it has.
inline constexpr char kOtherModule[] = R"(
module other {
  namespace "urn:other";
  prefix o;
  import small { prefix s; }
  augment "/s:top/s:inner" {
    leaf note { type string; }
    leaf extra { type string; }
  }
}
)";

/// Both modules, loaded once for the whole program.
inline ly_ctx* SmallModel() {
  static ly_ctx* const context = [] {
    ly_ctx* made = nullptr;
    ly_ctx_new(nullptr, LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIR_CWD, &made);
    ly_log_options(LY_LOSTORE_LAST);
    lys_parse_mem(made, kSmallModule, LYS_IN_YANG, nullptr);
    lys_parse_mem(made, kOtherModule, LYS_IN_YANG, nullptr);
    return made;
  }();
  return context;
}

}  // namespace tests

#endif  // TESTS_HOST_INPUT_SMALL_MODEL_H_
