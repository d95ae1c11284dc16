"""Virtual routers (VRRP)."""
from description import Service

service = Service("vrrpinfo", program=50013, opened=11)

service.record("oltmib_vrrp_ssconfEntry", """
    vrid, ifname[40], text1[32], value1..value4, text2[40], value5, value6, text3[32], oper, res""")
service.record("oltmib_vrrp_ssstateEntry", "vrid, value1, value2, role, value3, value4, text1[32], oper, res")

# What the trace calls ip is the interface's name once more.
service.table("vrrp_ssconf", "oltmib_vrrp_ssconfEntry",
              parser=(30, "vrid {vrid}, ifname {ifname}, ip {ifname}, oper {oper}"))
service.table("vrrp_ssstate", "oltmib_vrrp_ssstateEntry", parser=(58, "vrid {vrid}, role {role}, oper {oper}"))

service.register("""
    vrrp_ssconf   get 1, getn 2, set 3: vrrp_ssconf
    vrrp_ssstate  get 4, getn 5, set 6: vrrp_ssstate
""")

service.call("oltmib_vrrp_ssconf_set_1", "7&vlan10&192.0.2.1&&&&&&&&&1", status=0)
