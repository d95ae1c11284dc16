"""Routes."""
from description import Service

service = Service("ribinfo", program=50011, opened=10)

service.record("oltmib_routeEntry",
               "text64a[64], text64b[64], text32a[32], int1, int2, text32b[32], text32c[32], oper, res")
service.table("route", "oltmib_routeEntry")
service.register("route get 1, getn 2, set 3: route")

service.call("oltmib_route_set_1", "10.1.0.0&255.255.0.0&192.168.1.1&1&0&&static&1", status=0)
