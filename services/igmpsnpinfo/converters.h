// Text of the IGMP snooping service's tables.
#pragma once

#include "common/text_form.h"
#include "services/igmpsnpinfo/records.h"

TABLE(igspglobal, oltmib_igspGlobalEntry)
CONVERTERS(igspglobal)

TABLE(igspmrouter, oltmib_igspMrouterEntry)
CONVERTERS(igspmrouter)

TABLE(igspgrp, oltmib_igspGrpEntry)
CONVERTERS(igspgrp)

TABLE(igspif, oltmib_igspifEntry)
CONVERTERS(igspif)
