// Text of the DHCP snooping service's tables.
#pragma once

#include "common/text_form.h"
#include "services/dhcpsnp/records.h"

TABLE(dhcpsnp, oltmib_dhcpsnpEntry)
CONVERTERS(dhcpsnp)
