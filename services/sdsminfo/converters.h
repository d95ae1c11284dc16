// Text of the SDSM service's tables.
#pragma once

#include "common/text_form.h"
#include "services/sdsminfo/records.h"

TABLE(sdsminfo, oltmib_sdsminfoEntry)
CONVERTERS(sdsminfo)
