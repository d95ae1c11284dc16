// The NSM extension service: program 50009.
#define LIBRPC_DEFINES_XDR
#include "services/nsmextinfo/converters.h"

#define SERVICE service_nsmextinfo
#define SERVICE_NAME "nsmextinfo"
#define SERVICE_TITLE "NSM extension"
#define SERVICE_PROGRAM 50009
#define SERVICE_INIT oltmib_nsmextinfo_init
#define SERVICE_CLNT_INIT oltmib_nsmextinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_nsmextinfo_clnt_destroy
#define SERVICE_APIS "services/nsmextinfo/apis.def"
#include "services/define_service.h"
