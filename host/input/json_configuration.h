// A configuration in JSON (RFC 7951), looked through before libyang gets it.
#ifndef HOST_INPUT_JSON_CONFIGURATION_H_
#define HOST_INPUT_JSON_CONFIGURATION_H_

#include <string>

#include "input_text.h"
#include "schema_walk.h"

struct ly_ctx;

namespace ipvald {

/// The text that libyang gets for the configuration in `source`: every node on its line, the
/// wrapper {"data": {...}} or {"ietf-restconf:data": {...}} (RFC 8040) taken off.
/// @throws InputError  the text is no JSON, or holds what is not in the data model
std::string JsonConfiguration(const ly_ctx* context, const SourceText& source,
                              SchemaWalk::Depth depth);

}  // namespace ipvald

#endif  // HOST_INPUT_JSON_CONFIGURATION_H_
