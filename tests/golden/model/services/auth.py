"""Authentication: 802.1X, MAC authentication and RADIUS."""
from description import Service

service = Service("auth", program=50010, opened=9)

service.record("oltmib_authGlobalEntry", "config, text32[32], oper, res")
service.record("oltmib_d1xPcfgEntry", "ifx, text40[40], int1..int10, text32[32], oper, res")
service.record("oltmib_d1xPstEntry", "ifx, text40[40], int1..int24, text32[32], oper, res")
service.record("oltmib_macauthPcfgEntry", "ifx, text40[40], int1..int6, text32[32], oper, res")
service.record("oltmib_macauthUserEntry", "int1, mac[6], int2, int3, ifx, text40[40], text32[32], oper, res")
service.record("oltmib_radglobalEntry", "int1, text64[64], int2..int4, text40[40], int5, text32[32], oper, res")
service.record("oltmib_radsrvEntry", "ip[32], int1..int3, text64[64], int4, int5, text32[32], oper, res")

service.table("authglobal", "oltmib_authGlobalEntry",
              parser=(21, "config {config}, oper {oper}"), formatter=(30, "str: {text}"))
service.table("d1xpcfg", "oltmib_d1xPcfgEntry",
              parser=(56, "ifx {ifx}, oper {oper}"), formatter=(66, "str: {text}"))
# Of the 24 numbers the texts hold four.
service.table("d1xpst", "oltmib_d1xPstEntry", "ifx, text40, int1, int2, int3, int7, text32, oper, res",
              parser=(86, "ifx {ifx}, oper {oper}"), formatter=(95, "str: {text}"))
service.table("macauthpcfg", "oltmib_macauthPcfgEntry",
              parser=(117, "ifx {ifx}, oper {oper}"), formatter=(127, "str: {text}"))
service.table("macauthuser", "oltmib_macauthUserEntry",
              "int1, mac as mac, int2, int3, ifx, text40, text32, oper, res",
              parser=(147, "ifx {ifx}, oper {oper}"), formatter=(156, "str: {text}"))
service.table("radglobal", "oltmib_radglobalEntry", formatter=(185, "str: {text}"))
service.table("radsrv", "oltmib_radsrvEntry",
              parser=(206, "ip {ip}, oper {oper}"), formatter=(215, "str: {text}"))

service.register("""
    auth_global   get 1, set 2:            authglobal
    d1x_pcfg      get 4, getn 5, set 6:    d1xpcfg
    d1x_pst       get 7, getn 8:           d1xpst
    macauth_pcfg  get 10, getn 11, set 12: macauthpcfg
    macauth_user  get 13, getn 14:         macauthuser
    radglobal     get 15, set 16:          radglobal
    radsrv        get 18, getn 19, set 20: radsrv
""")

service.call("oltmib_d1x_pst_get_1", "3&eth0/3&1&2&3&7&note&8&9", ifx=3, int1=1, int3=3, int4=4, int6=6, int7=7, int8=8)
service.call("oltmib_macauth_user_get_1", "1&0011.22aa.bbcc&2&3&4", mac="\x00\x11\x22\xaa\xbb\xcc", ifx=4)
