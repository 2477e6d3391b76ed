// A configuration in XML, looked through before libyang gets it.
#ifndef HOST_INPUT_XML_CONFIGURATION_H_
#define HOST_INPUT_XML_CONFIGURATION_H_

#include <string>

#include "input_text.h"
#include "schema_walk.h"

struct ly_ctx;

namespace ipvald {

/// The text that libyang gets for the configuration in `source`: every node on its line, in a form
/// that libyang reads as XML demands.
/// - A surrounding <data> or <config>, itself possibly in an <rpc-reply>, is taken off: elements of
///   NETCONF's base namespace (RFC 6241) or of no namespace. The data model's own <config> is none.
///   Their namespace declarations are copied to the elements directly in them.
/// - Comments and processing instructions are left out. Where there are any in the text of a leaf,
///   or references, CDATA sections or carriage returns, the text is written anew.
/// @throws InputError  the text is not well-formed, or holds what is not in the data model
std::string XmlConfiguration(const ly_ctx* context, const SourceText& source,
                             SchemaWalk::Depth depth);

}  // namespace ipvald

#endif  // HOST_INPUT_XML_CONFIGURATION_H_
