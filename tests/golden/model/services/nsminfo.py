"""Network services: ports, VLANs, limits, access lists, QoS, forwarding,
aggregation, optics, cables, DoS protection and name servers."""
from description import Service

service = Service("nsminfo", program=50004, opened=2)

# Ports

service.keep_types("oltmib_int64_t oltmib_uint64_t oltmib_if_counters oltmib_ifrate_s oltmib_iftype_e")
service.record("oltmib_PortInfoEntry", """
    ifx, name[32], field3[80], field4, field5, field6[32], field7[32], field8, field9, field10,
    field11[64], field12[64], field13..field21, field22, field23..field25, field26[32], oper, res""")
service.record("oltmib_PortStatEntry", "ifx, field2, name[32], counter0..counter53: int64, text[32], oper, res")
service.record("oltmib_PortRateEntry", "ifx, field2, name[32], rate0..rate5: int64, text[32], oper, res")
service.record("oltmib_PMInfoEntry", """
    sid, mode, desc[36], src[32], src_vlan[512], to[32], dir, to_switch, rspan_vlan, state,
    text[32], oper, res""")

service.table("portinfo", "oltmib_PortInfoEntry", """
    ifx, name, field3, field4, field5, field8 + field9, field10, field11, field12,
    field13..field21, field23..field25, field26, oper, res""")
service.table("portstat", "oltmib_PortStatEntry", """
    ifx, field2, name, counter9 as unsigned, counter6 as unsigned, counter13 as unsigned,
    counter27 as unsigned, counter26 as unsigned, counter29 as unsigned, counter35 as unsigned,
    counter37 as unsigned, counter40 as unsigned, counter42 as unsigned, text, oper, res""",
              parser=(136, "str {argument}, ifx {ifx}, oper {oper}"),
              formatter=(173, "ifx {ifx}, name {name}, res {res}, str {text}"))
service.table("portrate", "oltmib_PortRateEntry",
              parser=(214, "str {argument}, ifx {ifx}, oper {oper}"),
              formatter=(233, "ifx {ifx}, name {name}, res {res}, str {text}"))
mirror = "sid {sid}, mode {mode}, desc {desc}, to {to}, to switch {to_switch}, rspan_vlan {rspan_vlan}, " \
         "src {src}, src_vlan {src_vlan}, dir {dir}, state {state}, oper {oper}"
service.table("pminfo", "oltmib_PMInfoEntry",
              "sid, mode, desc, to, to_switch, rspan_vlan, src, src_vlan, dir, state, text, oper, res",
              parser=(258, mirror), formatter=(267, mirror))

# VLANs

service.record("oltmib_VlanInfoEntry",
               "field1, field2, field3[33], field4, field5[512], field6[512], text[32], oper, res")
service.record("oltmib_VlanbitmapInfoEntry", "field1, bit[684], field3[512], field4[512], text[32], oper, res")
service.record("oltmib_vlanbitmapEntry", "bit[684], text[32], oper, res")
service.record("oltmib_sptmodeEntry", "field1, field2, text[32], oper, res")
service.record("oltmib_CvlanInfoEntry", "field1[32], field2..field5, text[32], oper, res")
service.record("oltmib_vlanvpnEntry", "field1[40], field2, field3[512], field4[512], text[32], oper, res")
service.record("oltmib_vlanvpnifEntry", "ifx, name[32], field3, field4, field5[32], field6[32], text[32], oper, res")
service.record("oltmib_sviEntry", "field1, name[32], field3[20], text[32], oper, res")

service.table("vlaninfo", "oltmib_VlanInfoEntry")
service.table("vlanbitmapinfo", "oltmib_VlanbitmapInfoEntry")
service.table("vlanbitmap", "oltmib_vlanbitmapEntry",
              parser=(188, "bit {bit}, oper {oper}"), formatter=(196, "bit {bit}, oper {oper}"))
service.table("sptmode", "oltmib_sptmodeEntry")
service.table("vlanvpninfo", "oltmib_vlanvpnEntry")
service.table("vlanvpnifinfo", "oltmib_vlanvpnifEntry")
service.table("sviinfo", "oltmib_sviEntry")

# Limits, access lists and QoS

service.keep_types("oltmib_ratelimit_type oltmib_class_matchtype")
service.record("oltmib_ratelimitEntry", "ifx, name[32], in_cir, in_cbs, out_cir, out_cbs, text[32], oper, res")
service.record("oltmib_stormcontrolEntry", "ifx, name[32], ratelimit_type, level, fraction, text[32], oper, res")
service.record("oltmib_aclEntry", """
    name[70], field2..field6, field7[70], field8, field9, field10[20], src[40], field12[40],
    field13[20], field14[40], field15[40], field16[20], field17, field18, count: int64,
    text[32], oper, res""")
service.record("oltmib_aclifEntry", "ifx, name[32], in[70], field4[70], text[32], oper, res")
service.record("oltmib_qoscfgEntry", "status, alg, text[32], oper, res")
for name, length in (("queueweight", 8), ("cos2dscp", 8), ("cos2queue", 8),
                     ("dscp2cos", 64), ("dscp2dscp", 64), ("dscp2queue", 64)):
    service.record("oltmib_%sEntry" % name, "map[%d], text[32], oper, res" % length)
service.record("oltmib_classEntry", "name[70], matchtype, field3[120], text[32], oper, res")
service.record("oltmib_policyEntry",
               "name[70], class[70], field3, field4[120], field5..field9, text[32], oper, res")
service.record("oltmib_qosifEntry", "ifx, name[32], field3, field4, in[70], field6[70], text[32], oper, res")
service.record("oltmib_qosifcfgEntry", "ifx, name[32], list1: int[8], list2: int[8], text[32], oper, res")

rate = "ifx {ifx}, name {name}, in cir {in_cir}, cbs {in_cbs}, out cir {out_cir}, cbs {out_cbs}, oper {oper}"
service.table("ratelimitinfo", "oltmib_ratelimitEntry", parser=(287, rate), formatter=(295, rate))
storm = "ifx {ifx}, name {name}, ratelimit_type {ratelimit_type}, level {level}, fraction {fraction}, oper {oper}"
service.table("stormcontrolinfo", "oltmib_stormcontrolEntry", parser=(314, storm), formatter=(322, storm))
# Only a reply counts the list's hits.
service.table("aclinfo", "oltmib_aclEntry",
              argument="""name, field2..field6, field7, field8, field9, field10, src, field12, field13,
                          field14, field15, field16, field17, field18, text, oper, res""",
              reply="""name, field2..field6, field7, field8, field9, field10, src, field12, field13,
                       field14, field15, field16, field17, field18, count as unsigned, text, oper, res""",
              parser=(355, "name {name}, src {src}, oper {oper}"),
              formatter=(367, "name {name}, src {src}, oper {oper}"))
service.table("aclifinfo", "oltmib_aclifEntry",
              parser=(385, "name {name}, in {in}, oper {oper}"), formatter=(393, "name {name}, in {in}, oper {oper}"))
service.table("qoscfginfo", "oltmib_qoscfgEntry",
              parser=(409, "status {status}, alg {alg}, oper {oper}"),
              formatter=(417, "status {status}, alg {alg}, oper {oper}"))
for name in ("queueweight", "cos2dscp", "cos2queue", "dscp2cos", "dscp2dscp"):
    service.table(name + "info", "oltmib_%sEntry" % name, "map as list, text, oper, res")
service.table("dscp2queueinfo", "oltmib_dscp2queueEntry", "map as list, text, oper, res",
              each=(602, 614, "dscp {number}, queue {element}({item})"))
service.table("classinfo", "oltmib_classEntry",
              parser=(634, "name {name}, matchtype {matchtype}, oper {oper}"),
              formatter=(642, "name {name}, matchtype {matchtype}, oper {oper}"))
service.table("policyinfo", "oltmib_policyEntry",
              parser=(665, "name {name}, class {class}, oper {oper}"),
              formatter=(674, "name {name}, class {class}, oper {oper}"))
service.table("qosifinfo", "oltmib_qosifEntry",
              parser=(694, "name {name}, in {in}, oper {oper}"), formatter=(702, "name {name}, in {in}, oper {oper}"))
service.table("qosifcfg", "oltmib_qosifcfgEntry")

# Forwarding, aggregation, spanning tree ports, disabled ports, ARP

service.keep_types("oltmib_agmode_e")
service.record("oltmib_fdbParam", "field1, text[32], oper, res")
service.record("oltmib_fdbEntry", "mac[6], field2, field3[32], field4, text[32], oper, res")
service.record("oltmib_agEntry", "field1, name[32], field3, field4, text[32], oper, res")
service.record("oltmib_agsysEntry", "field1, text[32], oper, res")
service.record("oltmib_stpifstatusEntry", "ifx, name[32], field3, text[32], oper, res")
service.record("oltmib_errdisableEntry", "field1..field3, text[32], oper, res")
service.record("oltmib_errdisportinfoEntry", "ifx, name[32], field3, text[32], oper, res")
service.record("oltmib_arpEntry", "field1[64], field2[64], field3[32], field4, text[32], oper, res")

service.table("fdbparam", "oltmib_fdbParam")
service.table("fdbinfo", "oltmib_fdbEntry", "mac as mac, field2, field3, field4, text, oper, res")
service.table("aginfo", "oltmib_agEntry")
service.table("agsysinfo", "oltmib_agsysEntry")
service.table("stpifstatusinfo", "oltmib_stpifstatusEntry")
service.table("errdisableinfo", "oltmib_errdisableEntry")
service.table("errdisportinfo", "oltmib_errdisportinfoEntry")
service.table("arp", "oltmib_arpEntry")

# Optics, cables, DoS protection, name servers, globals

service.keep_types("oltmib_dos_type")
service.record("oltmib_opticalEntry", "ifx, name[32], field3..field14, text[32], oper, res")
service.record("oltmib_opticaldetailEntry", """
    ifx, name[32], field3, field4..field6[32], field7..field14, field15[32], field16,
    alarm_len, alarm[32], field19..field25[32], oper, res""")
service.record("oltmib_cabledetectEntry", "ifx, name[32], field3..field6, field7..field10[16], text[32], oper, res")
service.record("oltmib_dosEntry", "ifx, name[32], field3..field6, count1..count2: int64, text[32], oper, res")
service.record("oltmib_dnsEntry", "field1[65], field2..field3[64], field4, text[32], oper, res")
service.record("oltmib_nsmEntry", "field1[80], field2[800], oper, res")

service.table("optical", "oltmib_opticalEntry")
service.table("opticaldetail", "oltmib_opticaldetailEntry", """
    ifx, name, field3, field4..field6, field7..field14, field15, field16, alarm as counted,
    field19..field25, oper, res""",
              formatter=[(1109, "alarmstr: {alarm_shown}, len {alarm_len}"), (1110, "str: {text}")])
service.table("cabledetect", "oltmib_cabledetectEntry")
service.table("dos", "oltmib_dosEntry",
              "ifx, name, field3..field6, count1..count2 as unsigned, text, oper, res")
service.table("dns", "oltmib_dnsEntry")
service.table("nsm", "oltmib_nsmEntry")

service.register("""
    portinfo          get 1, getn 2, set 3:       portinfo
    vlaninfo          get 4, getn 5, set 6:       vlaninfo
    vlanbitmapinfo    set 148:                    vlanbitmapinfo
    sptmode           get 16, set 17:             sptmode
    portstat          get 10, getn 11, set 12:    portstat
    cvlan_table       get 18 <- void:             vlanbitmap
    p2p_svlan_table   get 19 <- void:             vlanbitmap
    portrate          get 20, getn 21:            portrate
    pminfo            getn 8, set 9:              pminfo
    ratelimitinfo     get 22, getn 23, set 24:    ratelimitinfo
    stormcontrolinfo  get 25, getn 26, set 27:    stormcontrolinfo
    acl               get 33, getn 34, set 35:    aclinfo
    aclif             get 36, getn 37, set 38:    aclifinfo
    qoscfg            get 40, set 41:             qoscfginfo
    queueweight       get 42, set 43:             queueweightinfo
    cos2dscp          get 44, set 45:             cos2dscpinfo
    cos2queue         get 46, set 47:             cos2queueinfo
    dscp2cos          get 48, set 49:             dscp2cosinfo
    dscp2dscp         get 50, set 51:             dscp2dscpinfo
    dscp2queue        get 52, set 53:             dscp2queueinfo
    class             get 54, getn 55, set 56:    classinfo
    policy            get 57, getn 58, set 59:    policyinfo
    qostrustif        get 110, getn 111, set 112: qosifinfo
    qospolicyif       get 113, getn 114, set 115: qosifinfo
    qosifcfg          get 116, getn 117, set 118: qosifcfg
    fdbparam          get 63, set 64:             fdbparam
    fdb_dynamic       getn 149:                   fdbinfo
    fdb               get 65, getn 66, set 67:    fdbinfo
    ag                get 68, getn 69, set 70:    aginfo
    agsys             get 76, set 77:             agsysinfo
    stpifstatus       get 71, getn 72, set 73:    stpifstatusinfo
    vlanvpn           get 81, getn 82, set 83:    vlanvpninfo
    vlanvpnif         get 84, getn 85, set 86:    vlanvpnifinfo
    svi               get 87, getn 88, set 89:    sviinfo
    arp               get 91, getn 92, set 93:    arp
    sarp              get 94, getn 95, set 96:    arp
    optical           get 100, getn 101, set 102: optical
    opticaldetail     get 103, getn 104, set 105: opticaldetail
    nsm               get 120, set 121:           nsm
    cabledetect       get 124, getn 125, set 126: cabledetect
    errdisable        get 130, set 131:           errdisableinfo
    errdisportinfo    get 133, getn 134, set 135: errdisportinfo
    dosglobal         get 140, set 142:           dos
    dosif             get 143, getn 144, set 145: dos
    dnserver          get 152, getn 153, set 154: dns
    dnsdomain         get 155, getn 156, set 157: dns
    dnshost           get 158, getn 159, set 160: dns
""")
service.keep_unregistered("""
    pminfo    get 7:                    oltmib_PMInfoEntry
    cvlaninfo get 13, getn 14, set 15:  oltmib_CvlanInfoEntry
""")

# One position fills two fields; two fields are never shown.
service.call("oltmib_portinfo_get_1", "1&ge1&&&&5", ifx=1, name="ge1", field6="hidden", field8=5, field9=6, field22=22)
service.call("oltmib_portstat_get_1", "3&0&eth0/3&1&2&3&4&5&6&7&8&9&10&note&11&12",
             counter9=-1, counter6=2**32 + 2, counter13=-(2**63), counter27=2**32, counter26=2**63 - 1, counter42=42)
service.call("oltmib_portrate_get_1", "3&0&eth0/3", rate0=-1, rate1=2**32 + 2, rate2=-(2**63), rate3=2**63 - 1,
             rate4=2**32 - 1)
service.call("oltmib_pminfo_getn_1", "1&2&desc&to&3&4&src&10,20&5&6&text&7&8", sid=1, src="src", to="to", dir=5,
             to_switch=3)
service.call("oltmib_acl_get_1", "web&1&2&3&4&5&&6&7&&10.0.0.1&&&&&&8&9&note&10&11", name="web", count=-1, res=1)
service.call("oltmib_dosif_getn_1", "3&eth0/3&1&2&3&4&99&98&note&5&6", ifx=3, count1=2**32, count2=-(2**63))
# Two texts of 511 characters do not fit a reply.
service.call("oltmib_vlaninfo_get_1", "20", field1=20, field3="v" * 32, field5="5" * 511, field6="6" * 511, text="t",
             res=1)
service.call("oltmib_vlanvpn_getn_1", "", field1="vpn", field3="3" * 511, field4="4" * 511, oper=1, res=2)
service.call("oltmib_cvlan_table_get_1", "", bit="1" * 683, text="t", oper=1, res=2)
service.call("oltmib_nsm_set_1", "clock&" + "".join(map(chr, range(128, 256))) * 6 + "a" * 40 + "&1&2", status=-1)
service.call("oltmib_nsm_get_1", "&&&", field1=list(range(177, 256)), field2=list(range(1, 256)) + list(range(-128, 0)))
# Lists: one item too many, items of more than a byte, none at all, 300 characters.
service.call("oltmib_queueweight_set_1", "1,2,3,4,5,6,7,8,9&note&1&2", status=0)
service.call("oltmib_cos2queue_set_1", "255,256,300,-1,,x, 7", status=0)
service.call("oltmib_dscp2dscp_set_1", "", status=0)
service.call("oltmib_dscp2cos_set_1", ",".join("%05d" % number for number in range(60)), status=0)
service.call("oltmib_dscp2queue_get_1", "1,2,3", map="\1\2\3", res=1)
service.call("oltmib_qosifcfg_getn_1", "3&eth0/3&1,2,3,4,5,6,7,8,9&-1,,x&note&1&2", ifx=3, name="eth0/3",
             list1=[1, 2, 3, 4, 5, 6, 7, -8], list2=[-(2**31), 2**31 - 1, 0, 0, 0, 0, 0, 10])
# Alarms: three bytes, an odd digit, flaws, more than fit; counts beyond the array.
service.call("oltmib_opticaldetail_get_1", "3" + "&" * 16 + "0a0b0c", alarm_len=3, alarm="\x0a\x0b\x0c")
service.call("oltmib_opticaldetail_get_1", "3" + "&" * 16 + "0a0b0", alarm_len=32, alarm="\xff" * 32, field19="x")
service.call("oltmib_opticaldetail_getn_1", "3" + "&" * 16 + "zz11qq 1", alarm_len=50, alarm="\x01\x02", field19="abc")
service.call("oltmib_opticaldetail_set_1", "3" + "&" * 16 + "f0" * 33, status=7)
service.call("oltmib_opticaldetail_get_1", "", alarm_len=2**31 - 1, alarm="A" * 32, field19="B" * 31, field20="C")
service.call("oltmib_opticaldetail_get_1", "", alarm_len=-(2**31), alarm="A" * 32)
