// The host protocols service: program 50006.
#define LIBRPC_DEFINES_XDR
#include "services/hostpdinfo/converters.h"

#define SERVICE service_hostpdinfo
#define SERVICE_NAME "hostpdinfo"
#define SERVICE_TITLE "host protocols"
#define SERVICE_PROGRAM 50006
#define SERVICE_INIT oltmib_hostpdinfo_init
#define SERVICE_CLNT_INIT oltmib_hostpdinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_hostpdinfo_clnt_destroy
#define SERVICE_APIS "services/hostpdinfo/apis.def"
#include "services/define_service.h"
