// The VRRP service: program 50013.
#define LIBRPC_DEFINES_XDR
#include "services/vrrpinfo/converters.h"

#define SERVICE service_vrrpinfo
#define SERVICE_NAME "vrrpinfo"
#define SERVICE_TITLE "VRRP"
#define SERVICE_PROGRAM 50013
#define SERVICE_INIT oltmib_vrrpinfo_init
#define SERVICE_CLNT_INIT oltmib_vrrpinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_vrrpinfo_clnt_destroy
#define SERVICE_APIS "services/vrrpinfo/apis.def"
#include "services/define_service.h"
