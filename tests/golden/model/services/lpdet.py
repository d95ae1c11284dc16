"""Loop detection."""
from description import Service

service = Service("lpdet", program=50018, opened=15, registration="lpdetinfo")

service.record("oltmib_lpdetglobalEntry", "value1..value3, text1[32], oper, res")
service.record("oltmib_lpdetportinfoEntry", """
    value1, text1[32], value2, text2[64], text3..text4[16], text5[32], value3, text6[32], oper, res""")

service.table("lpdetglobal", "oltmib_lpdetglobalEntry")
service.table("lpdetportinfo", "oltmib_lpdetportinfoEntry")

service.register("""
    lpdet_global    get 1, set 3:         lpdetglobal
    lpdet_portinfo  get 4, getn 5, set 6: lpdetportinfo
""")
