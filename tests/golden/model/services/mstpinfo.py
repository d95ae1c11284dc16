"""Spanning tree: bridge, instances, ports and their state."""
from description import Service

service = Service("mstpinfo", program=50007, opened=7)

service.keep_types("oltmib_mstpver_e")
service.record("oltmib_mstpglobalEntry", "value1..value11, text1[32], oper, res")
service.record("oltmib_mstpmstEntry", "text1[40], value1, text2[32], oper, res")
service.record("oltmib_mstpinstEntry", "value1, text1[64], value2, text2[32], oper, res")
service.record("oltmib_mstpifEntry", "value1, value2, text1[32], value3..value13, text2[32], oper, res")
service.record("oltmib_mstpifstateEntry",
               "value1, value2, text1[32], value3..value5, bytes1..bytes3[8], text2[32], oper, res")

service.table("mstpglobal", "oltmib_mstpglobalEntry")
service.table("mstpmst", "oltmib_mstpmstEntry")
service.table("mstpinst", "oltmib_mstpinstEntry")
service.table("mstpif", "oltmib_mstpifEntry")
service.table("mstpifstate", "oltmib_mstpifstateEntry",
              "value1, value2, text1, value3..value5, bytes1..bytes3 as hex, text2, oper, res")

service.register("""
    mstp_global    get 1, set 2:            mstpglobal
    mstp_mst       get 3, set 4:            mstpmst
    mstp_inst      get 5, getn 6, set 7:    mstpinst
    mstp_if        get 8, getn 9, set 10:   mstpif
    mstp_ifstate   get 11, getn 12:         mstpifstate
    mstp_reset_if  detect 13 -> status:     mstpifstate
""")

service.call("oltmib_mstp_ifstate_get_1", "&&&&&&8000001122334455&0a0b0&", bytes1="\x80\0\0\x11\x22\x33\x44\x55",
             bytes2="\xff" * 8)
service.call("oltmib_mstp_reset_if_detect_1", "1&2&eth0/3&3&4&5&800000112233445566&zz12&q", status=-1)
