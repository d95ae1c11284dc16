// The hardware services layer service: program 50003.
#define LIBRPC_DEFINES_XDR
#include "services/hslinfo/converters.h"

#define SERVICE service_hslinfo
#define SERVICE_NAME "hslinfo"
#define SERVICE_TITLE "hardware services layer"
#define SERVICE_PROGRAM 50003
#define SERVICE_INIT oltmib_hslinfo_init
#define SERVICE_CLNT_INIT oltmib_hslinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_hslinfo_clnt_destroy
#define SERVICE_APIS "services/hslinfo/apis.def"
#include "services/define_service.h"
