// XPath evaluation on a configuration.
#ifndef STORE_XPATH_H_
#define STORE_XPATH_H_

#include <optional>
#include <string>

#include "store/snapshot.h"

namespace store {

/// Evaluates a location path with `context`, or the root when it is null, as context node. Names
/// may carry a module's prefix or name.
/// @returns  the string value of the first node in document order, "" when there is none; nothing
/// when the expression cannot be evaluated.
std::optional<std::string> EvaluateXPath(const Snapshot& configuration, const lyd_node* context,
                                         const char* expression);

}  // namespace store

#endif  // STORE_XPATH_H_
