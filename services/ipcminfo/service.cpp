// The IPC ioctl service: program 50016.
#define LIBRPC_DEFINES_XDR
#include "services/ipcminfo/converters.h"

#define SERVICE service_ipcminfo
#define SERVICE_NAME "ipcminfo"
#define SERVICE_TITLE "IPC ioctl"
#define SERVICE_PROGRAM 50016
#define SERVICE_INIT oltmib_ipcminfo_init
#define SERVICE_CLNT_INIT oltmib_ipcminfo_clnt_init
#define SERVICE_CLNT_DESTROY oltmib_ipcminfo_clnt_destroy
#define SERVICE_APIS "services/ipcminfo/apis.def"
#include "services/define_service.h"
