// The SDSM service: program 50015.
#define LIBRPC_DEFINES_XDR
#include "services/sdsminfo/converters.h"

#define SERVICE service_sdsminfo
#define SERVICE_NAME "sdsminfo"
#define SERVICE_TITLE "SDSM"
#define SERVICE_PROGRAM 50015
#define SERVICE_INIT oltmib_sdsminfo_init
#define SERVICE_CLNT_INIT oltmib_sdsminfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_sdsminfo_clnt_destroy
#define SERVICE_APIS "services/sdsminfo/apis.def"
#include "services/define_service.h"
