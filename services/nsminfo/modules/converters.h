// Text of the network service module's tables: optical modules, cable diagnostics, DoS protection, DNS and the global
// settings.
#pragma once

#include "common/text.h"
#include "common/text_form.h"
#include "services/nsminfo/modules/records.h"

TABLE(optical, oltmib_opticalEntry)
CONVERTERS(optical)

TABLE_OF(opticaldetail, oltmib_opticaldetailEntry, AT(ifx), AT(name), AT(field3), AT(field4), AT(field5), AT(field6),
         AT(field7), AT(field8), AT(field9), AT(field10), AT(field11), AT(field12), AT(field13), AT(field14),
         AT(field15), AT(field16), COUNTED_HEX(alarm_len, alarm), AT(field19), AT(field20), AT(field21), AT(field22),
         AT(field23), AT(field24), AT(field25), AT(oper), AT(res))
PARSER(opticaldetail)
OWN_FORMATTER(opticaldetail)
{
    const auto& row = *static_cast<const oltmib_opticaldetailEntry*>(record);
    format<tables::opticaldetail>(record, str);
    if (is_tracing()) {
        char alarm[counted_hex_size] = "";
        hex2str(row.alarm, row.alarm_len, alarm, sizeof alarm);
        TRACE(1109, "alarmstr: %s, len %d", alarm, row.alarm_len);
        TRACE(1110, "str: %s", str);
    }
    return str;
}

TABLE(nsm, oltmib_nsmEntry)
CONVERTERS(nsm)

TABLE(cabledetect, oltmib_cabledetectEntry)
CONVERTERS(cabledetect)

TABLE(dos, oltmib_dosEntry, COUNTER(count1), COUNTER(count2))
CONVERTERS(dos)

TABLE(dns, oltmib_dnsEntry)
CONVERTERS(dns)
