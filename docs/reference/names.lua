-- Made by the target `describe`; change the services or tools/describe/empty_names.cpp instead.
-- A file of names in which nothing is said yet: every table and every field. Copy
-- it, or a part of it, to /etc/librpc/names/YOURS.lua, and fill in what you know:
--
--     portinfo = {
--       title = "Ports", key = { "ifx" },
--       field8 = { name = "speed", unit = "Mbit/s", values = { [0] = "auto" } },
--     },
--
-- docs/named_fields.md tells every word. `require("librpc.names").check(PATH)` finds
-- the mistakes of a file.
return {
  -- erpsinfo: ring protection and LLDP
  erpsinst = { -- get getn set
    text1 = {}, -- text of 32
    value1 = {}, -- int
    text2 = {}, -- text of 32
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    text3 = {}, -- text of 32
    text4 = {}, -- text of 32
    text5 = {}, -- text of 32
    text6 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  erpsring = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    text2 = {}, -- text of 32
    text3 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  erpsprof = { -- get getn set
    text1 = {}, -- text of 32
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  erpsstate = { -- getn set
    text1 = {}, -- text of 32
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    mac1 = {}, -- mac of 6
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    mac2 = {}, -- mac of 6
    value9 = {}, -- int
    value10 = {}, -- int
    value11 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  lldpcfg = { -- get set
    value1 = {}, -- int
    text1 = {}, -- text of 64
    text2 = {}, -- text of 64
    text3 = {}, -- text of 64
    text4 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  lldpifcfg = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 64
    text2 = {}, -- text of 64
    text3 = {}, -- text of 64
    text4 = {}, -- text of 64
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    value11 = {}, -- int
    value12 = {}, -- int
    value13 = {}, -- int
    text5 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  lldpifnei = { -- get getn
    value1 = {}, -- int
    mac1 = {}, -- mac of 6
    text1 = {}, -- text of 64
    text2 = {}, -- text of 2000
    text3 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  lldpifstat = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 64
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- nsminfo: network service module
  portinfo = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- text of 80
    field4 = {}, -- int
    field5 = {}, -- int
    field8 = {}, -- int
    field10 = {}, -- int
    field11 = {}, -- text of 64
    field12 = {}, -- text of 64
    field13 = {}, -- int
    field14 = {}, -- int
    field15 = {}, -- int
    field16 = {}, -- int
    field17 = {}, -- int
    field18 = {}, -- int
    field19 = {}, -- int
    field20 = {}, -- int
    field21 = {}, -- int
    field23 = {}, -- int
    field24 = {}, -- int
    field25 = {}, -- int
    field26 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  vlaninfo = { -- get getn set
    field1 = {}, -- int
    field2 = {}, -- int
    field3 = {}, -- text of 33
    field4 = {}, -- int
    field5 = {}, -- text of 512
    field6 = {}, -- text of 512
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  vlanbitmapinfo = { -- set
    field1 = {}, -- int
    bit = {}, -- text of 684
    field3 = {}, -- text of 512
    field4 = {}, -- text of 512
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  sptmode = { -- get set
    field1 = {}, -- int
    field2 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  portstat = { -- get getn set
    ifx = {}, -- int
    field2 = {}, -- int
    name = {}, -- text of 32
    counter9 = {}, -- counter
    counter6 = {}, -- counter
    counter13 = {}, -- counter
    counter27 = {}, -- counter
    counter26 = {}, -- counter
    counter29 = {}, -- counter
    counter35 = {}, -- counter
    counter37 = {}, -- counter
    counter40 = {}, -- counter
    counter42 = {}, -- counter
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  cvlan_table = { -- get
    bit = {}, -- text of 684
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  p2p_svlan_table = { -- get
    bit = {}, -- text of 684
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  portrate = { -- get getn
    ifx = {}, -- int
    field2 = {}, -- int
    name = {}, -- text of 32
    rate0 = {}, -- counter
    rate1 = {}, -- counter
    rate2 = {}, -- counter
    rate3 = {}, -- counter
    rate4 = {}, -- counter
    rate5 = {}, -- counter
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  pminfo = { -- getn set
    sid = {}, -- int
    mode = {}, -- int
    desc = {}, -- text of 36
    to = {}, -- text of 32
    to_switch = {}, -- int
    rspan_vlan = {}, -- int
    src = {}, -- text of 32
    src_vlan = {}, -- text of 512
    dir = {}, -- int
    state = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  ratelimitinfo = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    in_cir = {}, -- int
    in_cbs = {}, -- int
    out_cir = {}, -- int
    out_cbs = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  stormcontrolinfo = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    ratelimit_type = {}, -- int
    level = {}, -- int
    fraction = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  acl = { -- get getn set
    name = {}, -- text of 70
    field2 = {}, -- int
    field3 = {}, -- int
    field4 = {}, -- int
    field5 = {}, -- int
    field6 = {}, -- int
    field7 = {}, -- text of 70
    field8 = {}, -- int
    field9 = {}, -- int
    field10 = {}, -- text of 20
    src = {}, -- text of 40
    field12 = {}, -- text of 40
    field13 = {}, -- text of 20
    field14 = {}, -- text of 40
    field15 = {}, -- text of 40
    field16 = {}, -- text of 20
    field17 = {}, -- int
    field18 = {}, -- int
    count = {}, -- counter
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  aclif = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    ["in"] = {}, -- text of 70
    field4 = {}, -- text of 70
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  qoscfg = { -- get set
    status = {}, -- int
    alg = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  queueweight = { -- get set
    map = {}, -- list of 8
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  cos2dscp = { -- get set
    map = {}, -- list of 8
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  cos2queue = { -- get set
    map = {}, -- list of 8
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dscp2cos = { -- get set
    map = {}, -- list of 64
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dscp2dscp = { -- get set
    map = {}, -- list of 64
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dscp2queue = { -- get set
    map = {}, -- list of 64
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  class = { -- get getn set
    name = {}, -- text of 70
    matchtype = {}, -- int
    field3 = {}, -- text of 120
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  policy = { -- get getn set
    name = {}, -- text of 70
    class = {}, -- text of 70
    field3 = {}, -- int
    field4 = {}, -- text of 120
    field5 = {}, -- int
    field6 = {}, -- int
    field7 = {}, -- int
    field8 = {}, -- int
    field9 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  qostrustif = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    ["in"] = {}, -- text of 70
    field6 = {}, -- text of 70
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  qospolicyif = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    ["in"] = {}, -- text of 70
    field6 = {}, -- text of 70
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  qosifcfg = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    list1 = {}, -- list of 8
    list2 = {}, -- list of 8
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  fdbparam = { -- get set
    field1 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  fdb_dynamic = { -- getn
    mac = {}, -- mac of 6
    field2 = {}, -- int
    field3 = {}, -- text of 32
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  fdb = { -- get getn set
    mac = {}, -- mac of 6
    field2 = {}, -- int
    field3 = {}, -- text of 32
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  ag = { -- get getn set
    field1 = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  agsys = { -- get set
    field1 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  stpifstatus = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  vlanvpn = { -- get getn set
    field1 = {}, -- text of 40
    field2 = {}, -- int
    field3 = {}, -- text of 512
    field4 = {}, -- text of 512
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  vlanvpnif = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    field5 = {}, -- text of 32
    field6 = {}, -- text of 32
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  svi = { -- get getn set
    field1 = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- text of 20
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  arp = { -- get getn set
    field1 = {}, -- text of 64
    field2 = {}, -- text of 64
    field3 = {}, -- text of 32
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  sarp = { -- get getn set
    field1 = {}, -- text of 64
    field2 = {}, -- text of 64
    field3 = {}, -- text of 32
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  optical = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    field5 = {}, -- int
    field6 = {}, -- int
    field7 = {}, -- int
    field8 = {}, -- int
    field9 = {}, -- int
    field10 = {}, -- int
    field11 = {}, -- int
    field12 = {}, -- int
    field13 = {}, -- int
    field14 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  opticaldetail = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- text of 32
    field5 = {}, -- text of 32
    field6 = {}, -- text of 32
    field7 = {}, -- int
    field8 = {}, -- int
    field9 = {}, -- int
    field10 = {}, -- int
    field11 = {}, -- int
    field12 = {}, -- int
    field13 = {}, -- int
    field14 = {}, -- int
    field15 = {}, -- text of 32
    field16 = {}, -- int
    alarm = {}, -- hex of 32
    field19 = {}, -- text of 32
    field20 = {}, -- text of 32
    field21 = {}, -- text of 32
    field22 = {}, -- text of 32
    field23 = {}, -- text of 32
    field24 = {}, -- text of 32
    field25 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsm = { -- get set
    field1 = {}, -- text of 80
    field2 = {}, -- text of 800
    oper = {}, -- int
    res = {}, -- int
  },
  cabledetect = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    field5 = {}, -- int
    field6 = {}, -- int
    field7 = {}, -- text of 16
    field8 = {}, -- text of 16
    field9 = {}, -- text of 16
    field10 = {}, -- text of 16
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  errdisable = { -- get set
    field1 = {}, -- int
    field2 = {}, -- int
    field3 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  errdisportinfo = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dosglobal = { -- get set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    field5 = {}, -- int
    field6 = {}, -- int
    count1 = {}, -- counter
    count2 = {}, -- counter
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dosif = { -- get getn set
    ifx = {}, -- int
    name = {}, -- text of 32
    field3 = {}, -- int
    field4 = {}, -- int
    field5 = {}, -- int
    field6 = {}, -- int
    count1 = {}, -- counter
    count2 = {}, -- counter
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dnserver = { -- get getn set
    field1 = {}, -- text of 65
    field2 = {}, -- text of 64
    field3 = {}, -- text of 64
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dnsdomain = { -- get getn set
    field1 = {}, -- text of 65
    field2 = {}, -- text of 64
    field3 = {}, -- text of 64
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dnshost = { -- get getn set
    field1 = {}, -- text of 65
    field2 = {}, -- text of 64
    field3 = {}, -- text of 64
    field4 = {}, -- int
    text = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- devinfo: device information
  devinfo = { -- get getn set
    text32a = {}, -- text of 32
    text32b = {}, -- text of 32
    mac = {}, -- mac of 6
    text32c = {}, -- text of 32
    text32d = {}, -- text of 32
    text32e = {}, -- text of 32
    saveconfig = {}, -- int
    int1 = {}, -- unsigned
    hostname = {}, -- text of 64
    res = {}, -- int
    oper = {}, -- int
  },
  devcapbool = { -- get
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    text64c = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  devcapint = { -- get
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    text64c = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  devcapstr = { -- get
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    text64c = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  libconfbool = { -- get
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    text64c = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  libconfint = { -- get
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    text64c = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  libconfstr = { -- get
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    text64c = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  accesslog = { -- set
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- hslinfo: hardware services layer
  mgmtvlan = { -- get set
    int1 = {}, -- int
    int2 = {}, -- int
    ip = {}, -- text of 20
    gateway = {}, -- text of 20
    int3 = {}, -- int
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  portintfmode = { -- get getn set
    ifx = {}, -- int
    mode_flag = {}, -- int
    mode = {}, -- int
    int4 = {}, -- int
    int5 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dyinggasp_support = { -- other
    int1 = {}, -- int
    int2 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dyinggasp = { -- get set
    int1 = {}, -- int
    int2 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  portinbandan = { -- get getn set
    ifx = {}, -- int
    state = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mbaserial = { -- get getn set
    ifx = {}, -- int
    brate = {}, -- int
    int3 = {}, -- int
    text32a = {}, -- text of 32
    int4 = {}, -- int
    text32b = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mbainst = { -- get getn set
    name = {}, -- text of 32
    int1 = {}, -- int
    text20 = {}, -- text of 20
    int2 = {}, -- int
    dip = {}, -- text of 20
    int3 = {}, -- int
    text32a = {}, -- text of 32
    int4 = {}, -- int
    text32b = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mbainststate = { -- get getn set
    name = {}, -- text of 32
    int1 = {}, -- int
    int2 = {}, -- int
    text20 = {}, -- text of 20
    int3 = {}, -- int
    dip = {}, -- text of 20
    int4 = {}, -- int
    int5 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mbaserialstatis = { -- get getn set
    ifx = {}, -- int
    err = {}, -- unsigned
    count2 = {}, -- unsigned
    count3 = {}, -- unsigned
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mbainststatis = { -- get getn set
    name = {}, -- text of 32
    rx_bytes = {}, -- unsigned
    count2 = {}, -- unsigned
    count3 = {}, -- unsigned
    count4 = {}, -- unsigned
    count5 = {}, -- unsigned
    count6 = {}, -- unsigned
    count7 = {}, -- unsigned
    count8 = {}, -- unsigned
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- hostpdinfo: host protocols
  telnet = { -- set get
    int1 = {}, -- int
    text40 = {}, -- text of 40
    int2 = {}, -- int
    text64 = {}, -- text of 64
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  web = { -- set get
    int1 = {}, -- int
    text40 = {}, -- text of 40
    int2 = {}, -- int
    text64 = {}, -- text of 64
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  snmp_community = { -- set get getn
    int1 = {}, -- int
    text40 = {}, -- text of 40
    int2 = {}, -- int
    text64 = {}, -- text of 64
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  snmp_srv = { -- set get getn
    int1 = {}, -- int
    text40 = {}, -- text of 40
    int2 = {}, -- int
    text64 = {}, -- text of 64
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  account = { -- set get getn
    int1 = {}, -- int
    text40 = {}, -- text of 40
    int2 = {}, -- int
    text64 = {}, -- text of 64
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    int3 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  ntp = { -- set get
    text40 = {}, -- text of 40
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    text65 = {}, -- text of 65
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    text64c = {}, -- text of 64
    text64d = {}, -- text of 64
    int4 = {}, -- int
    real1 = {}, -- real
    real2 = {}, -- real
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  snmp_view = { -- set get getn
    text80 = {}, -- text of 80
    text400 = {}, -- text of 400
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  snmp_group = { -- set get getn
    text80a = {}, -- text of 80
    int1 = {}, -- int
    int2 = {}, -- int
    text80b = {}, -- text of 80
    text80c = {}, -- text of 80
    text80d = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  snmp_user = { -- set get getn
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    int1 = {}, -- int
    text80c = {}, -- text of 80
    int2 = {}, -- int
    text80d = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  snmp_host = { -- set get getn
    int1 = {}, -- int
    text80a = {}, -- text of 80
    int2 = {}, -- int
    text80b = {}, -- text of 80
    int3 = {}, -- int
    int4 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  ssh = { -- set get
    int1 = {}, -- int
    text40 = {}, -- text of 40
    int2 = {}, -- int
    text64 = {}, -- text of 64
    text80a = {}, -- text of 80
    text80b = {}, -- text of 80
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  dhcpdinfo = { -- get set
    text80 = {}, -- text of 80
    text512 = {}, -- text of 512
    oper = {}, -- int
    res = {}, -- int
  },
  sysloginfo = { -- get set
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    value11 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  syslogremote = { -- get set
    int1 = {}, -- int
    text64 = {}, -- text of 64
    int2 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  alert = { -- get set
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- igmpsnpinfo: IGMP snooping
  igmpsnp = { -- get set
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  igmpsnp_mrouter = { -- get getn set
    int1 = {}, -- int
    text40 = {}, -- text of 40
    text32a = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  igmpsnp_static_grp = { -- get getn set
    int1 = {}, -- int
    text40 = {}, -- text of 40
    text32a = {}, -- text of 32
    text32b = {}, -- text of 32
    int2 = {}, -- int
    text32c = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  igmpsnp_grp = { -- get getn
    int1 = {}, -- int
    text40 = {}, -- text of 40
    text32a = {}, -- text of 32
    text32b = {}, -- text of 32
    int2 = {}, -- int
    text32c = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  igmpsnp_fastleave = { -- get set
    int1 = {}, -- int
    int2 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- mstpinfo: spanning tree
  mstp_global = { -- get set
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    value11 = {}, -- int
    text1 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mstp_mst = { -- get set
    text1 = {}, -- text of 40
    value1 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mstp_inst = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 64
    value2 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mstp_if = { -- get getn set
    value1 = {}, -- int
    value2 = {}, -- int
    text1 = {}, -- text of 32
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    value11 = {}, -- int
    value12 = {}, -- int
    value13 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mstp_ifstate = { -- get getn
    value1 = {}, -- int
    value2 = {}, -- int
    text1 = {}, -- text of 32
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    bytes1 = {}, -- hex of 8
    bytes2 = {}, -- hex of 8
    bytes3 = {}, -- hex of 8
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  mstp_reset_if_detect = { -- other
    value1 = {}, -- int
    value2 = {}, -- int
    text1 = {}, -- text of 32
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    bytes1 = {}, -- hex of 8
    bytes2 = {}, -- hex of 8
    bytes3 = {}, -- hex of 8
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- nsmextinfo: NSM extension
  poeconf = { -- get set
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    text1 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  poeifconf = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    text2 = {}, -- text of 40
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    text3 = {}, -- text of 32
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    text4 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  poeinfo = { -- get set
    value1 = {}, -- int
    value2 = {}, -- int
    text1 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  poeifinfo = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    value3 = {}, -- int
    text2 = {}, -- text of 32
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    value11 = {}, -- int
    value12 = {}, -- int
    value13 = {}, -- int
    value14 = {}, -- int
    text3 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmauthmac = { -- get getn set
    value1 = {}, -- int
    mac1 = {}, -- mac of 6
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    text1 = {}, -- text of 32
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmps = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmpsmac = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    mac1 = {}, -- mac of 6
    value3 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmpsstate = { -- get getn
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    value6 = {}, -- int
    value7 = {}, -- int
    value8 = {}, -- int
    value9 = {}, -- int
    value10 = {}, -- int
    mac1 = {}, -- mac of 6
    text2 = {}, -- text of 32
    text3 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmpsmacstate = { -- get getn
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    mac1 = {}, -- mac of 6
    value3 = {}, -- int
    value4 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmipsgif = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    value5 = {}, -- int
    text2 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  nsmipsguser = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    mac1 = {}, -- mac of 6
    text2 = {}, -- text of 32
    value3 = {}, -- int
    text3 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- auth: authentication
  auth_global = { -- get set
    config = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  d1x_pcfg = { -- get getn set
    ifx = {}, -- int
    text40 = {}, -- text of 40
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    int4 = {}, -- int
    int5 = {}, -- int
    int6 = {}, -- int
    int7 = {}, -- int
    int8 = {}, -- int
    int9 = {}, -- int
    int10 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  d1x_pst = { -- get getn
    ifx = {}, -- int
    text40 = {}, -- text of 40
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    int7 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  macauth_pcfg = { -- get getn set
    ifx = {}, -- int
    text40 = {}, -- text of 40
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    int4 = {}, -- int
    int5 = {}, -- int
    int6 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  macauth_user = { -- get getn
    int1 = {}, -- int
    mac = {}, -- mac of 6
    int2 = {}, -- int
    int3 = {}, -- int
    ifx = {}, -- int
    text40 = {}, -- text of 40
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  radglobal = { -- get set
    int1 = {}, -- int
    text64 = {}, -- text of 64
    int2 = {}, -- int
    int3 = {}, -- int
    int4 = {}, -- int
    text40 = {}, -- text of 40
    int5 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  radsrv = { -- get getn set
    ip = {}, -- text of 32
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    text64 = {}, -- text of 64
    int4 = {}, -- int
    int5 = {}, -- int
    text32 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- ribinfo: routing table
  route = { -- get getn set
    text64a = {}, -- text of 64
    text64b = {}, -- text of 64
    text32a = {}, -- text of 32
    int1 = {}, -- int
    int2 = {}, -- int
    text32b = {}, -- text of 32
    text32c = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- vrrpinfo: VRRP
  vrrp_ssconf = { -- get getn set
    vrid = {}, -- int
    ifname = {}, -- text of 40
    text1 = {}, -- text of 32
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    text2 = {}, -- text of 40
    value5 = {}, -- int
    value6 = {}, -- int
    text3 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  vrrp_ssstate = { -- get getn set
    vrid = {}, -- int
    value1 = {}, -- int
    value2 = {}, -- int
    role = {}, -- int
    value3 = {}, -- int
    value4 = {}, -- int
    text1 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  -- sdsminfo: SDSM
  sdsminfo = { -- get set
    text80 = {}, -- text of 80
    text512 = {}, -- text of 512
    int1 = {}, -- int
    int2 = {}, -- int
  },
  -- ipcminfo: IPC ioctl
  ioctlinfo = { -- get getn set
    int1 = {}, -- int
    int2 = {}, -- int
    int3 = {}, -- int
    int4 = {}, -- int
    text32a = {}, -- text of 32
    text32b = {}, -- text of 32
    int5 = {}, -- int
    int6 = {}, -- int
  },
  -- dhcpsnp: DHCP snooping
  dhcpsnp = { -- get set
    text80 = {}, -- text of 80
    text512 = {}, -- text of 512
    int1 = {}, -- int
    int2 = {}, -- int
  },
  -- lpdet: loop detection
  lpdet_global = { -- get set
    value1 = {}, -- int
    value2 = {}, -- int
    value3 = {}, -- int
    text1 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
  lpdet_portinfo = { -- get getn set
    value1 = {}, -- int
    text1 = {}, -- text of 32
    value2 = {}, -- int
    text2 = {}, -- text of 64
    text3 = {}, -- text of 16
    text4 = {}, -- text of 16
    text5 = {}, -- text of 32
    value3 = {}, -- int
    text6 = {}, -- text of 32
    oper = {}, -- int
    res = {}, -- int
  },
}
