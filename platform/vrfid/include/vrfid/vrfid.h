// VRF identifiers. Stand-in for the header of the device's VRF identifier library; for C and C++.
#ifndef VRFID_VRFID_H
#define VRFID_VRFID_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Index of a VRF, the key under which the configuration keeps its name, from the identifier that
/// another component (a routing protocol, the route table) uses for it. In this stand-in every
/// component uses the index itself.
uint32_t IdVrfFromComponent(uint32_t component);

#ifdef __cplusplus
}
#endif

#endif  // VRFID_VRFID_H
