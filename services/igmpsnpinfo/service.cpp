// The IGMP snooping service: program 50008.
#define LIBRPC_DEFINES_XDR
#include "services/igmpsnpinfo/converters.h"

#define SERVICE service_igmpsnpinfo
#define SERVICE_NAME "igmpsnpinfo"
#define SERVICE_TITLE "IGMP snooping"
#define SERVICE_PROGRAM 50008
#define SERVICE_INIT oltmib_igmpsnpinfo_init
#define SERVICE_CLNT_INIT oltmib_igmpsnpinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_igmpsnpinfo_clnt_destroy
#define SERVICE_APIS "services/igmpsnpinfo/apis.def"
#include "services/define_service.h"
