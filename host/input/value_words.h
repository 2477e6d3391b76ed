// What is wrong with a value, in words.
#ifndef HOST_INPUT_VALUE_WORDS_H_
#define HOST_INPUT_VALUE_WORDS_H_

#include <string>
#include <string_view>

struct ly_ctx;
struct lysc_node;

namespace ipvald {

/// Why `text` is no value of a leaf or leaf-list, to stand behind the value: ", but takes a whole
/// number from 1 to 4094". With the data model's own error-message, where there is one. Empty when
/// `text` is a value, and where only libyang can tell, with the whole configuration.
std::string ValueFault(const ly_ctx* context, const lysc_node* leaf, std::string_view text);

/// The canonical text of a value; `text` itself when it is none.
std::string CanonicalValue(const ly_ctx* context, const lysc_node* leaf, std::string_view text);

/// How JSON writes the values of a leaf or leaf-list (RFC 7951, section 6).
enum class JsonForm { kAny, kString, kNumber, kBoolean, kEmpty };
JsonForm JsonFormOf(const lysc_node* leaf);

/// Values of the leaf in words, such as "a whole number from 1 to 4094"; "a text" where no more can
/// be said.
std::string ValuesOf(const lysc_node* leaf);

}  // namespace ipvald

#endif  // HOST_INPUT_VALUE_WORDS_H_
