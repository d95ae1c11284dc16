"""Ring protection (ERPS) and link layer discovery (LLDP)."""
from description import Service

service = Service("erpsinfo", program=50005, opened=1)

service.record("oltmib_ErpsInstEntry", "text1..text2[32], value1..value4, text3..text6[32], oper, res")
service.record("oltmib_ErpsRingEntry", "value1, text1..text3[32], oper, res")
service.record("oltmib_ErpsProfEntry", "text1[32], value1..value5, text2[32], oper, res")
service.record("oltmib_ErpsStateEntry", """
    text1[32], value1..value5, mac1[6], value6..value8, mac2[6], value9..value11, text2[32], oper, res""")
service.record("oltmib_lldpcfgEntry", "value1, text1..text3[64], text4[32], oper, res")
service.record("oltmib_lldpifcfgEntry", "value1, text1..text4[64], value2..value13, text5[32], oper, res")
service.record("oltmib_lldpifneiEntry", "value1, mac1[6], text1[64], text2[2000], text3[32], oper, res")
service.record("oltmib_lldpifstatEntry", "value1, text1[64], value2..value8, text2[32], oper, res")

service.table("erpsinst", "oltmib_ErpsInstEntry", "text1, value1, text2, value2..value4, text3..text6, oper, res")
service.table("erpsring", "oltmib_ErpsRingEntry")
service.table("erpsprof", "oltmib_ErpsProfEntry")
service.table("erpsstate", "oltmib_ErpsStateEntry", """
    text1, value1..value5, mac1 as mac, value6..value8, mac2 as mac, value9..value11, text2, oper, res""")
service.table("lldpcfg", "oltmib_lldpcfgEntry")
service.table("lldpifcfg", "oltmib_lldpifcfgEntry")
# Neighbours' texts may hold a '&'.
service.table("lldpifnei", "oltmib_lldpifneiEntry", "value1, mac1 as mac, text1, text2, text3, oper, res",
              separators="&$", joined="&$", room=4000)
service.table("lldpifstat", "oltmib_lldpifstatEntry")

service.register("""
    erpsinst    get 1, getn 2, set 3:       erpsinst
    erpsring    get 4, getn 5, set 6:       erpsring
    erpsprof    get 7, getn 8, set 9:       erpsprof
    erpsstate   getn 12, set 13 -> record:  erpsstate
    lldpcfg     get 21, set 22:             lldpcfg
    lldpifcfg   get 23, getn 24, set 25:    lldpifcfg
    lldpifnei   get 26, getn 27:            lldpifnei
    lldpifstat  get 29, getn 30, set 31:    lldpifstat
""")

service.call("oltmib_erpsinst_get_1", "A&5&B", text1="A", text2="B", value1=5)
service.call("oltmib_erpsstate_getn_1", "r1&&&&&&aabb.ccdd.eeff&&&&AA-BB-CC-DD-EE-FF",
             mac1="\xaa\xbb\xcc\xdd\xee\xff", mac2="\xaa\xbb\xcc\xdd\xee\xff")
service.call("oltmib_erpsstate_set_1", "r1", status=0)
service.call("oltmib_erpsstate_set_1", "r1", status=0x41414141)
service.call("oltmib_lldpifnei_get_1", "3&&$&$", value1=3, mac1="\x00\x11\x22\xaa\xbb\xcc", text1="eth0/3",
             text2="a & b", text3="$")
service.call("oltmib_lldpifnei_getn_1", "3&$00-11-22-33-44-55&$eth0/3&$" + "n" * 2005 + "&$note&$1&$2",
             value1=-(2**31), text1="1" * 63, text2="2" * 1999, text3="3" * 31)
