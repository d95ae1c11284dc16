// The device information service: program 50002.
#define LIBRPC_DEFINES_XDR
#include "services/devinfo/converters.h"

#define SERVICE service_devinfo
#define SERVICE_NAME "devinfo"
#define SERVICE_TITLE "device information"
#define SERVICE_PROGRAM 50002
#define SERVICE_INIT oltmib_devinfo_init
#define SERVICE_CLNT_INIT oltmib_devinfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_devinfo_clnt_destroy
#define SERVICE_APIS "services/devinfo/apis.def"
#include "services/define_service.h"
