// Text of the device information service's tables.
#pragma once

#include "common/text_form.h"
#include "services/devinfo/records.h"

// The MAC address goes out as the characters of its text, cut like one, but comes
// back as an address.
TABLE(devinfo, oltmib_DevInfoEntry, RAW_MAC(mac), UNSIGNED(int1), INPUT_ONLY(oper))
TRACED_PARSER(devinfo, 28, "save config %d, hostname %s, oper %d", row.saveconfig, row.hostname, row.oper)
TRACED_FORMATTER(devinfo, 37, "str: %s", str)

TABLE(devcap, oltmib_devcapEntry)
CONVERTERS(devcap)

TABLE(libconf, oltmib_libconfEntry)
CONVERTERS(libconf)

TABLE(accesslog, oltmib_accesslogEntry)
PARSER(accesslog)
