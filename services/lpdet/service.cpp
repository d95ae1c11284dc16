// The loop detection service: program 50018.
#define LIBRPC_DEFINES_XDR
#include "services/lpdet/converters.h"

#define SERVICE service_lpdet
#define SERVICE_NAME "lpdet"
#define SERVICE_TITLE "loop detection"
#define SERVICE_PROGRAM 50018
// The one service whose registration is not named as its client.
#define SERVICE_INIT oltmib_lpdetinfo_init
#define SERVICE_CLNT_INIT oltmib_lpdet_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_lpdet_clnt_destroy
#define SERVICE_APIS "services/lpdet/apis.def"
#include "services/define_service.h"
