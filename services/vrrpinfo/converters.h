// Text of the VRRP service's tables.
#pragma once

#include "common/text_form.h"
#include "services/vrrpinfo/records.h"

// The trace shows the interface where it says ip, too.
TABLE(vrrp_ssconf, oltmib_vrrp_ssconfEntry)
TRACED_PARSER(vrrp_ssconf, 30, "vrid %d, ifname %s, ip %s, oper %d", row.vrid, row.ifname, row.ifname, row.oper)
FORMATTER(vrrp_ssconf)

TABLE(vrrp_ssstate, oltmib_vrrp_ssstateEntry)
TRACED_PARSER(vrrp_ssstate, 58, "vrid %d, role %d, oper %d", row.vrid, row.role, row.oper)
FORMATTER(vrrp_ssstate)
