// The ring protection and LLDP service: program 50005.
#define LIBRPC_DEFINES_XDR
#include "services/erpsinfo/converters.h"

#define SERVICE service_erpsinfo
#define SERVICE_NAME "erpsinfo"
#define SERVICE_TITLE "ring protection and LLDP"
#define SERVICE_PROGRAM 50005
#define SERVICE_INIT oltmib_erpsinfo_init
#define SERVICE_CLNT_INIT oltmib_erpsinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_erpsinfo_clnt_destroy
#define SERVICE_APIS "services/erpsinfo/apis.def"
#include "services/define_service.h"
