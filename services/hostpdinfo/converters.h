// Text of the host protocols service's tables.
#pragma once

#include "common/text_form.h"
#include "services/hostpdinfo/records.h"

TABLE(hostpdinfo, oltmib_hostpdInfoEntry)
CONVERTERS(hostpdinfo)

TABLE(accountEntry, oltmib_accountEntry)
CONVERTERS(accountEntry)

TABLE(tm, oltmib_tmEntry)
CONVERTERS(tm)

TABLE(dhcpdinfo, oltmib_dhcpdinfoEntry)
CONVERTERS(dhcpdinfo)

TABLE(snmpview, oltmib_snmpviewEntry)
CONVERTERS(snmpview)

TABLE(snmpgroup, oltmib_snmpgroupEntry)
CONVERTERS(snmpgroup)

TABLE(snmpuser, oltmib_snmpuserEntry)
CONVERTERS(snmpuser)

TABLE(snmphost, oltmib_snmphostEntry)
CONVERTERS(snmphost)

TABLE(sysloginfo, oltmib_syslogInfoEntry)
CONVERTERS(sysloginfo)

TABLE(syslogremote, oltmib_syslogRemoteEntry)
CONVERTERS(syslogremote)

TABLE(alert, oltmib_alertEntry)
CONVERTERS(alert)
