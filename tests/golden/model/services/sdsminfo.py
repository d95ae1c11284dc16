"""SDSM information."""
from description import Service

service = Service("sdsminfo", program=50015, opened=12)

service.record("oltmib_sdsminfoEntry", "text80[80], text512[512], int1, int2")
service.table("sdsminfo", "oltmib_sdsminfoEntry")
service.register("sdsminfo get 1, set 3: sdsminfo")

service.call("oltmib_sdsminfo_set_1", "a&" + "s" * 600, status=0)
