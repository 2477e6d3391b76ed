#include "vrfid/vrfid.h"

uint32_t IdVrfFromComponent(uint32_t component) { return component; }
