// The list of the services, in the order in which they register. A new service
// takes its place here.
#include <iterator>

#include "common/service.h"

// clang-format off
#define SERVICES(SERVICE) \
    SERVICE(erpsinfo) SERVICE(nsminfo) SERVICE(devinfo) SERVICE(hslinfo) SERVICE(hostpdinfo) \
    SERVICE(igmpsnpinfo) SERVICE(mstpinfo) SERVICE(nsmextinfo) SERVICE(auth) SERVICE(ribinfo) \
    SERVICE(vrrpinfo) SERVICE(sdsminfo) SERVICE(ipcminfo) SERVICE(dhcpsnp) SERVICE(lpdet)
// clang-format on

#define DECLARE(service) extern const Service service_##service;
SERVICES(DECLARE)

#define POINTER(service) &service_##service,
static constexpr const Service* services[] = {SERVICES(POINTER)};

const ServiceList all_services = {services, std::size(services)};
