// Text of the IPC ioctl service's tables.
#pragma once

#include "common/text_form.h"
#include "services/ipcminfo/records.h"

TABLE(ioctl, oltmib_ioctlEntry)
CONVERTERS(ioctl)
