// Entries of the lists in which the device keeps what OSPF processes use, as JSON text for Device.
#ifndef TESTS_SUPPORT_OSPF_JSON_H_
#define TESTS_SUPPORT_OSPF_JSON_H_

#include <cstdint>
#include <string>
#include <vector>

#include "support/json_text.h"

namespace tests {

/// An entry of ospf-interface-l3. A negative length leaves the leaf out.
inline std::string OspfEntry(uint32_t id, const std::string& area, const std::string& name,
                             const std::string& address, int length = 24) {
  return R"({"compound-id":)" + std::to_string(id) + R"(,"area":)" + JsonText(area) +
         R"(,"if-name":)" + JsonText(name) + R"(,"if-address":)" + JsonText(address) +
         (length < 0 ? "" : R"(,"ospf-pm-ip-netmask":)" + std::to_string(length)) + "}";
}

/// An entry of ospf-index-to-proc-id.
inline std::string OspfProcess(uint32_t id, uint32_t process, const std::string& vrf) {
  return R"({"compound-id":)" + std::to_string(id) + R"(,"proc_id":)" + std::to_string(process) +
         R"(,"vrf_name":)" + JsonText(vrf) + "}";
}

/// An entry of ospfv3-interface-l3. A negative index leaves the leaf out.
inline std::string Ospfv3Entry(uint32_t process, const std::string& area, const std::string& name,
                               int64_t index = -1) {
  return R"({"process":)" + std::to_string(process) + R"(,"area":)" + JsonText(area) +
         R"(,"ospfv3-pm-if-name":)" + JsonText(name) +
         (index < 0 ? "" : R"(,"ospfv3-pm-if-index":)" + std::to_string(index)) + "}";
}

inline std::string Join(const std::vector<std::string>& entries) {
  std::string joined;
  for (const std::string& entry : entries) joined += (joined.empty() ? "" : ",") + entry;
  return joined;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_OSPF_JSON_H_
