// XPath evaluation on a configuration.
#ifndef PLATFORM_CONFD_XPATH_H_
#define PLATFORM_CONFD_XPATH_H_

#include "path.h"

namespace confd {

/// Evaluates a location path with the node at `context` as context node. Names may carry a module's
/// prefix or name.
/// @param result  malloc'ed string value of the first node in document order; "" when there is none
/// @returns CONFD_OK, or CONFD_ERR with CONFD_ERR_XPATH or CONFD_ERR_BADPATH set and `result`
/// untouched
int EvaluateXPath(const LoadedSnapshot& configuration, const Place& context, const char* expression,
                  char** result);

}  // namespace confd

#endif  // PLATFORM_CONFD_XPATH_H_
