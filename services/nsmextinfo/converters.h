// Text of the NSM extension service's tables.
#pragma once

#include "common/text_form.h"
#include "services/nsmextinfo/records.h"

TABLE(poeconf, oltmib_poeConfEntry)
CONVERTERS(poeconf)

TABLE(poeinfo, oltmib_poeInfoEntry)
CONVERTERS(poeinfo)

TABLE(poeifconf, oltmib_poeifConfEntry)
CONVERTERS(poeifconf)

TABLE(poeifinfo, oltmib_poeifInfoEntry)
CONVERTERS(poeifinfo)

TABLE(nsmauthmacinfo, oltmib_nsmauthmacEntry, MAC(mac1))
CONVERTERS(nsmauthmacinfo)

TABLE(nsmpsinfo, oltmib_nsmpsEntry)
CONVERTERS(nsmpsinfo)

TABLE(nsmpsmacinfo, oltmib_nsmpsmacEntry, MAC(mac1))
CONVERTERS(nsmpsmacinfo)

TABLE(nsmpsstateinfo, oltmib_nsmpsstateEntry, MAC(mac1))
CONVERTERS(nsmpsstateinfo)

TABLE(nsmpsmacstateinfo, oltmib_nsmpsmacstateEntry, MAC(mac1))
CONVERTERS(nsmpsmacstateinfo)

TABLE(nsmipsgifinfo, oltmib_nsmipsgifEntry)
CONVERTERS(nsmipsgifinfo)

TABLE(nsmipsguserinfo, oltmib_nsmipsguserEntry, MAC(mac1))
CONVERTERS(nsmipsguserinfo)
