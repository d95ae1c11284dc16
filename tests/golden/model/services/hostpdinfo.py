"""Host protocols: telnet, web, ssh, SNMP, accounts, time, DHCP, syslog, alerts."""
from description import Service

service = Service("hostpdinfo", program=50006, opened=5)

service.record("oltmib_hostpdInfoEntry",
               "int1, text40[40], int2, text64[64], text80a[80], text80b[80], text32[32], oper, res")
service.record("oltmib_accountEntry",
               "int1, text40[40], int2, text64[64], text80a[80], text80b[80], int3, text32[32], oper, res")
# The fourth text is one longer than its neighbours.
service.record("oltmib_tmEntry", """
    text40[40], text64a[64], text64b[64], text65[65], int1..int3, text64c[64], text64d[64], int4,
    real1..real2: double, text32[32], oper, res""")
service.record("oltmib_dhcpdinfoEntry", "text80[80], text512[512], oper, res")
service.record("oltmib_snmpviewEntry", "text80[80], text400[400], text32[32], oper, res")
service.record("oltmib_snmpgroupEntry",
               "text80a[80], int1, int2, text80b[80], text80c[80], text80d[80], text32[32], oper, res")
service.record("oltmib_snmpuserEntry",
               "text80a[80], text80b[80], int1, text80c[80], int2, text80d[80], text32[32], oper, res")
service.record("oltmib_snmphostEntry", "int1, text80a[80], int2, text80b[80], int3, int4, text32[32], oper, res")
service.record("oltmib_syslogInfoEntry", "value1..value11, text32[32], oper, res")
service.record("oltmib_syslogRemoteEntry", "int1, text64[64], int2, text32[32], oper, res")
service.record("oltmib_alertEntry", "value1..value4, text32[32], oper, res")

service.table("hostpdinfo", "oltmib_hostpdInfoEntry")
service.table("accountEntry", "oltmib_accountEntry")
service.table("tm", "oltmib_tmEntry")
service.table("dhcpdinfo", "oltmib_dhcpdinfoEntry")
service.table("snmpview", "oltmib_snmpviewEntry")
service.table("snmpgroup", "oltmib_snmpgroupEntry")
service.table("snmpuser", "oltmib_snmpuserEntry")
service.table("snmphost", "oltmib_snmphostEntry")
service.table("sysloginfo", "oltmib_syslogInfoEntry")
service.table("syslogremote", "oltmib_syslogRemoteEntry")
service.table("alert", "oltmib_alertEntry")

service.register("""
    telnet          set 1, get 2:            hostpdinfo
    web             set 3, get 4:            hostpdinfo
    snmp_community  set 5, get 6, getn 7:    hostpdinfo
    snmp_srv        set 8, get 9, getn 10:   hostpdinfo
    account         set 11, get 12, getn 13: accountEntry
    ntp             set 15, get 16:          tm
    snmp_view       set 17, get 18, getn 19: snmpview
    snmp_group      set 20, get 21, getn 22: snmpgroup
    snmp_user       set 23, get 24, getn 25: snmpuser
    snmp_host       set 26, get 27, getn 28: snmphost
    ssh             set 31, get 32:          hostpdinfo
    dhcpdinfo       get 40, set 41:          dhcpdinfo
    sysloginfo      get 44, set 45:          sysloginfo
    syslogremote    get 47, set 49:          syslogremote
    alert           get 50, set 52:          alert
""")
service.keep_unregistered("snmp_cfg req 14 -> status: oltmib_hostpdInfoEntry")

service.call("oltmib_ntp_get_1", "", real1=2.5, real2=-0.0)
service.call("oltmib_ntp_get_1", "u" * 70 + "&&&" + "v" * 70, real1=1e300, real2=-1e300, text40="a" * 39,
             text65="b" * 64, text64a="c" * 63, text64b="d" * 63, text64c="e" * 63, text64d="f" * 63, int1=-(2**31),
             int2=-(2**31), int3=-(2**31), int4=-(2**31), text32="g" * 31, oper=-(2**31), res=1)
service.call("oltmib_ntp_set_1", "&&&&&&&&&&-0&1.7976931348623157e308", status=0)
service.call("oltmib_snmp_view_get_1", "&" + "view" * 112 + "vi", text80="a" * 79, text400="b" * 399, text32="c" * 31,
             oper=-(2**31), res=-(2**31))
