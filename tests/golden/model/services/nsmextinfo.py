"""Network service extensions: PoE, port security, IP source guard."""
from description import Service

service = Service("nsmextinfo", program=50009, opened=8)

service.record("oltmib_poeConfEntry", "value1..value4, text1[32], oper, res")
service.record("oltmib_poeInfoEntry", "value1, value2, text1[32], oper, res")
service.record("oltmib_poeifConfEntry", """
    value1, text1[32], value2, text2[40], value3..value6, text3[32], value7..value10, text4[32], oper, res""")
service.record("oltmib_poeifInfoEntry",
               "value1, text1[32], value2, value3, text2[32], value4..value14, text3[32], oper, res")
service.record("oltmib_nsmauthmacEntry", "value1, mac1[6], value2..value5, text1[32], text2[32], oper, res")
service.record("oltmib_nsmpsEntry", "value1, text1[32], value2..value7, text2[32], oper, res")
service.record("oltmib_nsmpsmacEntry", "value1, text1[32], value2, mac1[6], value3, text2[32], oper, res")
service.record("oltmib_nsmpsstateEntry",
               "value1, text1[32], value2..value10, mac1[6], text2[32], text3[32], oper, res")
service.record("oltmib_nsmpsmacstateEntry",
               "value1, text1[32], value2, mac1[6], value3, value4, text2[32], oper, res")
service.record("oltmib_nsmipsgifEntry", "value1, text1[32], value2..value5, text2[32], oper, res")
service.record("oltmib_nsmipsguserEntry",
               "value1, text1[32], value2, mac1[6], text2[32], value3, text3[32], oper, res")

service.table("poeconf", "oltmib_poeConfEntry")
service.table("poeinfo", "oltmib_poeInfoEntry")
service.table("poeifconf", "oltmib_poeifConfEntry")
service.table("poeifinfo", "oltmib_poeifInfoEntry")
service.table("nsmauthmacinfo", "oltmib_nsmauthmacEntry",
              "value1, mac1 as mac, value2..value5, text1, text2, oper, res")
service.table("nsmpsinfo", "oltmib_nsmpsEntry")
service.table("nsmpsmacinfo", "oltmib_nsmpsmacEntry", "value1, text1, value2, mac1 as mac, value3, text2, oper, res")
service.table("nsmpsstateinfo", "oltmib_nsmpsstateEntry",
              "value1, text1, value2..value10, mac1 as mac, text2, text3, oper, res")
service.table("nsmpsmacstateinfo", "oltmib_nsmpsmacstateEntry",
              "value1, text1, value2, mac1 as mac, value3, value4, text2, oper, res")
service.table("nsmipsgifinfo", "oltmib_nsmipsgifEntry")
service.table("nsmipsguserinfo", "oltmib_nsmipsguserEntry",
              "value1, text1, value2, mac1 as mac, text2, value3, text3, oper, res")

service.register("""
    poeconf        get 1, set 2:            poeconf
    poeifconf      get 5, getn 6, set 7:    poeifconf
    poeinfo        get 3, set 4:            poeinfo
    poeifinfo      get 8, getn 9, set 10:   poeifinfo
    nsmauthmac     get 20, getn 21, set 22: nsmauthmacinfo
    nsmps          get 23, getn 24, set 25: nsmpsinfo
    nsmpsmac       get 26, getn 27, set 28: nsmpsmacinfo
    nsmpsstate     get 29, getn 30:         nsmpsstateinfo
    nsmpsmacstate  get 31, getn 32:         nsmpsmacstateinfo
    nsmipsgif      get 40, getn 41, set 42: nsmipsgifinfo
    nsmipsguser    get 43, getn 44, set 45: nsmipsguserinfo
""")

service.call("oltmib_nsmpsmac_get_1", "&&&0011.2233.4455", mac1="\x00\x11\x22\x33\x44\x55")
