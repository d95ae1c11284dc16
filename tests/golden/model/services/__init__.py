"""The services, in the order in which the device's documents have them.

A new one is a file here and its name in this list.
"""
from importlib import import_module

SERVICES = [import_module("services." + name).service for name in (
    "devinfo", "auth", "nsminfo", "hostpdinfo", "erpsinfo", "mstpinfo", "hslinfo", "igmpsnpinfo",
    "nsmextinfo", "dhcpsnp", "lpdet", "ribinfo", "vrrpinfo", "sdsminfo", "ipcminfo")]
