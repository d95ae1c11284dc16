// The DHCP snooping service: program 50017.
#define LIBRPC_DEFINES_XDR
#include "services/dhcpsnp/converters.h"

#define SERVICE service_dhcpsnp
#define SERVICE_NAME "dhcpsnp"
#define SERVICE_TITLE "DHCP snooping"
#define SERVICE_PROGRAM 50017
#define SERVICE_INIT oltmib_dhcpsnp_init
#define SERVICE_CLNT_INIT oltmib_dhcpsnp_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_dhcpsnp_clnt_destroy
#define SERVICE_APIS "services/dhcpsnp/apis.def"
#include "services/define_service.h"
