-- The calls that are measured one by one: a filled argument for each, as pages
-- and scripts make them.
local neighbour = ("port description of the neighbour, its management address 192.168.0.254 and capabilities; ")
  :rep(30):sub(1, 1900)

return {
  { api = "oltmib_vrrp_ssstate_get_1", argument = "1&100&3&2&1&120&192.168.10.254&1&0" },
  { api = "oltmib_ioctlinfo_get_1", argument = "3&17&1000&1500&ge1/0/3&uplink to rack 12&1&0" },
  { api = "oltmib_route_set_1", argument = "10.20.30.0/24&192.168.1.254&vlan100&1&110&static&active&1&0" },
  {
    api = "oltmib_telnet_get_1",
    argument = "1&0.0.0.0&23&/var/run/telnetd.pid&Authorized access only&"
      .. "Disconnect now if you are not expected here&console&1&0",
  },
  {
    api = "oltmib_portinfo_get_1",
    argument = "5&ge1/0/5&uplink to aggregation switch, rack 12&1&0&1000&1&1000-full&auto&1&0&2&100&1518&0&1&4094&"
      .. "64&1&0&3&00-1A-2B-3C-4D-5E&1&0",
  },
  {
    api = "oltmib_lldpifnei_get_1",
    argument = "3&$00-1A-2B-3C-4D-5E&$ge1/0/24&$" .. neighbour .. "&$switch-17&$1&$0",
  },
}
