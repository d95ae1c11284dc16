// The authentication service: program 50010.
#define LIBRPC_DEFINES_XDR
#include "services/auth/converters.h"

#define SERVICE service_auth
#define SERVICE_NAME "auth"
#define SERVICE_TITLE "authentication"
#define SERVICE_PROGRAM 50010
#define SERVICE_INIT oltmib_auth_init
#define SERVICE_CLNT_INIT oltmib_auth_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_auth_clnt_destroy
#define SERVICE_APIS "services/auth/apis.def"
#include "services/define_service.h"
