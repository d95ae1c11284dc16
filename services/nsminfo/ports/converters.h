// Text of the network service module's tables: port settings, counters, rates and mirroring.
#pragma once

#include "common/text_form.h"
#include "services/nsminfo/ports/records.h"

TABLE_OF(portinfo, oltmib_PortInfoEntry, AT(ifx), AT(name), AT(field3), AT(field4), AT(field5), AT(field8), AT(field10),
         AT(field11), AT(field12), AT(field13), AT(field14), AT(field15), AT(field16), AT(field17), AT(field18),
         AT(field19), AT(field20), AT(field21), AT(field23), AT(field24), AT(field25), AT(field26), AT(oper), AT(res))
// The one value read fills both fields.
OWN_PARSER(portinfo)
{
    auto& arg = parse<tables::portinfo>(record, text);
    arg.field9 = arg.field8;
    return &arg;
}
FORMATTER(portinfo)

TABLE_OF(portstat, oltmib_PortStatEntry, AT(ifx), AT(field2), AT(name), COUNTER(counters.counter9),
         COUNTER(counters.counter6), COUNTER(counters.counter13), COUNTER(counters.counter27),
         COUNTER(counters.counter26), COUNTER(counters.counter29), COUNTER(counters.counter35),
         COUNTER(counters.counter37), COUNTER(counters.counter40), COUNTER(counters.counter42), AT(text), AT(oper),
         AT(res))
TRACED_PARSER(portstat, 136, "str %s, ifx %d, oper %d", text, row.ifx, row.oper)
TRACED_FORMATTER(portstat, 173, "ifx %d, name %s, res %d, str %s", row.ifx, row.name, row.res, str)

TABLE_OF(portrate, oltmib_PortRateEntry, AT(ifx), AT(field2), AT(name), RATE(rates.rate0), RATE(rates.rate1),
         RATE(rates.rate2), RATE(rates.rate3), RATE(rates.rate4), RATE(rates.rate5), AT(text), AT(oper), AT(res))
TRACED_PARSER(portrate, 214, "str %s, ifx %d, oper %d", text, row.ifx, row.oper)
TRACED_FORMATTER(portrate, 233, "ifx %d, name %s, res %d, str %s", row.ifx, row.name, row.res, str)

TABLE_OF(pminfo, oltmib_PMInfoEntry, AT(sid), AT(mode), AT(desc), AT(to), AT(to_switch), AT(rspan_vlan), AT(src),
         AT(src_vlan), AT(dir), AT(state), AT(text), AT(oper), AT(res))
TRACED_CONVERTERS(
    pminfo, 258, 267,
    "sid %d, mode %d, desc %s, to %s, to switch %d, rspan_vlan %d, src %s, src_vlan %s, dir %d, state %d, oper %d",
    row.sid, row.mode, row.desc, row.to, row.to_switch, row.rspan_vlan, row.src, row.src_vlan, row.dir, row.state,
    row.oper)
