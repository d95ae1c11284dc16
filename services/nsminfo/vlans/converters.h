// Text of the network service module's tables: VLANs, their bitmaps, port modes, VLAN VPNs and switch interfaces.
#pragma once

#include "common/text_form.h"
#include "services/nsminfo/vlans/records.h"

TABLE(vlaninfo, oltmib_VlanInfoEntry)
CONVERTERS(vlaninfo)

TABLE(vlanbitmapinfo, oltmib_VlanbitmapInfoEntry)
PARSER(vlanbitmapinfo)

TABLE(vlanbitmap, oltmib_vlanbitmapEntry)
TRACED_CONVERTERS(vlanbitmap, 188, 196, "bit %s, oper %d", row.bit, row.oper)

TABLE(sptmode, oltmib_sptmodeEntry)
CONVERTERS(sptmode)

TABLE(vlanvpninfo, oltmib_vlanvpnEntry)
CONVERTERS(vlanvpninfo)

TABLE(vlanvpnifinfo, oltmib_vlanvpnifEntry)
CONVERTERS(vlanvpnifinfo)

TABLE(sviinfo, oltmib_sviEntry)
CONVERTERS(sviinfo)
