// The network service module service: program 50004.
#define LIBRPC_DEFINES_XDR
#include "services/nsminfo/forwarding/converters.h"
#include "services/nsminfo/modules/converters.h"
#include "services/nsminfo/ports/converters.h"
#include "services/nsminfo/traffic/converters.h"
#include "services/nsminfo/vlans/converters.h"

#define SERVICE service_nsminfo
#define SERVICE_NAME "nsminfo"
#define SERVICE_TITLE "network service module"
#define SERVICE_PROGRAM 50004
#define SERVICE_INIT oltmib_nsminfo_init
#define SERVICE_CLNT_INIT oltmib_nsminfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_nsminfo_clnt_destroy
#define SERVICE_APIS "services/nsminfo/apis.def"
#include "services/define_service.h"
