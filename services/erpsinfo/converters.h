// Text of the ring protection and LLDP service's tables.
#pragma once

#include "common/text_form.h"
#include "services/erpsinfo/records.h"

// value1 stands before text2 in the text, behind it on the wire.
TABLE_OF(erpsinst, oltmib_ErpsInstEntry, AT(text1), AT(value1), AT(text2), AT(value2), AT(value3), AT(value4),
         AT(text3), AT(text4), AT(text5), AT(text6), AT(oper), AT(res))
CONVERTERS(erpsinst)

TABLE(erpsring, oltmib_ErpsRingEntry)
CONVERTERS(erpsring)

TABLE(erpsprof, oltmib_ErpsProfEntry)
CONVERTERS(erpsprof)

TABLE(erpsstate, oltmib_ErpsStateEntry, MAC(mac1), MAC(mac2))
CONVERTERS(erpsstate)

TABLE(lldpcfg, oltmib_lldpcfgEntry)
CONVERTERS(lldpcfg)

TABLE(lldpifcfg, oltmib_lldpifcfgEntry)
CONVERTERS(lldpifcfg)

// A neighbour's texts may hold '&': the reply's fields stand between "&$", and
// an argument's end at either character, runs of them counting as one.
TABLE_AS(lldpifnei, oltmib_lldpifneiEntry, split_on("&$").joined_by("&$").with_buffer(4000), MAC(mac1))
CONVERTERS(lldpifnei)

TABLE(lldpifstat, oltmib_lldpifstatEntry)
CONVERTERS(lldpifstat)
