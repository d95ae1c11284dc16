"""Device information: identity, capabilities, library settings, access log."""
from description import Service

service = Service("devinfo", program=50002, opened=3)

service.record("oltmib_DevInfoEntry", """
    text32a[32], text32b[32], mac[6], text32c[32], text32d[32], text32e[32],
    saveconfig, int1, hostname[64], oper, res""")
service.record("oltmib_apiEntry", "int1, int2")
for name in ("devcap", "libconf"):
    service.record("oltmib_%sEntry" % name, "text64a[64], text64b[64], int1, text64c[64], text32[32], oper, res")
service.record("oltmib_accesslogEntry", "text64a[64], text64b[64], int1..int3, text32[32], oper, res")

# An argument's address is copied as five characters, a reply's is shown; a
# reply leaves out oper.
service.table("devinfo", "oltmib_DevInfoEntry",
              reply="""text32a, text32b, mac as mac, text32c, text32d, text32e,
                       saveconfig, int1 as unsigned, hostname, res""",
              parser=(28, "save config {saveconfig}, hostname {hostname}, oper {oper}"),
              formatter=(37, "str: {text}"))
service.table("devcap", "oltmib_devcapEntry")
service.table("libconf", "oltmib_libconfEntry")
service.table("accesslog", "oltmib_accesslogEntry")

service.register("""
    devinfo      get 1, getn 2, set 3: devinfo
    devcapbool   get 5:                devcap
    devcapint    get 6:                devcap
    devcapstr    get 7:                devcap
    libconfbool  get 8:                libconf
    libconfint   get 9:                libconf
    libconfstr   get 10:               libconf
    accesslog    set 13:               accesslog
""")
service.keep_unregistered("api get 4: oltmib_apiEntry")

service.call("oltmib_devinfo_set_1", "olt-8&&00-11-22-33-44-55&&&&1&7&" + "h" * 70 + "&2&3", status=0)
service.call("oltmib_devinfo_get_1", "", text32a="olt-8", mac="\x00\x11\x22\xaa\xbb\xcc", int1=-1, oper=5, res=6)
