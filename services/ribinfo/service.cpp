// The routing table service: program 50011.
#define LIBRPC_DEFINES_XDR
#include "services/ribinfo/converters.h"

#define SERVICE service_ribinfo
#define SERVICE_NAME "ribinfo"
#define SERVICE_TITLE "routing table"
#define SERVICE_PROGRAM 50011
#define SERVICE_INIT oltmib_ribinfo_init
#define SERVICE_CLNT_INIT oltmib_ribinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_ribinfo_clnt_destroy
#define SERVICE_APIS "services/ribinfo/apis.def"
#include "services/define_service.h"
