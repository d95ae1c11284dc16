// Text of the hardware services layer service's tables.
#pragma once

#include "common/text_form.h"
#include "services/hslinfo/records.h"

TABLE(hslinfo, oltmib_mgmtvlanEntry)
TRACED_PARSER(hslinfo, 27, "set ip %s, gateway %s, oper %d", row.ip, row.gateway, row.oper)
FORMATTER(hslinfo)

TABLE(hslportintfmode, oltmib_portintfmodeEntry)
TRACED_PARSER(hslportintfmode, 53, "ifx %d, mode_flag %d, mode %d, oper %d", row.ifx, row.mode_flag, row.mode, row.oper)
FORMATTER(hslportintfmode)

TABLE(hslportinbandan, oltmib_portinbandanEntry)
TRACED_PARSER(hslportinbandan, 99, "ifx %d, state %d, oper %d", row.ifx, row.state, row.oper)
FORMATTER(hslportinbandan)

TABLE(dyinggasp, oltmib_dyinggaspEntry)
CONVERTERS(dyinggasp)

TABLE(mbaserial, oltmib_mbaserialEntry)
TRACED_PARSER(mbaserial, 125, "ifx %d, brate %d, oper %d", row.ifx, row.brate, row.oper)
FORMATTER(mbaserial)

TABLE(mbainst, oltmib_mbainstEntry)
TRACED_PARSER(mbainst, 162, "name %s, dip %s, oper %d", row.name, row.dip, row.oper)
FORMATTER(mbainst)

TABLE(mbainststate, oltmib_mbainststateEntry)
TRACED_PARSER(mbainststate, 202, "name %s, dip %s, oper %d", row.name, row.dip, row.oper)
FORMATTER(mbainststate)

TABLE(mbaserialstatis, oltmib_mbaserialstatisEntry)
// Counters of 2^31 and more show as negative numbers, here as in the text.
TRACED_PARSER(mbaserialstatis, 238, "ifx %d, err %d, oper %d", row.ifx, row.err, row.oper)
FORMATTER(mbaserialstatis)

TABLE(mbainststatis, oltmib_mbainststatisEntry)
TRACED_PARSER(mbainststatis, 275, "name %s, rx_bytes %d, oper %d", row.name, row.rx_bytes, row.oper)
FORMATTER(mbainststatis)
