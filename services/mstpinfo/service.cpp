// The spanning tree service: program 50007.
#define LIBRPC_DEFINES_XDR
#include "services/mstpinfo/converters.h"

#define SERVICE service_mstpinfo
#define SERVICE_NAME "mstpinfo"
#define SERVICE_TITLE "spanning tree"
#define SERVICE_PROGRAM 50007
#define SERVICE_INIT oltmib_mstpinfo_init
#define SERVICE_CLNT_INIT oltmib_mstpinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_mstpinfo_clnt_destroy
#define SERVICE_APIS "services/mstpinfo/apis.def"
#include "services/define_service.h"
