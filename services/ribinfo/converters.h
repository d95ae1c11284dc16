// Text of the routing table service's tables.
#pragma once

#include "common/text_form.h"
#include "services/ribinfo/records.h"

TABLE(route, oltmib_routeEntry)
CONVERTERS(route)
