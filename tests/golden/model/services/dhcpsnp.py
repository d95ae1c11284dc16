"""DHCP snooping."""
from description import Service

service = Service("dhcpsnp", program=50017, opened=14)

service.record("oltmib_dhcpsnpEntry", "text80[80], text512[512], int1, int2")
service.table("dhcpsnp", "oltmib_dhcpsnpEntry")
service.register("dhcpsnp get 1, set 3: dhcpsnp")

service.call("oltmib_dhcpsnp_get_1", "a&" + "b" * 513 + "&1&2", text80="c" * 79, text512="d" * 511, int1=-(2**31),
             int2=2**31 - 1)
