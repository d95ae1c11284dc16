"""IGMP snooping: settings, router ports, groups, fast leave."""
from description import Service

service = Service("igmpsnpinfo", program=50008, opened=6)

service.record("oltmib_igspGlobalEntry", "int1..int3, text32[32], oper, res")
service.record("oltmib_igspMrouterEntry", "int1, text40[40], text32a[32], oper, res")
service.record("oltmib_igspGrpEntry",
               "int1, text40[40], text32a[32], text32b[32], int2, text32c[32], oper, res")
service.record("oltmib_igspifEntry", "int1, int2, text32[32], oper, res")

service.table("igspglobal", "oltmib_igspGlobalEntry")
service.table("igspmrouter", "oltmib_igspMrouterEntry")
service.table("igspgrp", "oltmib_igspGrpEntry")
service.table("igspif", "oltmib_igspifEntry")

service.register("""
    igmpsnp             get 1, set 2:           igspglobal
    igmpsnp_mrouter     get 4, getn 5, set 6:   igspmrouter
    igmpsnp_static_grp  get 7, getn 8, set 9:   igspgrp
    igmpsnp_grp         get 10, getn 11:        igspgrp
    igmpsnp_fastleave   get 13, set 14:         igspif
""")
