-- Wireshark and tshark plug-in: shows every call and reply of the library's
-- fifteen programs with field names and values. For one run:
--
--     tshark -X lua_script:librpc.lua -i lo
--
-- or put it into the folder that Help, About, Folders calls "Personal Lua
-- Plugins"; README.md beside this file has filters. Made by the target `describe`: change the services, or
-- tools/wireshark/dissector.lua, which is the second half of this file.

-- A record is its fields in wire order: { name, kind, units of four bytes }.
local records = {
  ErpsInstEntry = {
    { "text1", "text", 32 },
    { "text2", "text", 32 },
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "text3", "text", 32 },
    { "text4", "text", 32 },
    { "text5", "text", 32 },
    { "text6", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  ErpsRingEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "text2", "text", 32 },
    { "text3", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  ErpsProfEntry = {
    { "text1", "text", 32 },
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  ErpsStateEntry = {
    { "text1", "text", 32 },
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "mac1", "mac", 6 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "mac2", "mac", 6 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "value11", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  lldpcfgEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 64 },
    { "text2", "text", 64 },
    { "text3", "text", 64 },
    { "text4", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  lldpifcfgEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 64 },
    { "text2", "text", 64 },
    { "text3", "text", 64 },
    { "text4", "text", 64 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "value11", "int", 1 },
    { "value12", "int", 1 },
    { "value13", "int", 1 },
    { "text5", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  lldpifneiEntry = {
    { "value1", "int", 1 },
    { "mac1", "mac", 6 },
    { "text1", "text", 64 },
    { "text2", "text", 2000 },
    { "text3", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  lldpifstatEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 64 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  PortInfoEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "text", 80 },
    { "field4", "int", 1 },
    { "field5", "int", 1 },
    { "field6", "text", 32 },
    { "field7", "text", 32 },
    { "field8", "int", 1 },
    { "field9", "int", 1 },
    { "field10", "int", 1 },
    { "field11", "text", 64 },
    { "field12", "text", 64 },
    { "field13", "int", 1 },
    { "field14", "int", 1 },
    { "field15", "int", 1 },
    { "field16", "int", 1 },
    { "field17", "int", 1 },
    { "field18", "int", 1 },
    { "field19", "int", 1 },
    { "field20", "int", 1 },
    { "field21", "int", 1 },
    { "field22", "int", 1 },
    { "field23", "int", 1 },
    { "field24", "int", 1 },
    { "field25", "int", 1 },
    { "field26", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  VlanInfoEntry = {
    { "field1", "int", 1 },
    { "field2", "int", 1 },
    { "field3", "text", 33 },
    { "field4", "int", 1 },
    { "field5", "text", 512 },
    { "field6", "text", 512 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  VlanbitmapInfoEntry = {
    { "field1", "int", 1 },
    { "bit", "text", 684 },
    { "field3", "text", 512 },
    { "field4", "text", 512 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  CvlanInfoEntry = {
    { "field1", "text", 32 },
    { "field2", "int", 1 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "field5", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  sptmodeEntry = {
    { "field1", "int", 1 },
    { "field2", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  if_counters = {
    { "counter0", "int64", 2 },
    { "counter1", "int64", 2 },
    { "counter2", "int64", 2 },
    { "counter3", "int64", 2 },
    { "counter4", "int64", 2 },
    { "counter5", "int64", 2 },
    { "counter6", "int64", 2 },
    { "counter7", "int64", 2 },
    { "counter8", "int64", 2 },
    { "counter9", "int64", 2 },
    { "counter10", "int64", 2 },
    { "counter11", "int64", 2 },
    { "counter12", "int64", 2 },
    { "counter13", "int64", 2 },
    { "counter14", "int64", 2 },
    { "counter15", "int64", 2 },
    { "counter16", "int64", 2 },
    { "counter17", "int64", 2 },
    { "counter18", "int64", 2 },
    { "counter19", "int64", 2 },
    { "counter20", "int64", 2 },
    { "counter21", "int64", 2 },
    { "counter22", "int64", 2 },
    { "counter23", "int64", 2 },
    { "counter24", "int64", 2 },
    { "counter25", "int64", 2 },
    { "counter26", "int64", 2 },
    { "counter27", "int64", 2 },
    { "counter28", "int64", 2 },
    { "counter29", "int64", 2 },
    { "counter30", "int64", 2 },
    { "counter31", "int64", 2 },
    { "counter32", "int64", 2 },
    { "counter33", "int64", 2 },
    { "counter34", "int64", 2 },
    { "counter35", "int64", 2 },
    { "counter36", "int64", 2 },
    { "counter37", "int64", 2 },
    { "counter38", "int64", 2 },
    { "counter39", "int64", 2 },
    { "counter40", "int64", 2 },
    { "counter41", "int64", 2 },
    { "counter42", "int64", 2 },
    { "counter43", "int64", 2 },
    { "counter44", "int64", 2 },
    { "counter45", "int64", 2 },
    { "counter46", "int64", 2 },
    { "counter47", "int64", 2 },
    { "counter48", "int64", 2 },
    { "counter49", "int64", 2 },
    { "counter50", "int64", 2 },
    { "counter51", "int64", 2 },
    { "counter52", "int64", 2 },
    { "counter53", "int64", 2 },
  },
  PortStatEntry = {
    { "ifx", "int", 1 },
    { "field2", "int", 1 },
    { "name", "text", 32 },
    { "counter0", "int64", 2 },
    { "counter1", "int64", 2 },
    { "counter2", "int64", 2 },
    { "counter3", "int64", 2 },
    { "counter4", "int64", 2 },
    { "counter5", "int64", 2 },
    { "counter6", "uint64", 2 },
    { "counter7", "int64", 2 },
    { "counter8", "int64", 2 },
    { "counter9", "uint64", 2 },
    { "counter10", "int64", 2 },
    { "counter11", "int64", 2 },
    { "counter12", "int64", 2 },
    { "counter13", "uint64", 2 },
    { "counter14", "int64", 2 },
    { "counter15", "int64", 2 },
    { "counter16", "int64", 2 },
    { "counter17", "int64", 2 },
    { "counter18", "int64", 2 },
    { "counter19", "int64", 2 },
    { "counter20", "int64", 2 },
    { "counter21", "int64", 2 },
    { "counter22", "int64", 2 },
    { "counter23", "int64", 2 },
    { "counter24", "int64", 2 },
    { "counter25", "int64", 2 },
    { "counter26", "uint64", 2 },
    { "counter27", "uint64", 2 },
    { "counter28", "int64", 2 },
    { "counter29", "uint64", 2 },
    { "counter30", "int64", 2 },
    { "counter31", "int64", 2 },
    { "counter32", "int64", 2 },
    { "counter33", "int64", 2 },
    { "counter34", "int64", 2 },
    { "counter35", "uint64", 2 },
    { "counter36", "int64", 2 },
    { "counter37", "uint64", 2 },
    { "counter38", "int64", 2 },
    { "counter39", "int64", 2 },
    { "counter40", "uint64", 2 },
    { "counter41", "int64", 2 },
    { "counter42", "uint64", 2 },
    { "counter43", "int64", 2 },
    { "counter44", "int64", 2 },
    { "counter45", "int64", 2 },
    { "counter46", "int64", 2 },
    { "counter47", "int64", 2 },
    { "counter48", "int64", 2 },
    { "counter49", "int64", 2 },
    { "counter50", "int64", 2 },
    { "counter51", "int64", 2 },
    { "counter52", "int64", 2 },
    { "counter53", "int64", 2 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  vlanbitmapEntry = {
    { "bit", "text", 684 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  ifrate_s = {
    { "rate0", "int64", 2 },
    { "rate1", "int64", 2 },
    { "rate2", "int64", 2 },
    { "rate3", "int64", 2 },
    { "rate4", "int64", 2 },
    { "rate5", "int64", 2 },
  },
  PortRateEntry = {
    { "ifx", "int", 1 },
    { "field2", "int", 1 },
    { "name", "text", 32 },
    { "rate0", "int64", 2 },
    { "rate1", "int64", 2 },
    { "rate2", "int64", 2 },
    { "rate3", "int64", 2 },
    { "rate4", "int64", 2 },
    { "rate5", "int64", 2 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  PMInfoEntry = {
    { "sid", "int", 1 },
    { "mode", "int", 1 },
    { "desc", "text", 36 },
    { "src", "text", 32 },
    { "src_vlan", "text", 512 },
    { "to", "text", 32 },
    { "dir", "int", 1 },
    { "to_switch", "int", 1 },
    { "rspan_vlan", "int", 1 },
    { "state", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  ratelimitEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "in_cir", "int", 1 },
    { "in_cbs", "int", 1 },
    { "out_cir", "int", 1 },
    { "out_cbs", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  stormcontrolEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "ratelimit_type", "int", 1 },
    { "level", "int", 1 },
    { "fraction", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  aclEntry = {
    { "name", "text", 70 },
    { "field2", "int", 1 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "field5", "int", 1 },
    { "field6", "int", 1 },
    { "field7", "text", 70 },
    { "field8", "int", 1 },
    { "field9", "int", 1 },
    { "field10", "text", 20 },
    { "src", "text", 40 },
    { "field12", "text", 40 },
    { "field13", "text", 20 },
    { "field14", "text", 40 },
    { "field15", "text", 40 },
    { "field16", "text", 20 },
    { "field17", "int", 1 },
    { "field18", "int", 1 },
    { "count", "uint64", 2 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  aclifEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "in", "text", 70 },
    { "field4", "text", 70 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  qoscfgEntry = {
    { "status", "int", 1 },
    { "alg", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  queueweightEntry = {
    { "map", "ints", 8 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  cos2dscpEntry = {
    { "map", "ints", 8 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  cos2queueEntry = {
    { "map", "ints", 8 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dscp2cosEntry = {
    { "map", "ints", 64 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dscp2dscpEntry = {
    { "map", "ints", 64 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dscp2queueEntry = {
    { "map", "ints", 64 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  classEntry = {
    { "name", "text", 70 },
    { "matchtype", "int", 1 },
    { "field3", "text", 120 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  policyEntry = {
    { "name", "text", 70 },
    { "class", "text", 70 },
    { "field3", "int", 1 },
    { "field4", "text", 120 },
    { "field5", "int", 1 },
    { "field6", "int", 1 },
    { "field7", "int", 1 },
    { "field8", "int", 1 },
    { "field9", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  qosifEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "in", "text", 70 },
    { "field6", "text", 70 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  qosifcfgEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "list1", "ints", 8 },
    { "list2", "ints", 8 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  fdbParam = {
    { "field1", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  fdbEntry = {
    { "mac", "mac", 6 },
    { "field2", "int", 1 },
    { "field3", "text", 32 },
    { "field4", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  agEntry = {
    { "field1", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  agsysEntry = {
    { "field1", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  stpifstatusEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  vlanvpnEntry = {
    { "field1", "text", 40 },
    { "field2", "int", 1 },
    { "field3", "text", 512 },
    { "field4", "text", 512 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  vlanvpnifEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "field5", "text", 32 },
    { "field6", "text", 32 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  sviEntry = {
    { "field1", "int", 1 },
    { "name", "text", 32 },
    { "field3", "text", 20 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  arpEntry = {
    { "field1", "text", 64 },
    { "field2", "text", 64 },
    { "field3", "text", 32 },
    { "field4", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  opticalEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "field5", "int", 1 },
    { "field6", "int", 1 },
    { "field7", "int", 1 },
    { "field8", "int", 1 },
    { "field9", "int", 1 },
    { "field10", "int", 1 },
    { "field11", "int", 1 },
    { "field12", "int", 1 },
    { "field13", "int", 1 },
    { "field14", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  opticaldetailEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "text", 32 },
    { "field5", "text", 32 },
    { "field6", "text", 32 },
    { "field7", "int", 1 },
    { "field8", "int", 1 },
    { "field9", "int", 1 },
    { "field10", "int", 1 },
    { "field11", "int", 1 },
    { "field12", "int", 1 },
    { "field13", "int", 1 },
    { "field14", "int", 1 },
    { "field15", "text", 32 },
    { "field16", "int", 1 },
    { "alarm_len", "int", 1 },
    { "alarm", "hex", 32 },
    { "field19", "text", 32 },
    { "field20", "text", 32 },
    { "field21", "text", 32 },
    { "field22", "text", 32 },
    { "field23", "text", 32 },
    { "field24", "text", 32 },
    { "field25", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmEntry = {
    { "field1", "text", 80 },
    { "field2", "text", 800 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  cabledetectEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "field5", "int", 1 },
    { "field6", "int", 1 },
    { "field7", "text", 16 },
    { "field8", "text", 16 },
    { "field9", "text", 16 },
    { "field10", "text", 16 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  errdisableEntry = {
    { "field1", "int", 1 },
    { "field2", "int", 1 },
    { "field3", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  errdisportinfoEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dosEntry = {
    { "ifx", "int", 1 },
    { "name", "text", 32 },
    { "field3", "int", 1 },
    { "field4", "int", 1 },
    { "field5", "int", 1 },
    { "field6", "int", 1 },
    { "count1", "uint64", 2 },
    { "count2", "uint64", 2 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dnsEntry = {
    { "field1", "text", 65 },
    { "field2", "text", 64 },
    { "field3", "text", 64 },
    { "field4", "int", 1 },
    { "text", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  DevInfoEntry = {
    { "text32a", "text", 32 },
    { "text32b", "text", 32 },
    { "mac", "mac", 6 },
    { "text32c", "text", 32 },
    { "text32d", "text", 32 },
    { "text32e", "text", 32 },
    { "saveconfig", "int", 1 },
    { "int1", "uint", 1 },
    { "hostname", "text", 64 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  apiEntry = {
    { "int1", "int", 1 },
    { "int2", "int", 1 },
  },
  devcapEntry = {
    { "text64a", "text", 64 },
    { "text64b", "text", 64 },
    { "int1", "int", 1 },
    { "text64c", "text", 64 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  libconfEntry = {
    { "text64a", "text", 64 },
    { "text64b", "text", 64 },
    { "int1", "int", 1 },
    { "text64c", "text", 64 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  accesslogEntry = {
    { "text64a", "text", 64 },
    { "text64b", "text", 64 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mgmtvlanEntry = {
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "ip", "text", 20 },
    { "gateway", "text", 20 },
    { "int3", "int", 1 },
    { "text64a", "text", 64 },
    { "text64b", "text", 64 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  portintfmodeEntry = {
    { "ifx", "int", 1 },
    { "mode_flag", "int", 1 },
    { "mode", "int", 1 },
    { "int4", "int", 1 },
    { "int5", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dyinggaspEntry = {
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  portinbandanEntry = {
    { "ifx", "int", 1 },
    { "state", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mbaserialEntry = {
    { "ifx", "int", 1 },
    { "brate", "int", 1 },
    { "int3", "int", 1 },
    { "text32a", "text", 32 },
    { "int4", "int", 1 },
    { "text32b", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mbainstEntry = {
    { "name", "text", 32 },
    { "int1", "int", 1 },
    { "text20", "text", 20 },
    { "int2", "int", 1 },
    { "dip", "text", 20 },
    { "int3", "int", 1 },
    { "text32a", "text", 32 },
    { "int4", "int", 1 },
    { "text32b", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mbainststateEntry = {
    { "name", "text", 32 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "text20", "text", 20 },
    { "int3", "int", 1 },
    { "dip", "text", 20 },
    { "int4", "int", 1 },
    { "int5", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mbaserialstatisEntry = {
    { "ifx", "int", 1 },
    { "err", "uint", 1 },
    { "count2", "uint", 1 },
    { "count3", "uint", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mbainststatisEntry = {
    { "name", "text", 32 },
    { "rx_bytes", "uint", 1 },
    { "count2", "uint", 1 },
    { "count3", "uint", 1 },
    { "count4", "uint", 1 },
    { "count5", "uint", 1 },
    { "count6", "uint", 1 },
    { "count7", "uint", 1 },
    { "count8", "uint", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  hostpdInfoEntry = {
    { "int1", "int", 1 },
    { "text40", "text", 40 },
    { "int2", "int", 1 },
    { "text64", "text", 64 },
    { "text80a", "text", 80 },
    { "text80b", "text", 80 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  accountEntry = {
    { "int1", "int", 1 },
    { "text40", "text", 40 },
    { "int2", "int", 1 },
    { "text64", "text", 64 },
    { "text80a", "text", 80 },
    { "text80b", "text", 80 },
    { "int3", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  tmEntry = {
    { "text40", "text", 40 },
    { "text64a", "text", 64 },
    { "text64b", "text", 64 },
    { "text65", "text", 65 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "text64c", "text", 64 },
    { "text64d", "text", 64 },
    { "int4", "int", 1 },
    { "real1", "double", 2 },
    { "real2", "double", 2 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  snmpviewEntry = {
    { "text80", "text", 80 },
    { "text400", "text", 400 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  snmpgroupEntry = {
    { "text80a", "text", 80 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "text80b", "text", 80 },
    { "text80c", "text", 80 },
    { "text80d", "text", 80 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  snmpuserEntry = {
    { "text80a", "text", 80 },
    { "text80b", "text", 80 },
    { "int1", "int", 1 },
    { "text80c", "text", 80 },
    { "int2", "int", 1 },
    { "text80d", "text", 80 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  snmphostEntry = {
    { "int1", "int", 1 },
    { "text80a", "text", 80 },
    { "int2", "int", 1 },
    { "text80b", "text", 80 },
    { "int3", "int", 1 },
    { "int4", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  dhcpdinfoEntry = {
    { "text80", "text", 80 },
    { "text512", "text", 512 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  syslogInfoEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "value11", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  syslogRemoteEntry = {
    { "int1", "int", 1 },
    { "text64", "text", 64 },
    { "int2", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  alertEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  igspGlobalEntry = {
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  igspMrouterEntry = {
    { "int1", "int", 1 },
    { "text40", "text", 40 },
    { "text32a", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  igspGrpEntry = {
    { "int1", "int", 1 },
    { "text40", "text", 40 },
    { "text32a", "text", 32 },
    { "text32b", "text", 32 },
    { "int2", "int", 1 },
    { "text32c", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  igspifEntry = {
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mstpglobalEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "value11", "int", 1 },
    { "text1", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mstpmstEntry = {
    { "text1", "text", 40 },
    { "value1", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mstpinstEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 64 },
    { "value2", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mstpifEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "text1", "text", 32 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "value11", "int", 1 },
    { "value12", "int", 1 },
    { "value13", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  mstpifstateEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "text1", "text", 32 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "bytes1", "hex", 8 },
    { "bytes2", "hex", 8 },
    { "bytes3", "hex", 8 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  poeConfEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "text1", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  poeifConfEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "text2", "text", 40 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "text3", "text", 32 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "text4", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  poeInfoEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "text1", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  poeifInfoEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "text2", "text", 32 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "value11", "int", 1 },
    { "value12", "int", 1 },
    { "value13", "int", 1 },
    { "value14", "int", 1 },
    { "text3", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmauthmacEntry = {
    { "value1", "int", 1 },
    { "mac1", "mac", 6 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "text1", "text", 32 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmpsEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmpsmacEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "mac1", "mac", 6 },
    { "value3", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmpsstateEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "value7", "int", 1 },
    { "value8", "int", 1 },
    { "value9", "int", 1 },
    { "value10", "int", 1 },
    { "mac1", "mac", 6 },
    { "text2", "text", 32 },
    { "text3", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmpsmacstateEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "mac1", "mac", 6 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmipsgifEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "value5", "int", 1 },
    { "text2", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  nsmipsguserEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "mac1", "mac", 6 },
    { "text2", "text", 32 },
    { "value3", "int", 1 },
    { "text3", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  authGlobalEntry = {
    { "config", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  d1xPcfgEntry = {
    { "ifx", "int", 1 },
    { "text40", "text", 40 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "int4", "int", 1 },
    { "int5", "int", 1 },
    { "int6", "int", 1 },
    { "int7", "int", 1 },
    { "int8", "int", 1 },
    { "int9", "int", 1 },
    { "int10", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  d1xPstEntry = {
    { "ifx", "int", 1 },
    { "text40", "text", 40 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "int4", "int", 1 },
    { "int5", "int", 1 },
    { "int6", "int", 1 },
    { "int7", "int", 1 },
    { "int8", "int", 1 },
    { "int9", "int", 1 },
    { "int10", "int", 1 },
    { "int11", "int", 1 },
    { "int12", "int", 1 },
    { "int13", "int", 1 },
    { "int14", "int", 1 },
    { "int15", "int", 1 },
    { "int16", "int", 1 },
    { "int17", "int", 1 },
    { "int18", "int", 1 },
    { "int19", "int", 1 },
    { "int20", "int", 1 },
    { "int21", "int", 1 },
    { "int22", "int", 1 },
    { "int23", "int", 1 },
    { "int24", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  macauthPcfgEntry = {
    { "ifx", "int", 1 },
    { "text40", "text", 40 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "int4", "int", 1 },
    { "int5", "int", 1 },
    { "int6", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  macauthUserEntry = {
    { "int1", "int", 1 },
    { "mac", "mac", 6 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "ifx", "int", 1 },
    { "text40", "text", 40 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  radglobalEntry = {
    { "int1", "int", 1 },
    { "text64", "text", 64 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "int4", "int", 1 },
    { "text40", "text", 40 },
    { "int5", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  radsrvEntry = {
    { "ip", "text", 32 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "text64", "text", 64 },
    { "int4", "int", 1 },
    { "int5", "int", 1 },
    { "text32", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  routeEntry = {
    { "text64a", "text", 64 },
    { "text64b", "text", 64 },
    { "text32a", "text", 32 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "text32b", "text", 32 },
    { "text32c", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  vrrp_ssconfEntry = {
    { "vrid", "int", 1 },
    { "ifname", "text", 40 },
    { "text1", "text", 32 },
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "text2", "text", 40 },
    { "value5", "int", 1 },
    { "value6", "int", 1 },
    { "text3", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  vrrp_ssstateEntry = {
    { "vrid", "int", 1 },
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "role", "int", 1 },
    { "value3", "int", 1 },
    { "value4", "int", 1 },
    { "text1", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  sdsminfoEntry = {
    { "text80", "text", 80 },
    { "text512", "text", 512 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
  },
  ioctlEntry = {
    { "int1", "int", 1 },
    { "int2", "int", 1 },
    { "int3", "int", 1 },
    { "int4", "int", 1 },
    { "text32a", "text", 32 },
    { "text32b", "text", 32 },
    { "int5", "int", 1 },
    { "int6", "int", 1 },
  },
  dhcpsnpEntry = {
    { "text80", "text", 80 },
    { "text512", "text", 512 },
    { "int1", "int", 1 },
    { "int2", "int", 1 },
  },
  lpdetglobalEntry = {
    { "value1", "int", 1 },
    { "value2", "int", 1 },
    { "value3", "int", 1 },
    { "text1", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
  lpdetportinfoEntry = {
    { "value1", "int", 1 },
    { "text1", "text", 32 },
    { "value2", "int", 1 },
    { "text2", "text", 64 },
    { "text3", "text", 16 },
    { "text4", "text", 16 },
    { "text5", "text", 32 },
    { "value3", "int", 1 },
    { "text6", "text", 32 },
    { "oper", "int", 1 },
    { "res", "int", 1 },
  },
}

-- A procedure's request and reply are records. Without a request the call has
-- no body, without a reply the daemon answers with an int status.
local version = 1
local programs = {
  [50005] = {
    name = "erpsinfo",
    title = "ring protection and LLDP",
    procedures = {
      [1] = { name = "oltmib_erpsinst_get_1", table = "erpsinst", request = "ErpsInstEntry", reply = "ErpsInstEntry" },
      [2] = { name = "oltmib_erpsinst_getn_1", table = "erpsinst", request = "ErpsInstEntry", reply = "ErpsInstEntry" },
      [3] = { name = "oltmib_erpsinst_set_1", table = "erpsinst", request = "ErpsInstEntry" },
      [4] = { name = "oltmib_erpsring_get_1", table = "erpsring", request = "ErpsRingEntry", reply = "ErpsRingEntry" },
      [5] = { name = "oltmib_erpsring_getn_1", table = "erpsring", request = "ErpsRingEntry", reply = "ErpsRingEntry" },
      [6] = { name = "oltmib_erpsring_set_1", table = "erpsring", request = "ErpsRingEntry" },
      [7] = { name = "oltmib_erpsprof_get_1", table = "erpsprof", request = "ErpsProfEntry", reply = "ErpsProfEntry" },
      [8] = { name = "oltmib_erpsprof_getn_1", table = "erpsprof", request = "ErpsProfEntry", reply = "ErpsProfEntry" },
      [9] = { name = "oltmib_erpsprof_set_1", table = "erpsprof", request = "ErpsProfEntry" },
      [12] = { name = "oltmib_erpsstate_getn_1", table = "erpsstate", request = "ErpsStateEntry", reply = "ErpsStateEntry" },
      [13] = { name = "oltmib_erpsstate_set_1", table = "erpsstate", request = "ErpsStateEntry" },
      [21] = { name = "oltmib_lldpcfg_get_1", table = "lldpcfg", request = "lldpcfgEntry", reply = "lldpcfgEntry" },
      [22] = { name = "oltmib_lldpcfg_set_1", table = "lldpcfg", request = "lldpcfgEntry" },
      [23] = { name = "oltmib_lldpifcfg_get_1", table = "lldpifcfg", request = "lldpifcfgEntry", reply = "lldpifcfgEntry" },
      [24] = { name = "oltmib_lldpifcfg_getn_1", table = "lldpifcfg", request = "lldpifcfgEntry", reply = "lldpifcfgEntry" },
      [25] = { name = "oltmib_lldpifcfg_set_1", table = "lldpifcfg", request = "lldpifcfgEntry" },
      [26] = { name = "oltmib_lldpifnei_get_1", table = "lldpifnei", request = "lldpifneiEntry", reply = "lldpifneiEntry" },
      [27] = { name = "oltmib_lldpifnei_getn_1", table = "lldpifnei", request = "lldpifneiEntry", reply = "lldpifneiEntry" },
      [29] = { name = "oltmib_lldpifstat_get_1", table = "lldpifstat", request = "lldpifstatEntry", reply = "lldpifstatEntry" },
      [30] = { name = "oltmib_lldpifstat_getn_1", table = "lldpifstat", request = "lldpifstatEntry", reply = "lldpifstatEntry" },
      [31] = { name = "oltmib_lldpifstat_set_1", table = "lldpifstat", request = "lldpifstatEntry" },
    },
  },
  [50004] = {
    name = "nsminfo",
    title = "network service module",
    procedures = {
      [1] = { name = "oltmib_portinfo_get_1", table = "portinfo", request = "PortInfoEntry", reply = "PortInfoEntry" },
      [2] = { name = "oltmib_portinfo_getn_1", table = "portinfo", request = "PortInfoEntry", reply = "PortInfoEntry" },
      [3] = { name = "oltmib_portinfo_set_1", table = "portinfo", request = "PortInfoEntry" },
      [4] = { name = "oltmib_vlaninfo_get_1", table = "vlaninfo", request = "VlanInfoEntry", reply = "VlanInfoEntry" },
      [5] = { name = "oltmib_vlaninfo_getn_1", table = "vlaninfo", request = "VlanInfoEntry", reply = "VlanInfoEntry" },
      [6] = { name = "oltmib_vlaninfo_set_1", table = "vlaninfo", request = "VlanInfoEntry" },
      [148] = { name = "oltmib_vlanbitmapinfo_set_1", table = "vlanbitmapinfo", request = "VlanbitmapInfoEntry" },
      [13] = { name = "oltmib_cvlaninfo_get_1", table = "cvlaninfo", request = "CvlanInfoEntry", reply = "CvlanInfoEntry" },
      [14] = { name = "oltmib_cvlaninfo_getn_1", table = "cvlaninfo", request = "CvlanInfoEntry", reply = "CvlanInfoEntry" },
      [15] = { name = "oltmib_cvlaninfo_set_1", table = "cvlaninfo", request = "CvlanInfoEntry" },
      [16] = { name = "oltmib_sptmode_get_1", table = "sptmode", request = "sptmodeEntry", reply = "sptmodeEntry" },
      [17] = { name = "oltmib_sptmode_set_1", table = "sptmode", request = "sptmodeEntry" },
      [10] = { name = "oltmib_portstat_get_1", table = "portstat", request = "PortStatEntry", reply = "PortStatEntry" },
      [11] = { name = "oltmib_portstat_getn_1", table = "portstat", request = "PortStatEntry", reply = "PortStatEntry" },
      [12] = { name = "oltmib_portstat_set_1", table = "portstat", request = "PortStatEntry" },
      [18] = { name = "oltmib_cvlan_table_get_1", table = "cvlan_table", reply = "vlanbitmapEntry" },
      [19] = { name = "oltmib_p2p_svlan_table_get_1", table = "p2p_svlan_table", reply = "vlanbitmapEntry" },
      [20] = { name = "oltmib_portrate_get_1", table = "portrate", request = "PortRateEntry", reply = "PortRateEntry" },
      [21] = { name = "oltmib_portrate_getn_1", table = "portrate", request = "PortRateEntry", reply = "PortRateEntry" },
      [7] = { name = "oltmib_pminfo_get_1", table = "pminfo", request = "PMInfoEntry", reply = "PMInfoEntry" },
      [8] = { name = "oltmib_pminfo_getn_1", table = "pminfo", request = "PMInfoEntry", reply = "PMInfoEntry" },
      [9] = { name = "oltmib_pminfo_set_1", table = "pminfo", request = "PMInfoEntry" },
      [22] = { name = "oltmib_ratelimitinfo_get_1", table = "ratelimitinfo", request = "ratelimitEntry", reply = "ratelimitEntry" },
      [23] = { name = "oltmib_ratelimitinfo_getn_1", table = "ratelimitinfo", request = "ratelimitEntry", reply = "ratelimitEntry" },
      [24] = { name = "oltmib_ratelimitinfo_set_1", table = "ratelimitinfo", request = "ratelimitEntry" },
      [25] = { name = "oltmib_stormcontrolinfo_get_1", table = "stormcontrolinfo", request = "stormcontrolEntry", reply = "stormcontrolEntry" },
      [26] = { name = "oltmib_stormcontrolinfo_getn_1", table = "stormcontrolinfo", request = "stormcontrolEntry", reply = "stormcontrolEntry" },
      [27] = { name = "oltmib_stormcontrolinfo_set_1", table = "stormcontrolinfo", request = "stormcontrolEntry" },
      [33] = { name = "oltmib_acl_get_1", table = "acl", request = "aclEntry", reply = "aclEntry" },
      [34] = { name = "oltmib_acl_getn_1", table = "acl", request = "aclEntry", reply = "aclEntry" },
      [35] = { name = "oltmib_acl_set_1", table = "acl", request = "aclEntry" },
      [36] = { name = "oltmib_aclif_get_1", table = "aclif", request = "aclifEntry", reply = "aclifEntry" },
      [37] = { name = "oltmib_aclif_getn_1", table = "aclif", request = "aclifEntry", reply = "aclifEntry" },
      [38] = { name = "oltmib_aclif_set_1", table = "aclif", request = "aclifEntry" },
      [40] = { name = "oltmib_qoscfg_get_1", table = "qoscfg", request = "qoscfgEntry", reply = "qoscfgEntry" },
      [41] = { name = "oltmib_qoscfg_set_1", table = "qoscfg", request = "qoscfgEntry" },
      [42] = { name = "oltmib_queueweight_get_1", table = "queueweight", request = "queueweightEntry", reply = "queueweightEntry" },
      [43] = { name = "oltmib_queueweight_set_1", table = "queueweight", request = "queueweightEntry" },
      [44] = { name = "oltmib_cos2dscp_get_1", table = "cos2dscp", request = "cos2dscpEntry", reply = "cos2dscpEntry" },
      [45] = { name = "oltmib_cos2dscp_set_1", table = "cos2dscp", request = "cos2dscpEntry" },
      [46] = { name = "oltmib_cos2queue_get_1", table = "cos2queue", request = "cos2queueEntry", reply = "cos2queueEntry" },
      [47] = { name = "oltmib_cos2queue_set_1", table = "cos2queue", request = "cos2queueEntry" },
      [48] = { name = "oltmib_dscp2cos_get_1", table = "dscp2cos", request = "dscp2cosEntry", reply = "dscp2cosEntry" },
      [49] = { name = "oltmib_dscp2cos_set_1", table = "dscp2cos", request = "dscp2cosEntry" },
      [50] = { name = "oltmib_dscp2dscp_get_1", table = "dscp2dscp", request = "dscp2dscpEntry", reply = "dscp2dscpEntry" },
      [51] = { name = "oltmib_dscp2dscp_set_1", table = "dscp2dscp", request = "dscp2dscpEntry" },
      [52] = { name = "oltmib_dscp2queue_get_1", table = "dscp2queue", request = "dscp2queueEntry", reply = "dscp2queueEntry" },
      [53] = { name = "oltmib_dscp2queue_set_1", table = "dscp2queue", request = "dscp2queueEntry" },
      [54] = { name = "oltmib_class_get_1", table = "class", request = "classEntry", reply = "classEntry" },
      [55] = { name = "oltmib_class_getn_1", table = "class", request = "classEntry", reply = "classEntry" },
      [56] = { name = "oltmib_class_set_1", table = "class", request = "classEntry" },
      [57] = { name = "oltmib_policy_get_1", table = "policy", request = "policyEntry", reply = "policyEntry" },
      [58] = { name = "oltmib_policy_getn_1", table = "policy", request = "policyEntry", reply = "policyEntry" },
      [59] = { name = "oltmib_policy_set_1", table = "policy", request = "policyEntry" },
      [110] = { name = "oltmib_qostrustif_get_1", table = "qostrustif", request = "qosifEntry", reply = "qosifEntry" },
      [111] = { name = "oltmib_qostrustif_getn_1", table = "qostrustif", request = "qosifEntry", reply = "qosifEntry" },
      [112] = { name = "oltmib_qostrustif_set_1", table = "qostrustif", request = "qosifEntry" },
      [113] = { name = "oltmib_qospolicyif_get_1", table = "qospolicyif", request = "qosifEntry", reply = "qosifEntry" },
      [114] = { name = "oltmib_qospolicyif_getn_1", table = "qospolicyif", request = "qosifEntry", reply = "qosifEntry" },
      [115] = { name = "oltmib_qospolicyif_set_1", table = "qospolicyif", request = "qosifEntry" },
      [116] = { name = "oltmib_qosifcfg_get_1", table = "qosifcfg", request = "qosifcfgEntry", reply = "qosifcfgEntry" },
      [117] = { name = "oltmib_qosifcfg_getn_1", table = "qosifcfg", request = "qosifcfgEntry", reply = "qosifcfgEntry" },
      [118] = { name = "oltmib_qosifcfg_set_1", table = "qosifcfg", request = "qosifcfgEntry" },
      [63] = { name = "oltmib_fdbparam_get_1", table = "fdbparam", request = "fdbParam", reply = "fdbParam" },
      [64] = { name = "oltmib_fdbparam_set_1", table = "fdbparam", request = "fdbParam" },
      [149] = { name = "oltmib_fdb_dynamic_getn_1", table = "fdb_dynamic", request = "fdbEntry", reply = "fdbEntry" },
      [65] = { name = "oltmib_fdb_get_1", table = "fdb", request = "fdbEntry", reply = "fdbEntry" },
      [66] = { name = "oltmib_fdb_getn_1", table = "fdb", request = "fdbEntry", reply = "fdbEntry" },
      [67] = { name = "oltmib_fdb_set_1", table = "fdb", request = "fdbEntry" },
      [68] = { name = "oltmib_ag_get_1", table = "ag", request = "agEntry", reply = "agEntry" },
      [69] = { name = "oltmib_ag_getn_1", table = "ag", request = "agEntry", reply = "agEntry" },
      [70] = { name = "oltmib_ag_set_1", table = "ag", request = "agEntry" },
      [76] = { name = "oltmib_agsys_get_1", table = "agsys", request = "agsysEntry", reply = "agsysEntry" },
      [77] = { name = "oltmib_agsys_set_1", table = "agsys", request = "agsysEntry" },
      [71] = { name = "oltmib_stpifstatus_get_1", table = "stpifstatus", request = "stpifstatusEntry", reply = "stpifstatusEntry" },
      [72] = { name = "oltmib_stpifstatus_getn_1", table = "stpifstatus", request = "stpifstatusEntry", reply = "stpifstatusEntry" },
      [73] = { name = "oltmib_stpifstatus_set_1", table = "stpifstatus", request = "stpifstatusEntry" },
      [81] = { name = "oltmib_vlanvpn_get_1", table = "vlanvpn", request = "vlanvpnEntry", reply = "vlanvpnEntry" },
      [82] = { name = "oltmib_vlanvpn_getn_1", table = "vlanvpn", request = "vlanvpnEntry", reply = "vlanvpnEntry" },
      [83] = { name = "oltmib_vlanvpn_set_1", table = "vlanvpn", request = "vlanvpnEntry" },
      [84] = { name = "oltmib_vlanvpnif_get_1", table = "vlanvpnif", request = "vlanvpnifEntry", reply = "vlanvpnifEntry" },
      [85] = { name = "oltmib_vlanvpnif_getn_1", table = "vlanvpnif", request = "vlanvpnifEntry", reply = "vlanvpnifEntry" },
      [86] = { name = "oltmib_vlanvpnif_set_1", table = "vlanvpnif", request = "vlanvpnifEntry" },
      [87] = { name = "oltmib_svi_get_1", table = "svi", request = "sviEntry", reply = "sviEntry" },
      [88] = { name = "oltmib_svi_getn_1", table = "svi", request = "sviEntry", reply = "sviEntry" },
      [89] = { name = "oltmib_svi_set_1", table = "svi", request = "sviEntry" },
      [91] = { name = "oltmib_arp_get_1", table = "arp", request = "arpEntry", reply = "arpEntry" },
      [92] = { name = "oltmib_arp_getn_1", table = "arp", request = "arpEntry", reply = "arpEntry" },
      [93] = { name = "oltmib_arp_set_1", table = "arp", request = "arpEntry" },
      [94] = { name = "oltmib_sarp_get_1", table = "sarp", request = "arpEntry", reply = "arpEntry" },
      [95] = { name = "oltmib_sarp_getn_1", table = "sarp", request = "arpEntry", reply = "arpEntry" },
      [96] = { name = "oltmib_sarp_set_1", table = "sarp", request = "arpEntry" },
      [100] = { name = "oltmib_optical_get_1", table = "optical", request = "opticalEntry", reply = "opticalEntry" },
      [101] = { name = "oltmib_optical_getn_1", table = "optical", request = "opticalEntry", reply = "opticalEntry" },
      [102] = { name = "oltmib_optical_set_1", table = "optical", request = "opticalEntry" },
      [103] = { name = "oltmib_opticaldetail_get_1", table = "opticaldetail", request = "opticaldetailEntry", reply = "opticaldetailEntry" },
      [104] = { name = "oltmib_opticaldetail_getn_1", table = "opticaldetail", request = "opticaldetailEntry", reply = "opticaldetailEntry" },
      [105] = { name = "oltmib_opticaldetail_set_1", table = "opticaldetail", request = "opticaldetailEntry" },
      [120] = { name = "oltmib_nsm_get_1", table = "nsm", request = "nsmEntry", reply = "nsmEntry" },
      [121] = { name = "oltmib_nsm_set_1", table = "nsm", request = "nsmEntry" },
      [124] = { name = "oltmib_cabledetect_get_1", table = "cabledetect", request = "cabledetectEntry", reply = "cabledetectEntry" },
      [125] = { name = "oltmib_cabledetect_getn_1", table = "cabledetect", request = "cabledetectEntry", reply = "cabledetectEntry" },
      [126] = { name = "oltmib_cabledetect_set_1", table = "cabledetect", request = "cabledetectEntry" },
      [130] = { name = "oltmib_errdisable_get_1", table = "errdisable", request = "errdisableEntry", reply = "errdisableEntry" },
      [131] = { name = "oltmib_errdisable_set_1", table = "errdisable", request = "errdisableEntry" },
      [133] = { name = "oltmib_errdisportinfo_get_1", table = "errdisportinfo", request = "errdisportinfoEntry", reply = "errdisportinfoEntry" },
      [134] = { name = "oltmib_errdisportinfo_getn_1", table = "errdisportinfo", request = "errdisportinfoEntry", reply = "errdisportinfoEntry" },
      [135] = { name = "oltmib_errdisportinfo_set_1", table = "errdisportinfo", request = "errdisportinfoEntry" },
      [140] = { name = "oltmib_dosglobal_get_1", table = "dosglobal", request = "dosEntry", reply = "dosEntry" },
      [142] = { name = "oltmib_dosglobal_set_1", table = "dosglobal", request = "dosEntry" },
      [143] = { name = "oltmib_dosif_get_1", table = "dosif", request = "dosEntry", reply = "dosEntry" },
      [144] = { name = "oltmib_dosif_getn_1", table = "dosif", request = "dosEntry", reply = "dosEntry" },
      [145] = { name = "oltmib_dosif_set_1", table = "dosif", request = "dosEntry" },
      [152] = { name = "oltmib_dnserver_get_1", table = "dnserver", request = "dnsEntry", reply = "dnsEntry" },
      [153] = { name = "oltmib_dnserver_getn_1", table = "dnserver", request = "dnsEntry", reply = "dnsEntry" },
      [154] = { name = "oltmib_dnserver_set_1", table = "dnserver", request = "dnsEntry" },
      [155] = { name = "oltmib_dnsdomain_get_1", table = "dnsdomain", request = "dnsEntry", reply = "dnsEntry" },
      [156] = { name = "oltmib_dnsdomain_getn_1", table = "dnsdomain", request = "dnsEntry", reply = "dnsEntry" },
      [157] = { name = "oltmib_dnsdomain_set_1", table = "dnsdomain", request = "dnsEntry" },
      [158] = { name = "oltmib_dnshost_get_1", table = "dnshost", request = "dnsEntry", reply = "dnsEntry" },
      [159] = { name = "oltmib_dnshost_getn_1", table = "dnshost", request = "dnsEntry", reply = "dnsEntry" },
      [160] = { name = "oltmib_dnshost_set_1", table = "dnshost", request = "dnsEntry" },
    },
  },
  [50002] = {
    name = "devinfo",
    title = "device information",
    procedures = {
      [1] = { name = "oltmib_devinfo_get_1", table = "devinfo", request = "DevInfoEntry", reply = "DevInfoEntry" },
      [2] = { name = "oltmib_devinfo_getn_1", table = "devinfo", request = "DevInfoEntry", reply = "DevInfoEntry" },
      [3] = { name = "oltmib_devinfo_set_1", table = "devinfo", request = "DevInfoEntry" },
      [4] = { name = "oltmib_api_get_1", table = "api", request = "apiEntry", reply = "apiEntry" },
      [5] = { name = "oltmib_devcapbool_get_1", table = "devcapbool", request = "devcapEntry", reply = "devcapEntry" },
      [6] = { name = "oltmib_devcapint_get_1", table = "devcapint", request = "devcapEntry", reply = "devcapEntry" },
      [7] = { name = "oltmib_devcapstr_get_1", table = "devcapstr", request = "devcapEntry", reply = "devcapEntry" },
      [8] = { name = "oltmib_libconfbool_get_1", table = "libconfbool", request = "libconfEntry", reply = "libconfEntry" },
      [9] = { name = "oltmib_libconfint_get_1", table = "libconfint", request = "libconfEntry", reply = "libconfEntry" },
      [10] = { name = "oltmib_libconfstr_get_1", table = "libconfstr", request = "libconfEntry", reply = "libconfEntry" },
      [13] = { name = "oltmib_accesslog_set_1", table = "accesslog", request = "accesslogEntry" },
    },
  },
  [50003] = {
    name = "hslinfo",
    title = "hardware services layer",
    procedures = {
      [9] = { name = "oltmib_mgmtvlan_get_1", table = "mgmtvlan", request = "mgmtvlanEntry", reply = "mgmtvlanEntry" },
      [10] = { name = "oltmib_mgmtvlan_set_1", table = "mgmtvlan", request = "mgmtvlanEntry" },
      [11] = { name = "oltmib_portintfmode_get_1", table = "portintfmode", request = "portintfmodeEntry", reply = "portintfmodeEntry" },
      [12] = { name = "oltmib_portintfmode_getn_1", table = "portintfmode", request = "portintfmodeEntry", reply = "portintfmodeEntry" },
      [13] = { name = "oltmib_portintfmode_set_1", table = "portintfmode", request = "portintfmodeEntry" },
      [81] = { name = "oltmib_dyinggasp_support_1", table = "dyinggasp_support", request = "dyinggaspEntry", reply = "dyinggaspEntry" },
      [82] = { name = "oltmib_dyinggasp_get_1", table = "dyinggasp", request = "dyinggaspEntry", reply = "dyinggaspEntry" },
      [83] = { name = "oltmib_dyinggasp_set_1", table = "dyinggasp", request = "dyinggaspEntry" },
      [84] = { name = "oltmib_portinbandan_get_1", table = "portinbandan", request = "portinbandanEntry", reply = "portinbandanEntry" },
      [85] = { name = "oltmib_portinbandan_getn_1", table = "portinbandan", request = "portinbandanEntry", reply = "portinbandanEntry" },
      [86] = { name = "oltmib_portinbandan_set_1", table = "portinbandan", request = "portinbandanEntry" },
      [90] = { name = "oltmib_mbaserial_get_1", table = "mbaserial", request = "mbaserialEntry", reply = "mbaserialEntry" },
      [91] = { name = "oltmib_mbaserial_getn_1", table = "mbaserial", request = "mbaserialEntry", reply = "mbaserialEntry" },
      [92] = { name = "oltmib_mbaserial_set_1", table = "mbaserial", request = "mbaserialEntry" },
      [93] = { name = "oltmib_mbainst_get_1", table = "mbainst", request = "mbainstEntry", reply = "mbainstEntry" },
      [94] = { name = "oltmib_mbainst_getn_1", table = "mbainst", request = "mbainstEntry", reply = "mbainstEntry" },
      [95] = { name = "oltmib_mbainst_set_1", table = "mbainst", request = "mbainstEntry" },
      [96] = { name = "oltmib_mbainststate_get_1", table = "mbainststate", request = "mbainststateEntry", reply = "mbainststateEntry" },
      [97] = { name = "oltmib_mbainststate_getn_1", table = "mbainststate", request = "mbainststateEntry", reply = "mbainststateEntry" },
      [98] = { name = "oltmib_mbainststate_set_1", table = "mbainststate", request = "mbainststateEntry" },
      [99] = { name = "oltmib_mbaserialstatis_get_1", table = "mbaserialstatis", request = "mbaserialstatisEntry", reply = "mbaserialstatisEntry" },
      [100] = { name = "oltmib_mbaserialstatis_getn_1", table = "mbaserialstatis", request = "mbaserialstatisEntry", reply = "mbaserialstatisEntry" },
      [101] = { name = "oltmib_mbaserialstatis_set_1", table = "mbaserialstatis", request = "mbaserialstatisEntry" },
      [102] = { name = "oltmib_mbainststatis_get_1", table = "mbainststatis", request = "mbainststatisEntry", reply = "mbainststatisEntry" },
      [103] = { name = "oltmib_mbainststatis_getn_1", table = "mbainststatis", request = "mbainststatisEntry", reply = "mbainststatisEntry" },
      [104] = { name = "oltmib_mbainststatis_set_1", table = "mbainststatis", request = "mbainststatisEntry" },
    },
  },
  [50006] = {
    name = "hostpdinfo",
    title = "host protocols",
    procedures = {
      [1] = { name = "oltmib_telnet_set_1", table = "telnet", request = "hostpdInfoEntry" },
      [2] = { name = "oltmib_telnet_get_1", table = "telnet", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [3] = { name = "oltmib_web_set_1", table = "web", request = "hostpdInfoEntry" },
      [4] = { name = "oltmib_web_get_1", table = "web", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [5] = { name = "oltmib_snmp_community_set_1", table = "snmp_community", request = "hostpdInfoEntry" },
      [6] = { name = "oltmib_snmp_community_get_1", table = "snmp_community", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [7] = { name = "oltmib_snmp_community_getn_1", table = "snmp_community", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [8] = { name = "oltmib_snmp_srv_set_1", table = "snmp_srv", request = "hostpdInfoEntry" },
      [9] = { name = "oltmib_snmp_srv_get_1", table = "snmp_srv", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [10] = { name = "oltmib_snmp_srv_getn_1", table = "snmp_srv", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [11] = { name = "oltmib_account_set_1", table = "account", request = "accountEntry" },
      [12] = { name = "oltmib_account_get_1", table = "account", request = "accountEntry", reply = "accountEntry" },
      [13] = { name = "oltmib_account_getn_1", table = "account", request = "accountEntry", reply = "accountEntry" },
      [14] = { name = "oltmib_snmp_cfg_req_1", table = "snmp_cfg_req", request = "hostpdInfoEntry" },
      [15] = { name = "oltmib_ntp_set_1", table = "ntp", request = "tmEntry" },
      [16] = { name = "oltmib_ntp_get_1", table = "ntp", request = "tmEntry", reply = "tmEntry" },
      [17] = { name = "oltmib_snmp_view_set_1", table = "snmp_view", request = "snmpviewEntry" },
      [18] = { name = "oltmib_snmp_view_get_1", table = "snmp_view", request = "snmpviewEntry", reply = "snmpviewEntry" },
      [19] = { name = "oltmib_snmp_view_getn_1", table = "snmp_view", request = "snmpviewEntry", reply = "snmpviewEntry" },
      [20] = { name = "oltmib_snmp_group_set_1", table = "snmp_group", request = "snmpgroupEntry" },
      [21] = { name = "oltmib_snmp_group_get_1", table = "snmp_group", request = "snmpgroupEntry", reply = "snmpgroupEntry" },
      [22] = { name = "oltmib_snmp_group_getn_1", table = "snmp_group", request = "snmpgroupEntry", reply = "snmpgroupEntry" },
      [23] = { name = "oltmib_snmp_user_set_1", table = "snmp_user", request = "snmpuserEntry" },
      [24] = { name = "oltmib_snmp_user_get_1", table = "snmp_user", request = "snmpuserEntry", reply = "snmpuserEntry" },
      [25] = { name = "oltmib_snmp_user_getn_1", table = "snmp_user", request = "snmpuserEntry", reply = "snmpuserEntry" },
      [26] = { name = "oltmib_snmp_host_set_1", table = "snmp_host", request = "snmphostEntry" },
      [27] = { name = "oltmib_snmp_host_get_1", table = "snmp_host", request = "snmphostEntry", reply = "snmphostEntry" },
      [28] = { name = "oltmib_snmp_host_getn_1", table = "snmp_host", request = "snmphostEntry", reply = "snmphostEntry" },
      [31] = { name = "oltmib_ssh_set_1", table = "ssh", request = "hostpdInfoEntry" },
      [32] = { name = "oltmib_ssh_get_1", table = "ssh", request = "hostpdInfoEntry", reply = "hostpdInfoEntry" },
      [40] = { name = "oltmib_dhcpdinfo_get_1", table = "dhcpdinfo", request = "dhcpdinfoEntry", reply = "dhcpdinfoEntry" },
      [41] = { name = "oltmib_dhcpdinfo_set_1", table = "dhcpdinfo", request = "dhcpdinfoEntry" },
      [44] = { name = "oltmib_sysloginfo_get_1", table = "sysloginfo", request = "syslogInfoEntry", reply = "syslogInfoEntry" },
      [45] = { name = "oltmib_sysloginfo_set_1", table = "sysloginfo", request = "syslogInfoEntry" },
      [47] = { name = "oltmib_syslogremote_get_1", table = "syslogremote", request = "syslogRemoteEntry", reply = "syslogRemoteEntry" },
      [49] = { name = "oltmib_syslogremote_set_1", table = "syslogremote", request = "syslogRemoteEntry" },
      [50] = { name = "oltmib_alert_get_1", table = "alert", request = "alertEntry", reply = "alertEntry" },
      [52] = { name = "oltmib_alert_set_1", table = "alert", request = "alertEntry" },
    },
  },
  [50008] = {
    name = "igmpsnpinfo",
    title = "IGMP snooping",
    procedures = {
      [1] = { name = "oltmib_igmpsnp_get_1", table = "igmpsnp", request = "igspGlobalEntry", reply = "igspGlobalEntry" },
      [2] = { name = "oltmib_igmpsnp_set_1", table = "igmpsnp", request = "igspGlobalEntry" },
      [4] = { name = "oltmib_igmpsnp_mrouter_get_1", table = "igmpsnp_mrouter", request = "igspMrouterEntry", reply = "igspMrouterEntry" },
      [5] = { name = "oltmib_igmpsnp_mrouter_getn_1", table = "igmpsnp_mrouter", request = "igspMrouterEntry", reply = "igspMrouterEntry" },
      [6] = { name = "oltmib_igmpsnp_mrouter_set_1", table = "igmpsnp_mrouter", request = "igspMrouterEntry" },
      [7] = { name = "oltmib_igmpsnp_static_grp_get_1", table = "igmpsnp_static_grp", request = "igspGrpEntry", reply = "igspGrpEntry" },
      [8] = { name = "oltmib_igmpsnp_static_grp_getn_1", table = "igmpsnp_static_grp", request = "igspGrpEntry", reply = "igspGrpEntry" },
      [9] = { name = "oltmib_igmpsnp_static_grp_set_1", table = "igmpsnp_static_grp", request = "igspGrpEntry" },
      [10] = { name = "oltmib_igmpsnp_grp_get_1", table = "igmpsnp_grp", request = "igspGrpEntry", reply = "igspGrpEntry" },
      [11] = { name = "oltmib_igmpsnp_grp_getn_1", table = "igmpsnp_grp", request = "igspGrpEntry", reply = "igspGrpEntry" },
      [13] = { name = "oltmib_igmpsnp_fastleave_get_1", table = "igmpsnp_fastleave", request = "igspifEntry", reply = "igspifEntry" },
      [14] = { name = "oltmib_igmpsnp_fastleave_set_1", table = "igmpsnp_fastleave", request = "igspifEntry" },
    },
  },
  [50007] = {
    name = "mstpinfo",
    title = "spanning tree",
    procedures = {
      [1] = { name = "oltmib_mstp_global_get_1", table = "mstp_global", request = "mstpglobalEntry", reply = "mstpglobalEntry" },
      [2] = { name = "oltmib_mstp_global_set_1", table = "mstp_global", request = "mstpglobalEntry" },
      [3] = { name = "oltmib_mstp_mst_get_1", table = "mstp_mst", request = "mstpmstEntry", reply = "mstpmstEntry" },
      [4] = { name = "oltmib_mstp_mst_set_1", table = "mstp_mst", request = "mstpmstEntry" },
      [5] = { name = "oltmib_mstp_inst_get_1", table = "mstp_inst", request = "mstpinstEntry", reply = "mstpinstEntry" },
      [6] = { name = "oltmib_mstp_inst_getn_1", table = "mstp_inst", request = "mstpinstEntry", reply = "mstpinstEntry" },
      [7] = { name = "oltmib_mstp_inst_set_1", table = "mstp_inst", request = "mstpinstEntry" },
      [8] = { name = "oltmib_mstp_if_get_1", table = "mstp_if", request = "mstpifEntry", reply = "mstpifEntry" },
      [9] = { name = "oltmib_mstp_if_getn_1", table = "mstp_if", request = "mstpifEntry", reply = "mstpifEntry" },
      [10] = { name = "oltmib_mstp_if_set_1", table = "mstp_if", request = "mstpifEntry" },
      [11] = { name = "oltmib_mstp_ifstate_get_1", table = "mstp_ifstate", request = "mstpifstateEntry", reply = "mstpifstateEntry" },
      [12] = { name = "oltmib_mstp_ifstate_getn_1", table = "mstp_ifstate", request = "mstpifstateEntry", reply = "mstpifstateEntry" },
      [13] = { name = "oltmib_mstp_reset_if_detect_1", table = "mstp_reset_if_detect", request = "mstpifstateEntry" },
    },
  },
  [50009] = {
    name = "nsmextinfo",
    title = "NSM extension",
    procedures = {
      [1] = { name = "oltmib_poeconf_get_1", table = "poeconf", request = "poeConfEntry", reply = "poeConfEntry" },
      [2] = { name = "oltmib_poeconf_set_1", table = "poeconf", request = "poeConfEntry" },
      [5] = { name = "oltmib_poeifconf_get_1", table = "poeifconf", request = "poeifConfEntry", reply = "poeifConfEntry" },
      [6] = { name = "oltmib_poeifconf_getn_1", table = "poeifconf", request = "poeifConfEntry", reply = "poeifConfEntry" },
      [7] = { name = "oltmib_poeifconf_set_1", table = "poeifconf", request = "poeifConfEntry" },
      [3] = { name = "oltmib_poeinfo_get_1", table = "poeinfo", request = "poeInfoEntry", reply = "poeInfoEntry" },
      [4] = { name = "oltmib_poeinfo_set_1", table = "poeinfo", request = "poeInfoEntry" },
      [8] = { name = "oltmib_poeifinfo_get_1", table = "poeifinfo", request = "poeifInfoEntry", reply = "poeifInfoEntry" },
      [9] = { name = "oltmib_poeifinfo_getn_1", table = "poeifinfo", request = "poeifInfoEntry", reply = "poeifInfoEntry" },
      [10] = { name = "oltmib_poeifinfo_set_1", table = "poeifinfo", request = "poeifInfoEntry" },
      [20] = { name = "oltmib_nsmauthmac_get_1", table = "nsmauthmac", request = "nsmauthmacEntry", reply = "nsmauthmacEntry" },
      [21] = { name = "oltmib_nsmauthmac_getn_1", table = "nsmauthmac", request = "nsmauthmacEntry", reply = "nsmauthmacEntry" },
      [22] = { name = "oltmib_nsmauthmac_set_1", table = "nsmauthmac", request = "nsmauthmacEntry" },
      [23] = { name = "oltmib_nsmps_get_1", table = "nsmps", request = "nsmpsEntry", reply = "nsmpsEntry" },
      [24] = { name = "oltmib_nsmps_getn_1", table = "nsmps", request = "nsmpsEntry", reply = "nsmpsEntry" },
      [25] = { name = "oltmib_nsmps_set_1", table = "nsmps", request = "nsmpsEntry" },
      [26] = { name = "oltmib_nsmpsmac_get_1", table = "nsmpsmac", request = "nsmpsmacEntry", reply = "nsmpsmacEntry" },
      [27] = { name = "oltmib_nsmpsmac_getn_1", table = "nsmpsmac", request = "nsmpsmacEntry", reply = "nsmpsmacEntry" },
      [28] = { name = "oltmib_nsmpsmac_set_1", table = "nsmpsmac", request = "nsmpsmacEntry" },
      [29] = { name = "oltmib_nsmpsstate_get_1", table = "nsmpsstate", request = "nsmpsstateEntry", reply = "nsmpsstateEntry" },
      [30] = { name = "oltmib_nsmpsstate_getn_1", table = "nsmpsstate", request = "nsmpsstateEntry", reply = "nsmpsstateEntry" },
      [31] = { name = "oltmib_nsmpsmacstate_get_1", table = "nsmpsmacstate", request = "nsmpsmacstateEntry", reply = "nsmpsmacstateEntry" },
      [32] = { name = "oltmib_nsmpsmacstate_getn_1", table = "nsmpsmacstate", request = "nsmpsmacstateEntry", reply = "nsmpsmacstateEntry" },
      [40] = { name = "oltmib_nsmipsgif_get_1", table = "nsmipsgif", request = "nsmipsgifEntry", reply = "nsmipsgifEntry" },
      [41] = { name = "oltmib_nsmipsgif_getn_1", table = "nsmipsgif", request = "nsmipsgifEntry", reply = "nsmipsgifEntry" },
      [42] = { name = "oltmib_nsmipsgif_set_1", table = "nsmipsgif", request = "nsmipsgifEntry" },
      [43] = { name = "oltmib_nsmipsguser_get_1", table = "nsmipsguser", request = "nsmipsguserEntry", reply = "nsmipsguserEntry" },
      [44] = { name = "oltmib_nsmipsguser_getn_1", table = "nsmipsguser", request = "nsmipsguserEntry", reply = "nsmipsguserEntry" },
      [45] = { name = "oltmib_nsmipsguser_set_1", table = "nsmipsguser", request = "nsmipsguserEntry" },
    },
  },
  [50010] = {
    name = "auth",
    title = "authentication",
    procedures = {
      [1] = { name = "oltmib_auth_global_get_1", table = "auth_global", request = "authGlobalEntry", reply = "authGlobalEntry" },
      [2] = { name = "oltmib_auth_global_set_1", table = "auth_global", request = "authGlobalEntry" },
      [4] = { name = "oltmib_d1x_pcfg_get_1", table = "d1x_pcfg", request = "d1xPcfgEntry", reply = "d1xPcfgEntry" },
      [5] = { name = "oltmib_d1x_pcfg_getn_1", table = "d1x_pcfg", request = "d1xPcfgEntry", reply = "d1xPcfgEntry" },
      [6] = { name = "oltmib_d1x_pcfg_set_1", table = "d1x_pcfg", request = "d1xPcfgEntry" },
      [7] = { name = "oltmib_d1x_pst_get_1", table = "d1x_pst", request = "d1xPstEntry", reply = "d1xPstEntry" },
      [8] = { name = "oltmib_d1x_pst_getn_1", table = "d1x_pst", request = "d1xPstEntry", reply = "d1xPstEntry" },
      [10] = { name = "oltmib_macauth_pcfg_get_1", table = "macauth_pcfg", request = "macauthPcfgEntry", reply = "macauthPcfgEntry" },
      [11] = { name = "oltmib_macauth_pcfg_getn_1", table = "macauth_pcfg", request = "macauthPcfgEntry", reply = "macauthPcfgEntry" },
      [12] = { name = "oltmib_macauth_pcfg_set_1", table = "macauth_pcfg", request = "macauthPcfgEntry" },
      [13] = { name = "oltmib_macauth_user_get_1", table = "macauth_user", request = "macauthUserEntry", reply = "macauthUserEntry" },
      [14] = { name = "oltmib_macauth_user_getn_1", table = "macauth_user", request = "macauthUserEntry", reply = "macauthUserEntry" },
      [15] = { name = "oltmib_radglobal_get_1", table = "radglobal", request = "radglobalEntry", reply = "radglobalEntry" },
      [16] = { name = "oltmib_radglobal_set_1", table = "radglobal", request = "radglobalEntry" },
      [18] = { name = "oltmib_radsrv_get_1", table = "radsrv", request = "radsrvEntry", reply = "radsrvEntry" },
      [19] = { name = "oltmib_radsrv_getn_1", table = "radsrv", request = "radsrvEntry", reply = "radsrvEntry" },
      [20] = { name = "oltmib_radsrv_set_1", table = "radsrv", request = "radsrvEntry" },
    },
  },
  [50011] = {
    name = "ribinfo",
    title = "routing table",
    procedures = {
      [1] = { name = "oltmib_route_get_1", table = "route", request = "routeEntry", reply = "routeEntry" },
      [2] = { name = "oltmib_route_getn_1", table = "route", request = "routeEntry", reply = "routeEntry" },
      [3] = { name = "oltmib_route_set_1", table = "route", request = "routeEntry" },
    },
  },
  [50013] = {
    name = "vrrpinfo",
    title = "VRRP",
    procedures = {
      [1] = { name = "oltmib_vrrp_ssconf_get_1", table = "vrrp_ssconf", request = "vrrp_ssconfEntry", reply = "vrrp_ssconfEntry" },
      [2] = { name = "oltmib_vrrp_ssconf_getn_1", table = "vrrp_ssconf", request = "vrrp_ssconfEntry", reply = "vrrp_ssconfEntry" },
      [3] = { name = "oltmib_vrrp_ssconf_set_1", table = "vrrp_ssconf", request = "vrrp_ssconfEntry" },
      [4] = { name = "oltmib_vrrp_ssstate_get_1", table = "vrrp_ssstate", request = "vrrp_ssstateEntry", reply = "vrrp_ssstateEntry" },
      [5] = { name = "oltmib_vrrp_ssstate_getn_1", table = "vrrp_ssstate", request = "vrrp_ssstateEntry", reply = "vrrp_ssstateEntry" },
      [6] = { name = "oltmib_vrrp_ssstate_set_1", table = "vrrp_ssstate", request = "vrrp_ssstateEntry" },
    },
  },
  [50015] = {
    name = "sdsminfo",
    title = "SDSM",
    procedures = {
      [1] = { name = "oltmib_sdsminfo_get_1", table = "sdsminfo", request = "sdsminfoEntry", reply = "sdsminfoEntry" },
      [3] = { name = "oltmib_sdsminfo_set_1", table = "sdsminfo", request = "sdsminfoEntry" },
    },
  },
  [50016] = {
    name = "ipcminfo",
    title = "IPC ioctl",
    procedures = {
      [1] = { name = "oltmib_ioctlinfo_get_1", table = "ioctlinfo", request = "ioctlEntry", reply = "ioctlEntry" },
      [2] = { name = "oltmib_ioctlinfo_getn_1", table = "ioctlinfo", request = "ioctlEntry", reply = "ioctlEntry" },
      [3] = { name = "oltmib_ioctlinfo_set_1", table = "ioctlinfo", request = "ioctlEntry" },
    },
  },
  [50017] = {
    name = "dhcpsnp",
    title = "DHCP snooping",
    procedures = {
      [1] = { name = "oltmib_dhcpsnp_get_1", table = "dhcpsnp", request = "dhcpsnpEntry", reply = "dhcpsnpEntry" },
      [3] = { name = "oltmib_dhcpsnp_set_1", table = "dhcpsnp", request = "dhcpsnpEntry" },
    },
  },
  [50018] = {
    name = "lpdet",
    title = "loop detection",
    procedures = {
      [1] = { name = "oltmib_lpdet_global_get_1", table = "lpdet_global", request = "lpdetglobalEntry", reply = "lpdetglobalEntry" },
      [3] = { name = "oltmib_lpdet_global_set_1", table = "lpdet_global", request = "lpdetglobalEntry" },
      [4] = { name = "oltmib_lpdet_portinfo_get_1", table = "lpdet_portinfo", request = "lpdetportinfoEntry", reply = "lpdetportinfoEntry" },
      [5] = { name = "oltmib_lpdet_portinfo_getn_1", table = "lpdet_portinfo", request = "lpdetportinfoEntry", reply = "lpdetportinfoEntry" },
      [6] = { name = "oltmib_lpdet_portinfo_set_1", table = "lpdet_portinfo", request = "lpdetportinfoEntry" },
    },
  },
}

-- luacheck: read globals Address Field Int64 Proto ProtoExpert ProtoField UInt64 base expert frametype
-- luacheck: read globals records version programs register_postdissector

-- How a record's field becomes a Wireshark field, by kind.
local makers = {
  int = ProtoField.int32,
  uint = ProtoField.uint32,
  double = ProtoField.double,
  int64 = ProtoField.int64,
  uint64 = ProtoField.uint64,
  text = ProtoField.string,
  mac = ProtoField.ether,
  hex = ProtoField.string,
  ints = ProtoField.string,
}

local librpc = Proto("librpc", "Device table call")

local message_types = { [0] = "Call", [1] = "Reply" }
local accept_states = {
  [0] = "Success",
  [1] = "Program not available",
  [2] = "Program version mismatch",
  [3] = "Procedure not available",
  [4] = "Garbage arguments",
  [5] = "System error",
}
local deny_states = { [0] = "RPC version mismatch", [1] = "Authentication error" }

local header = {
  service = ProtoField.string("librpc.service", "Service"),
  xid = ProtoField.uint32("librpc.xid", "XID", base.HEX),
  message = ProtoField.uint32("librpc.message", "Message", base.DEC, message_types),
  program = ProtoField.uint32("librpc.program", "Program"),
  version = ProtoField.uint32("librpc.version", "Version"),
  procedure = ProtoField.uint32("librpc.procedure", "Procedure"),
  api = ProtoField.string("librpc.api", "API"),
  accept = ProtoField.uint32("librpc.accept", "Accept state", base.DEC, accept_states),
  deny = ProtoField.uint32("librpc.deny", "Reject state", base.DEC, deny_states),
  status = ProtoField.int32("librpc.status", "Status"),
  record = ProtoField.string("librpc.record", "Record"),
  body = ProtoField.bytes("librpc.body", "Body"),
  low = ProtoField.uint32("librpc.low", "Lowest version"),
  high = ProtoField.uint32("librpc.high", "Highest version"),
  auth = ProtoField.uint32("librpc.auth", "Authentication state"),
  reply_frame = ProtoField.framenum("librpc.reply_frame", "Reply in frame", base.NONE, frametype.RESPONSE),
  call_frame = ProtoField.framenum("librpc.call_frame", "Call in frame", base.NONE, frametype.REQUEST),
}

local function expert_info(name, text, group, severity)
  return ProtoExpert.new("librpc." .. name, text, group, severity)
end
local group, severity = expert.group, expert.severity
local experts = {
  short = expert_info("short", "Body ends before its record", group.MALFORMED, severity.ERROR),
  long = expert_info("long", "Bytes behind the record", group.PROTOCOL, severity.NOTE),
  unknown = expert_info("unknown", "Unknown procedure or version", group.UNDECODED, severity.WARN),
  again = expert_info("again", "Another reply to the same call", group.SEQUENCE, severity.NOTE),
}

do
  local fields = {}
  for _, field in pairs(header) do
    fields[#fields + 1] = field
  end
  for record_name, record in pairs(records) do
    for _, field in ipairs(record) do
      local name, kind = field[1], field[2]
      field.proto = makers[kind]("librpc." .. record_name .. "." .. name, name)
      fields[#fields + 1] = field.proto
      field.of_table = {}
    end
  end
  -- The same under the table's name, which is what people know: librpc.portstat.ifx.
  local kinds = {}
  local function name_by_table(table_name, record_name)
    for _, field in ipairs(records[record_name] or {}) do
      local name = ("librpc.%s.%s"):format(table_name, field[1])
      kinds[name] = kinds[name] or { kind = field[2] }
      local known = kinds[name]
      if known.kind == field[2] then
        if not known.proto then
          known.proto = makers[known.kind](name, field[1])
          fields[#fields + 1] = known.proto
        end
        field.of_table[table_name] = known.proto
      end
    end
  end
  for _, service in pairs(programs) do
    for _, procedure in pairs(service.procedures) do
      name_by_table(procedure.table, procedure.request)
      name_by_table(procedure.table, procedure.reply)
    end
  end
  librpc.fields = fields
  local list = {}
  for _, one in pairs(experts) do
    list[#list + 1] = one
  end
  librpc.experts = list
end

-- A char travels as the last byte of its unit.
local function characters(range)
  return (range:raw():gsub("...(.)", "%1"))
end

-- A field's value for Wireshark, and as text for people.
local readers = {
  int = function(range) return range:int() end,
  uint = function(range) return range:uint() end,
  double = function(range) return range:float() end,
  int64 = function(range) return Int64.new(range(0, 4):uint(), range(4, 4):uint()) end,
  uint64 = function(range) return UInt64.new(range(0, 4):uint(), range(4, 4):uint()) end,
  text = function(range)
    local text = characters(range):match("^[^%z]*")
    return (text:gsub("[^\32-\126]", function(c) return ("\\x%02x"):format(c:byte()) end))
  end,
  mac = function(range)
    local text = characters(range):gsub(".", function(c) return (":%02x"):format(c:byte()) end):sub(2)
    return Address.ether(text), text
  end,
  hex = function(range)
    return (characters(range):gsub(".", function(c) return ("%02x"):format(c:byte()) end))
  end,
  ints = function(range)
    local numbers = {}
    for at = 0, range:len() - 4, 4 do
      numbers[#numbers + 1] = range(at, 4):int()
    end
    return table.concat(numbers, ",")
  end,
}

-- Adds a record's fields; what is missing of it or left over is told.
local function show_record(name, range, tree, pinfo, table_name)
  local record = records[name]
  local size = 0
  for _, field in ipairs(record) do
    size = size + 4 * field[3]
  end
  local branch = tree:add(header.record, range, "oltmib_" .. name)
  local at, first = 0, nil
  for _, field in ipairs(record) do
    local bytes = 4 * field[3]
    if at + bytes > range:len() then
      branch:add_proto_expert_info(experts.short,
        ("Body ends %d bytes before its record"):format(size - range:len()))
      return
    end
    local value, text = readers[field[2]](range(at, bytes))
    local shown_as = field.of_table[table_name]
    branch:add(shown_as or field.proto, range(at, bytes), value)
    if shown_as then -- filters by the record's name find it too
      branch:add(field.proto, range(at, bytes), value):set_hidden()
    end
    first = first or ("%s %s"):format(field[1], tostring(text or value))
    at = at + bytes
  end
  if range:len() > size then
    branch:add_proto_expert_info(experts.long, ("%d bytes behind the record"):format(range:len() - size))
  end
  pinfo.cols.info:append(", " .. first)
end

-- Calls by frame, and by what their reply carries: addresses, ports and xid.
local calls, latest, replies, shown

function librpc.init()
  calls, latest, replies, shown = {}, {}, {}, nil
end

local function pair_key(client, client_port, server, server_port, xid)
  return table.concat({ tostring(client), client_port, tostring(server), server_port, xid }, "|")
end

-- The place behind an authenticator (flavour, length, bytes) at `at`, or nil.
local function behind_auth(tvb, at)
  if at + 8 > tvb:len() then
    return nil
  end
  local length = tvb(at + 4, 4):uint()
  at = at + 8 + math.ceil(length / 4) * 4
  return length <= 400 and at <= tvb:len() and at or nil
end

-- An RPC call (RFC 5531) to one of our programs, or nil.
local function read_call(tvb)
  if tvb:len() < 40 or tvb(4, 4):uint() ~= 0 or tvb(8, 4):uint() ~= 2 then
    return nil
  end
  local call = { xid = tvb(0, 4):uint(), program = tvb(12, 4):uint(), version = tvb(16, 4):uint(),
    procedure = tvb(20, 4):uint() }
  call.service = programs[call.program]
  local at = call.service and behind_auth(tvb, 24)
  call.body = at and behind_auth(tvb, at)
  if not call.body then
    return nil
  end
  call.known = call.version == version and call.service.procedures[call.procedure] or nil
  call.name = call.known and call.known.name or call.procedure == 0 and "null" or "procedure " .. call.procedure
  return call
end

local function begin(tvb, pinfo, root, call, message)
  pinfo.cols.protocol = "librpc"
  pinfo.cols.info = ("%s %s"):format(call.name, message_types[message])
  local tree = root:add(librpc, tvb(), ("%s, %s %s"):format(librpc.description, call.name, message_types[message]))
  tree:add(header.xid, tvb(0, 4))
  tree:add(header.message, tvb(4, 4))
  return tree
end

local function body_of(tvb, at)
  return at < tvb:len() and tvb(at) or nil
end

local function show_call(tvb, pinfo, root, call)
  if not pinfo.visited then
    calls[pinfo.number] = call
    call.frame = pinfo.number
    latest[pair_key(pinfo.src, pinfo.src_port, pinfo.dst, pinfo.dst_port, call.xid)] = call
  end
  local known = call.known
  local tree = begin(tvb, pinfo, root, call, 0)
  tree:add(header.program, tvb(12, 4))
  tree:add(header.service, tvb(12, 4), call.service.name):set_generated()
  tree:add(header.version, tvb(16, 4))
  tree:add(header.procedure, tvb(20, 4))
  tree:add(header.api, tvb(20, 4), call.name):set_generated()
  local answered = calls[pinfo.number] and calls[pinfo.number].reply_frame
  if answered then
    tree:add(header.reply_frame, answered):set_generated()
  end
  local body = body_of(tvb, call.body)
  if known and known.request then
    show_record(known.request, body or tvb(tvb:len(), 0), tree, pinfo, known.table)
  elseif body then
    tree:add(header.body, body)
  end
  if not known and call.procedure ~= 0 then
    tree:add_proto_expert_info(experts.unknown)
  end
end

-- The call that a reply belongs to, or nil.
local function call_of(tvb, pinfo)
  if tvb:len() < 12 or tvb(4, 4):uint() ~= 1 then
    return nil
  end
  if not pinfo.visited then
    local call = latest[pair_key(pinfo.dst, pinfo.dst_port, pinfo.src, pinfo.src_port, tvb(0, 4):uint())]
    replies[pinfo.number] = call
    if call and not call.reply_frame then
      call.reply_frame = pinfo.number
    end
  end
  return replies[pinfo.number]
end

local function show_success(range, tree, pinfo, call)
  local known = call.known
  if known and known.reply then
    show_record(known.reply, range, tree, pinfo, known.table)
  elseif known then
    if range:len() < 4 then
      tree:add_proto_expert_info(experts.short, ("Body ends %d bytes before its status"):format(4 - range:len()))
      return
    end
    tree:add(header.status, range(0, 4))
    pinfo.cols.info:append((", status %d"):format(range(0, 4):int()))
    if range:len() > 4 then
      tree:add_proto_expert_info(experts.long, ("%d bytes behind the status"):format(range:len() - 4))
    end
  elseif range:len() > 0 then
    tree:add(header.body, range)
  end
end

-- The versions that a daemon has, where it was asked for another.
local function show_versions(tvb, at, tree)
  if at + 8 <= tvb:len() then
    tree:add(header.low, tvb(at, 4))
    tree:add(header.high, tvb(at + 4, 4))
  end
end

local function show_reply(tvb, pinfo, root, call)
  local tree = begin(tvb, pinfo, root, call, 1)
  tree:add(header.program, tvb(0, 0), call.program):set_generated()
  tree:add(header.service, tvb(0, 0), call.service.name):set_generated()
  tree:add(header.procedure, tvb(0, 0), call.procedure):set_generated()
  tree:add(header.api, tvb(0, 0), call.name):set_generated()
  tree:add(header.call_frame, call.frame):set_generated()
  if call.reply_frame ~= pinfo.number then
    tree:add_proto_expert_info(experts.again)
  end
  if tvb(8, 4):uint() ~= 0 then
    if tvb:len() >= 16 then
      tree:add(header.deny, tvb(12, 4))
      pinfo.cols.info:append(", " .. (deny_states[tvb(12, 4):uint()] or "denied"))
      if tvb(12, 4):uint() == 0 then
        show_versions(tvb, 16, tree)
      elseif tvb:len() >= 20 then
        tree:add(header.auth, tvb(16, 4))
      end
    end
    return
  end
  local at = behind_auth(tvb, 12)
  if not at or at + 4 > tvb:len() then
    tree:add_proto_expert_info(experts.short, "Reply ends in its header")
    return
  end
  local state = tvb(at, 4):uint()
  tree:add(header.accept, tvb(at, 4))
  if state == 0 then
    show_success(body_of(tvb, at + 4) or tvb(tvb:len(), 0), tree, pinfo, call)
  else
    pinfo.cols.info:append(", " .. (accept_states[state] or "refused"))
    if state == 2 then
      show_versions(tvb, at + 4, tree)
    end
  end
end

-- True when the datagram is one of ours, and then it is shown.
local function dissect(tvb, pinfo, root)
  local call = read_call(tvb)
  if call then
    show_call(tvb, pinfo, root, call)
  else
    call = call_of(tvb, pinfo)
    if not call then
      return false
    end
    show_reply(tvb, pinfo, root, call)
  end
  shown = pinfo.number
  return true
end

librpc:register_heuristic("udp", dissect)

-- Clients take reserved ports, and Wireshark gives some of them to protocols
-- that take every datagram: those are looked at again here, behind all others.
local payload = Field.new("udp.payload")

function librpc.dissector(_, pinfo, root)
  local info = shown ~= pinfo.number and payload()
  if info then
    dissect(info.range:tvb(), pinfo, root)
  end
end

register_postdissector(librpc)
