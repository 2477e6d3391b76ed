// Takes the wrapper off a configuration that came from a NETCONF or RESTCONF exchange. What is
// removed is overwritten with blanks and what is added stays on its line, so line numbers remain
// those of the file.
#ifndef HOST_NETCONF_WRAPPER_H_
#define HOST_NETCONF_WRAPPER_H_

#include <string>

namespace ipvald {

/// The XML text without a surrounding <data> or <config>, itself possibly in an <rpc-reply>.
/// Wrapper elements are those of NETCONF's base namespace or of no namespace: the data model's own
/// <config> is none. Namespace declarations of the wrapper are copied to the elements directly in
/// it. Text without a wrapper comes back as it is.
/// @throws InputError  a document type declaration; a wrapper that is not closed or is followed by
/// more than comments
std::string RemoveXmlWrapper(const std::string& name, std::string text);

/// The same for {"data": {...}} and {"ietf-restconf:data": {...}}.
void RemoveJsonWrapper(std::string& text);

}  // namespace ipvald

#endif  // HOST_NETCONF_WRAPPER_H_
