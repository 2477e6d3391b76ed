#include "ip_app_validation/ip_app_validation.h"  // is a header of standard C11 without warnings
