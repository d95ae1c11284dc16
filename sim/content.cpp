// A small optical line terminal: eight ports ge1 to ge8, of which 7 and 8 are
// optical, three VLANs, a management address; see content.h.
#include "sim/content.h"

// clang-format off
const std::vector<Key> special_keys = {
#include "keys.inc" // made of names.lua
};

const std::vector<Alias> aliases = {
    {"dyinggasp_support", "dyinggasp"},
    {"fdb_dynamic", "fdb"},
    {"mstp_reset_if_detect", "mstp_ifstate"},
};

const std::vector<Content> initial_content = {
    // device information
    {"devinfo", 1, 1, "OLT-8G&SN20260117-0042&00-1E-80-4C-00-01&1.4.2&2.0.1&V3&0&86400&olt-lab-1&0&0"},
    {"devcapbool", 1, 1, "poe&Power over Ethernet&0&&&0&0"},
    {"devcapbool", 1, 1, "erps&Ring protection&1&&&0&0"},
    {"devcapint", 1, 1, "ports&Number of ports&8&&&0&0"},
    {"devcapint", 1, 1, "vlans&Number of VLANs&4094&&&0&0"},
    {"devcapstr", 1, 1, "model&Model name&0&OLT-8G&&0&0"},
    {"libconfbool", 1, 1, "trace&Trace lines&0&&&0&0"},
    {"libconfint", 1, 1, "timeout&Seconds of a call&25&&&0&0"},
    {"libconfstr", 1, 1, "host&Host of the daemons&0&127.0.0.1&&0&0"},

    // ports
    {"portinfo", 1, 1, "1&ge1&uplink to the core&1&1&1000&1&1000,full&auto&1&1&1500&0&0&1&0&1&0&1&1&0&&0&0"},
    {"portinfo", 2, 4, "#&ge#&customer #&1&1&1000&1&1000,full&auto&1&1&1500&0&0&1&0&1&0&1&1&0&&0&0"},
    {"portinfo", 5, 6, "#&ge#&&1&0&0&0&&auto&1&1&1500&0&0&1&0&1&0&1&1&0&&0&0"},
    {"portinfo", 7, 8, "#&ge#&optical line #&1&1&1000&1&1000,full&1000,full&1&2&1500&0&0&1&0&1&0&1&1&0&&0&0"},
    {"portstat", 1, 8, "#&1&ge#&&&&&&&&&&&&0&0"},
    {"portrate", 1, 8, "#&1&ge#&&&&&&&&0&0"},
    {"pminfo", 1, 1, "1&1&capture at port 6&ge6&0&0&ge1&&3&1&&0&0"},
    {"stpifstatus", 1, 8, "#&ge#&1&&0&0"},
    {"ratelimitinfo", 1, 8, "#&ge#&100000&4096&100000&4096&&0&0"},
    {"stormcontrolinfo", 1, 8, "#&ge#&1&80&0&&0&0"},
    {"errdisportinfo", 1, 8, "#&ge#&0&&0&0"},
    {"errdisable", 1, 1, "1&300&0&&0&0"},
    {"ag", 1, 1, "1&sa1&2&1&&0&0"},
    {"agsys", 1, 1, "32768&&0&0"},

    // VLANs
    {"vlaninfo", 1, 1, "1&1&default&1&ge1,ge2,ge3,ge4,ge5,ge6,ge7,ge8&&&0&0"},
    {"vlaninfo", 10, 10, "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0"},
    {"vlaninfo", 20, 20, "20&1&video&1&ge1,ge7,ge8&&&0&0"},
    {"cvlan_table", 1, 1, "400800000000000000000000&&0&0"},
    {"p2p_svlan_table", 1, 1, "000800000000000000000000&&0&0"},
    {"sptmode", 1, 1, "1&2&&0&0"},
    {"cvlaninfo", 1, 1, "customer-1&100&110&20&1&&0&0"},
    {"vlanvpn", 1, 1, "tunnel-1&20&100-110&&&0&0"},
    {"vlanvpnif", 1, 8, "#&ge#&0&0&&&&0&0"},
    {"svi", 1, 1, "1&vlan1&192.0.2.10/24&&0&0"},
    {"svi", 20, 20, "20&vlan20&198.51.100.1/24&&0&0"},

    // ACL and quality of service
    {"acl", 1, 1, "guests&1&10&1&0&6&guests to the web&0&0&&192.0.2.0/24&any&&&80&&0&0&&0&0"},
    {"acl", 1, 1, "block-smtp&1&20&2&0&6&no mail from customers&0&0&&any&any&&&25&&0&0&&0&0"},
    {"aclif", 1, 8, "#&ge#&block-smtp&&&0&0"},
    {"qoscfg", 1, 1, "1&2&&0&0"},
    {"queueweight", 1, 1, "1,2,3,4,5,9,13,15&&0&0"},
    {"cos2dscp", 1, 1, "0,8,16,24,32,40,48,56&&0&0"},
    {"cos2queue", 1, 1, "2,0,1,3,4,5,6,7&&0&0"},
    {"dscp2cos", 1, 1, "0,0,0,0,0,0,0,0,1,1,1,1,1,1,1,1,2,2,2,2,2,2,2,2,3,3,3,3,3,3,3,3,"
                       "4,4,4,4,4,4,4,4,5,5,5,5,5,5,5,5,6,6,6,6,6,6,6,6,7,7,7,7,7,7,7,7&&0&0"},
    {"dscp2dscp", 1, 1, "0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31,"
                        "32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47,48,49,50,51,52,53,54,55,56,57,58,59,60,61,62,63&&0&0"},
    {"dscp2queue", 1, 1, "0,0,0,0,0,0,0,0,1,1,1,1,1,1,1,1,2,2,2,2,2,2,2,2,3,3,3,3,3,3,3,3,"
                         "4,4,4,4,4,4,4,4,5,5,5,5,5,5,5,5,6,6,6,6,6,6,6,6,7,7,7,7,7,7,7,7&&0&0"},
    {"class", 1, 1, "voice&1&dscp 46&&0&0"},
    {"policy", 1, 1, "customers&voice&1&priority 5&0&0&0&0&0&&0&0"},
    {"qostrustif", 1, 8, "#&ge#&1&0&&&&0&0"},
    {"qospolicyif", 1, 8, "#&ge#&0&0&customers&&&0&0"},
    {"qosifcfg", 1, 8, "#&ge#&1,2,3,4,5,9,13,15&0,0,0,0,0,0,0,0&&0&0"},

    // forwarding
    {"fdbparam", 1, 1, "300&&0&0"},
    {"fdb", 1, 4, "00-1E-80-AA-00-0#&1&ge#&0&&0&0"},
    {"fdb", 7, 8, "00-1E-80-BB-00-0#&20&ge#&1&&0&0"},
    {"arp", 1, 3, "192.0.2.2#&00-1E-80-AA-00-0#&vlan1&300&&0&0"},
    {"sarp", 1, 1, "192.0.2.1&00-1E-80-00-00-FE&vlan1&0&&0&0"},
    {"route", 1, 1, "0.0.0.0/0&192.0.2.1&vlan1&1&1&static&&0&0"},
    {"route", 1, 1, "192.0.2.0/24&0.0.0.0&vlan1&0&0&connected&&0&0"},
    {"route", 1, 1, "198.51.100.0/24&0.0.0.0&vlan20&0&0&connected&&0&0"},
    {"vrrp_ssconf", 1, 1, "1&vlan1&192.0.2.254&100&1&1&1&&0&0&&0&0"},
    {"vrrp_ssstate", 1, 1, "1&1&100&2&3&1&192.0.2.254&0&0"},

    // modules
    {"optical", 7, 8, "#&ge#&1&-21&-52&38&3300&12&-300&100&-80&-2100&70&-10&&0&0"},
    {"opticaldetail", 7, 8, "#&ge#&1&SFP&LC&1000BASE-LX&1310&1250&0&10000&0&0&0&0&Optics Inc&0&0000&SN-700#&"
                            "V1&2025-11-03&38.2 C&3.30 V&12.1 mA&-5.2 dBm&0&0"},
    {"cabledetect", 1, 6, "#&ge#&4&1&0&23&ok&ok&ok&ok&&0&0"},
    {"nsm", 1, 1, "system&hostname olt-lab-1;timezone UTC;jumbo 9216&0&0"},
    {"dosglobal", 1, 1, "0&all&1&1&0&512&0&0&&0&0"},
    {"dosif", 1, 8, "#&ge#&1&1&0&512&0&0&&0&0"},
    {"dnserver", 1, 1, "192.0.2.53&&&1&&0&0"},
    {"dnsdomain", 1, 1, "lab.example&&&1&&0&0"},
    {"dnshost", 1, 1, "nms.lab.example&192.0.2.5&&1&&0&0"},

    // authentication
    {"auth_global", 1, 1, "1&&0&0"},
    {"d1x_pcfg", 1, 8, "#&ge#&0&1&30&3600&2&0&0&0&0&0&&0&0"},
    {"d1x_pst", 1, 8, "#&ge#&1&2&1&0&&0&0"},
    {"macauth_pcfg", 1, 8, "#&ge#&0&300&60&0&0&0&&0&0"},
    {"macauth_user", 2, 3, "1&00-1E-80-AA-00-0#&10&1&#&ge#&&0&0"},
    {"radglobal", 1, 1, "1&olt-lab-1&3&5&0&192.0.2.10&1812&&0&0"},
    {"radsrv", 5, 6, "192.0.2.#&1812&1813&1&secret-#&5&3&&0&0"},

    // host protocols
    {"telnet", 1, 1, "0&telnet&23&&&&&0&0"},
    {"web", 1, 1, "1&http&80&&&&&0&0"},
    {"ssh", 1, 1, "1&ssh&22&&&&&0&0"},
    {"account", 1, 1, "1&admin&15&secret&&&1&&0&0"},
    {"account", 2, 2, "2&guest&1&guest&&&1&&0&0"},
    {"ntp", 1, 1, "ntp&192.0.2.7&pool.example&UTC&1&64&2&192.0.2.7&2026-01-17 08:00:00&3&0.25&12.5&&0&0"},
    {"snmp_community", 1, 1, "1&public&1&default&&&&0&0"},
    {"snmp_community", 2, 2, "2&private&2&default&&&&0&0"},
    {"snmp_srv", 1, 1, "1&snmpd&161&OLT-8G&lab rack 3&noc@lab.example&&0&0"},
    {"snmp_view", 1, 1, "default&1.3.6.1&&0&0"},
    {"snmp_group", 1, 1, "operators&3&2&default&default&default&&0&0"},
    {"snmp_user", 1, 1, "noc&operators&1&secret&1&secret&&0&0"},
    {"snmp_host", 1, 1, "1&192.0.2.5&162&public&2&1&&0&0"},
    {"dhcpdinfo", 1, 1, "pool&range 198.51.100.100 198.51.100.199;lease 86400&0&0"},
    {"sysloginfo", 1, 1, "1&6&5&7&1&4&1&1024&0&0&0&&0&0"},
    {"syslogremote", 1, 1, "1&192.0.2.9&514&&0&0"},
    {"alert", 1, 1, "1&80&90&70&&0&0"},

    // ring protection and LLDP
    {"erpsinst", 1, 1, "ring-1-a&1&1&1&100&7&prof-1&ge1&ge2&&0&0"},
    {"erpsring", 1, 1, "1&ge1&ge2&&0&0"},
    {"erpsprof", 1, 1, "prof-1&5&500&0&1&0&&0&0"},
    {"erpsstate", 1, 1, "ring-1-a&1&2&0&0&1&00-1E-80-4C-00-01&1&0&0&00-1E-80-4C-00-02&0&0&0&&0&0"},
    {"lldpcfg", 1, 1, "1&30&4&2&&0&0"},
    {"lldpifcfg", 1, 8, "#&ge#&customer #&both&&1&1&1&1&1&0&0&0&0&0&0&0&&0&0"},
    {"lldpifnei", 1, 1, "1&$00-1E-80-CC-00-01&$core-sw&$port Gi0/3, system core-sw.lab.example&$-&$0&$0"},
    {"lldpifnei", 2, 2, "2&$00-1E-80-CC-00-02&$cpe-2&$port 1, system cpe-2.lab.example&$-&$0&$0"},
    {"lldpifstat", 1, 8, "#&ge#&120&118&0&0&0&0&1&&0&0"},

    // spanning tree
    {"mstp_global", 1, 1, "1&2&32768&20&2&15&20&6&0&0&0&&0&0"},
    {"mstp_mst", 1, 1, "region-1&1&&0&0"},
    {"mstp_inst", 1, 1, "1&10&4096&&0&0"},
    {"mstp_inst", 2, 2, "2&20&8192&&0&0"},
    {"mstp_if", 1, 8, "0&#&ge#&20000&128&1&0&0&0&0&0&0&0&0&&0&0"},
    {"mstp_ifstate", 1, 8, "0&#&ge#&3&1&20000&8000001E804C0001&8000001E804C0001&800#001E804C0001&&0&0"},

    // hardware services
    {"mgmtvlan", 1, 1, "1&1&192.0.2.10/24&192.0.2.1&0&&&&0&0"},
    {"portintfmode", 1, 6, "#&0&1&0&0&&0&0"},
    {"portintfmode", 7, 8, "#&1&2&0&0&&0&0"},
    {"portinbandan", 1, 8, "#&1&&0&0"},
    {"dyinggasp", 1, 1, "1&1&&0&0"},
    {"mbaserial", 1, 2, "#&9600&8&none&1&&0&0"},
    {"mbainst", 1, 2, "serial-#&#&192.0.2.10&4001&192.0.2.4#&4001&&1&&0&0"},
    {"mbainststate", 1, 2, "serial-#&#&1&192.0.2.10&4001&192.0.2.4#&4001&1&&0&0"},
    {"mbaserialstatis", 1, 2, "#&0&1200#&900#&&0&0"},
    {"mbainststatis", 1, 2, "serial-#&48#00&45#00&320&310&0&0&0&0&&0&0"},

    // IGMP snooping
    {"igmpsnp", 1, 1, "1&260&10&&0&0"},
    {"igmpsnp_mrouter", 20, 20, "20&ge1&&0&0"},
    {"igmpsnp_grp", 7, 8, "20&ge#&239.1.1.#&0.0.0.0&240&&0&0"},
    {"igmpsnp_static_grp", 1, 1, "20&ge7&239.1.2.1&0.0.0.0&0&&0&0"},
    {"igmpsnp_fastleave", 20, 20, "20&1&&0&0"},

    // PoE, port security, source guard
    {"poeconf", 1, 1, "1&120&90&1&&0&0"},
    {"poeinfo", 1, 1, "18&1&&0&0"},
    {"poeifconf", 1, 4, "#&ge#&1&customer #&1&15400&2&0&&0&0&0&0&&0&0"},
    {"poeifinfo", 1, 4, "#&ge#&1&2&delivering&4200&53&79&3&0&0&0&0&0&0&0&&0&0"},
    {"nsmauthmac", 2, 3, "#&00-1E-80-AA-00-0#&10&1&0&0&ge#&&0&0"},
    {"nsmps", 1, 8, "#&ge#&1&4&0&1&300&0&&0&0"},
    {"nsmpsmac", 2, 3, "#&ge#&1&00-1E-80-AA-00-0#&1&&0&0"},
    {"nsmpsstate", 1, 8, "#&ge#&1&4&1&0&1&300&0&0&0&00-1E-80-AA-00-0#&&&0&0"},
    {"nsmpsmacstate", 2, 3, "#&ge#&1&00-1E-80-AA-00-0#&1&0&&0&0"},
    {"nsmipsgif", 1, 8, "#&ge#&0&1&0&0&&0&0"},
    {"nsmipsguser", 2, 3, "#&ge#&10&00-1E-80-AA-00-0#&192.0.2.2#&1&&0&0"},

    // DHCP snooping, loop detection, SDSM, ioctl
    {"dhcpsnp", 1, 1, "trust ge1&vlan 10,20&1&0"},
    {"lpdet_global", 1, 1, "1&5&30&&0&0"},
    {"lpdet_portinfo", 1, 8, "#&ge#&1&1,10,20&up&none&&0&&0&0"},
    {"sdsminfo", 1, 1, "state&running&1&0"},
    {"ioctlinfo", 1, 2, "#&0&0&0&ioctl-#&&0&0"},
};
// clang-format on
