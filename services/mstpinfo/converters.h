// Text of the spanning tree service's tables.
#pragma once

#include "common/text_form.h"
#include "services/mstpinfo/records.h"

TABLE(mstpglobal, oltmib_mstpglobalEntry)
CONVERTERS(mstpglobal)

TABLE(mstpmst, oltmib_mstpmstEntry)
CONVERTERS(mstpmst)

TABLE(mstpinst, oltmib_mstpinstEntry)
CONVERTERS(mstpinst)

TABLE(mstpif, oltmib_mstpifEntry)
CONVERTERS(mstpif)

TABLE(mstpifstate, oltmib_mstpifstateEntry, HEX(bytes1), HEX(bytes2), HEX(bytes3))
CONVERTERS(mstpifstate)
