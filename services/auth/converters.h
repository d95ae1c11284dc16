// Text of the authentication service's tables.
#pragma once

#include "common/text_form.h"
#include "services/auth/records.h"

TABLE(authglobal, oltmib_authGlobalEntry)
TRACED_PARSER(authglobal, 21, "config %d, oper %d", row.config, row.oper)
TRACED_FORMATTER(authglobal, 30, "str: %s", str)

TABLE(d1xpcfg, oltmib_d1xPcfgEntry)
TRACED_PARSER(d1xpcfg, 56, "ifx %d, oper %d", row.ifx, row.oper)
TRACED_FORMATTER(d1xpcfg, 66, "str: %s", str)

// Four of the twenty-four ints are text; the fourth is int7.
TABLE_OF(d1xpst, oltmib_d1xPstEntry, AT(ifx), AT(text40), AT(int1), AT(int2), AT(int3), AT(int7), AT(text32), AT(oper),
         AT(res))
TRACED_PARSER(d1xpst, 86, "ifx %d, oper %d", row.ifx, row.oper)
TRACED_FORMATTER(d1xpst, 95, "str: %s", str)

TABLE(macauthpcfg, oltmib_macauthPcfgEntry)
TRACED_PARSER(macauthpcfg, 117, "ifx %d, oper %d", row.ifx, row.oper)
TRACED_FORMATTER(macauthpcfg, 127, "str: %s", str)

// Unlike the other tables of ports, the interface comes fifth.
TABLE(macauthuser, oltmib_macauthUserEntry, MAC(mac))
TRACED_PARSER(macauthuser, 147, "ifx %d, oper %d", row.ifx, row.oper)
TRACED_FORMATTER(macauthuser, 156, "str: %s", str)

TABLE(radglobal, oltmib_radglobalEntry)
PARSER(radglobal)
TRACED_FORMATTER(radglobal, 185, "str: %s", str)

TABLE(radsrv, oltmib_radsrvEntry)
TRACED_PARSER(radsrv, 206, "ip %s, oper %d", row.ip, row.oper)
TRACED_FORMATTER(radsrv, 215, "str: %s", str)
