// Text of the network service module's tables: the forwarding database, aggregation, spanning-tree status,
// error-disable and ARP.
#pragma once

#include "common/text_form.h"
#include "services/nsminfo/forwarding/records.h"

TABLE(fdbparam, oltmib_fdbParam)
CONVERTERS(fdbparam)

TABLE(fdbinfo, oltmib_fdbEntry, MAC(mac))
CONVERTERS(fdbinfo)

TABLE(aginfo, oltmib_agEntry)
CONVERTERS(aginfo)

TABLE(agsysinfo, oltmib_agsysEntry)
CONVERTERS(agsysinfo)

TABLE(stpifstatusinfo, oltmib_stpifstatusEntry)
CONVERTERS(stpifstatusinfo)

TABLE(errdisableinfo, oltmib_errdisableEntry)
CONVERTERS(errdisableinfo)

TABLE(errdisportinfo, oltmib_errdisportinfoEntry)
CONVERTERS(errdisportinfo)

TABLE(arp, oltmib_arpEntry)
CONVERTERS(arp)
