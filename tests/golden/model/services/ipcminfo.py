"""Requests to the device's drivers (ioctl)."""
from description import Service

service = Service("ipcminfo", program=50016, opened=13)

service.record("oltmib_ioctlEntry", "int1..int4, text32a[32], text32b[32], int5, int6")
service.table("ioctl", "oltmib_ioctlEntry")
service.register("ioctlinfo get 1, getn 2, set 3: ioctl")
