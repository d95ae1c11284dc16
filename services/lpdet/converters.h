// Text of the loop detection service's tables.
#pragma once

#include "common/text_form.h"
#include "services/lpdet/records.h"

TABLE(lpdetglobal, oltmib_lpdetglobalEntry)
CONVERTERS(lpdetglobal)

TABLE(lpdetportinfo, oltmib_lpdetportinfoEntry)
CONVERTERS(lpdetportinfo)
