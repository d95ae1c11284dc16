// Text of the network service module's tables: rate limits, storm control, access lists and quality of service.
#pragma once

#include "common/text.h"
#include "common/text_form.h"
#include "services/nsminfo/traffic/records.h"

TABLE(ratelimitinfo, oltmib_ratelimitEntry)
TRACED_CONVERTERS(ratelimitinfo, 287, 295, "ifx %d, name %s, in cir %d, cbs %d, out cir %d, cbs %d, oper %d", row.ifx,
                  row.name, row.in_cir, row.in_cbs, row.out_cir, row.out_cbs, row.oper)

TABLE(stormcontrolinfo, oltmib_stormcontrolEntry)
TRACED_CONVERTERS(stormcontrolinfo, 314, 322, "ifx %d, name %s, ratelimit_type %d, level %d, fraction %d, oper %d",
                  row.ifx, row.name, row.ratelimit_type, row.level, row.fraction, row.oper)

TABLE(aclinfo, oltmib_aclEntry, OUTPUT_ONLY(count))
TRACED_CONVERTERS(aclinfo, 355, 367, "name %s, src %s, oper %d", row.name, row.src, row.oper)

TABLE(aclifinfo, oltmib_aclifEntry)
TRACED_CONVERTERS(aclifinfo, 385, 393, "name %s, in %s, oper %d", row.name, row.in, row.oper)

TABLE(qoscfginfo, oltmib_qoscfgEntry)
TRACED_CONVERTERS(qoscfginfo, 409, 417, "status %d, alg %d, oper %d", row.status, row.alg, row.oper)

TABLE(queueweightinfo, oltmib_queueweightEntry, LIST(map))
CONVERTERS(queueweightinfo)

TABLE(cos2dscpinfo, oltmib_cos2dscpEntry, LIST(map))
CONVERTERS(cos2dscpinfo)

TABLE(cos2queueinfo, oltmib_cos2queueEntry, LIST(map))
CONVERTERS(cos2queueinfo)

TABLE(dscp2cosinfo, oltmib_dscp2cosEntry, LIST(map))
CONVERTERS(dscp2cosinfo)

TABLE(dscp2dscpinfo, oltmib_dscp2dscpEntry, LIST(map))
CONVERTERS(dscp2dscpinfo)

TABLE(dscp2queueinfo, oltmib_dscp2queueEntry, LIST(map))
// Both trace a line for each element: the parser with the text it was read
// from, the formatter with the list as it stands with that element.
OWN_PARSER(dscp2queueinfo)
{
    auto& arg = parse<tables::dscp2queueinfo>(record, text);
    if (is_tracing()) {
        constexpr int elements = sizeof arg.map; // items beyond them are dropped
        char list[list_size];
        char* item[elements];
        snprintf(list, sizeof list, "%s", text);
        const int items = strsplit(list, ',', item, elements);
        for (int i = 0; i < items; i++)
            TRACE(602, "dscp %d, queue %d(%s)", i, arg.map[i], item[i]);
    }
    return &arg;
}
OWN_FORMATTER(dscp2queueinfo)
{
    if (is_tracing()) {
        const auto& row = *static_cast<const oltmib_dscp2queueEntry*>(record);
        constexpr int elements = sizeof row.map;
        char list[sizeof "-128," * elements] = "";
        for (int i = 0; i < elements; i++) {
            strappend(list, sizeof list, "%d,", row.map[i]);
            TRACE(614, "dscp %d, queue %d(%s)", i, row.map[i], list);
        }
    }
    return format<tables::dscp2queueinfo>(record, str);
}

TABLE(classinfo, oltmib_classEntry)
TRACED_CONVERTERS(classinfo, 634, 642, "name %s, matchtype %d, oper %d", row.name, row.matchtype, row.oper)

TABLE(policyinfo, oltmib_policyEntry)
TRACED_CONVERTERS(policyinfo, 665, 674, "name %s, class %s, oper %d", row.name, row.class_, row.oper)

TABLE(qosifinfo, oltmib_qosifEntry)
TRACED_CONVERTERS(qosifinfo, 694, 702, "name %s, in %s, oper %d", row.name, row.in, row.oper)

TABLE(qosifcfg, oltmib_qosifcfgEntry, LIST(list1), LIST(list2))
CONVERTERS(qosifcfg)
