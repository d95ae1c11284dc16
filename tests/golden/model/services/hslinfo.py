"""Hardware services: management address, interface mode, dying gasp, in-band
management, serial lines and their instances."""
from description import Service

service = Service("hslinfo", program=50003, opened=4)

service.record("oltmib_mgmtvlanEntry",
               "int1, int2, ip[20], gateway[20], int3, text64a[64], text64b[64], text32[32], oper, res")
service.record("oltmib_portintfmodeEntry", "ifx, mode_flag, mode, int4, int5, text32[32], oper, res")
service.record("oltmib_portinbandanEntry", "ifx, state, text32[32], oper, res")
service.record("oltmib_dyinggaspEntry", "int1, int2, text32[32], oper, res")
service.record("oltmib_mbaserialEntry", "ifx, brate, int3, text32a[32], int4, text32b[32], oper, res")
service.record("oltmib_mbainstEntry",
               "name[32], int1, text20[20], int2, dip[20], int3, text32a[32], int4, text32b[32], oper, res")
service.record("oltmib_mbainststateEntry",
               "name[32], int1, int2, text20[20], int3, dip[20], int4, int5, text32[32], oper, res")
service.record("oltmib_mbaserialstatisEntry", "ifx, err: u_int, count2..count3: u_int, text32[32], oper, res")
service.record("oltmib_mbainststatisEntry", "name[32], rx_bytes: u_int, count2..count8: u_int, text32[32], oper, res")

service.table("hslinfo", "oltmib_mgmtvlanEntry", parser=(27, "set ip {ip}, gateway {gateway}, oper {oper}"))
service.table("hslportintfmode", "oltmib_portintfmodeEntry",
              parser=(53, "ifx {ifx}, mode_flag {mode_flag}, mode {mode}, oper {oper}"))
service.table("hslportinbandan", "oltmib_portinbandanEntry", parser=(99, "ifx {ifx}, state {state}, oper {oper}"))
service.table("dyinggasp", "oltmib_dyinggaspEntry")
service.table("mbaserial", "oltmib_mbaserialEntry", parser=(125, "ifx {ifx}, brate {brate}, oper {oper}"))
service.table("mbainst", "oltmib_mbainstEntry", parser=(162, "name {name}, dip {dip}, oper {oper}"))
service.table("mbainststate", "oltmib_mbainststateEntry", parser=(202, "name {name}, dip {dip}, oper {oper}"))
# Counters are read and shown as signed numbers.
service.table("mbaserialstatis", "oltmib_mbaserialstatisEntry", parser=(238, "ifx {ifx}, err {err}, oper {oper}"))
service.table("mbainststatis", "oltmib_mbainststatisEntry",
              parser=(275, "name {name}, rx_bytes {rx_bytes}, oper {oper}"))

service.register("""
    mgmtvlan         get 9, set 10 -> record:                hslinfo
    portintfmode     get 11, getn 12, set 13:                hslportintfmode
    dyinggasp        support 81, get 82, set 83 -> record:   dyinggasp
    portinbandan     get 84, getn 85, set 86:                hslportinbandan
    mbaserial        get 90, getn 91, set 92:                mbaserial
    mbainst          get 93, getn 94, set 95:                mbainst
    mbainststate     get 96, getn 97, set 98:                mbainststate
    mbaserialstatis  get 99, getn 100, set 101:              mbaserialstatis
    mbainststatis    get 102, getn 103, set 104:             mbainststatis
""")

service.call("oltmib_mgmtvlan_set_1", "1&2&192.168.1.100&192.168.1.1&&&&&1", status=0)
service.call("oltmib_mgmtvlan_set_1", "&&" + "1" * 25 + "&" + "2" * 25, status=-(2**31))
service.call("oltmib_dyinggasp_set_1", "1&2&note&3&4", status=-1)
service.call("oltmib_mbaserial_get_1", "1&9600")
service.call("oltmib_mbainststatis_get_1", "i1&4294967295", name="i1", rx_bytes=-1, count2=2**31 - 1, count8=-(2**31))
