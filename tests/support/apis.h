// Walks over everything that the services describe, and what a run of it traces.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "common/service.h"
#include "common/trace.h"
#include "tests/support/captured_output.h"

// Trace lines are on while this lives.
struct Tracing {
    Tracing() { rpclib_dbg = 1; }
    ~Tracing() { rpclib_dbg = 0; }
};

// What `run` prints to standard output with the trace lines on.
template <class Run> std::string traced(Run&& run)
{
    const Tracing on;
    CapturedOutput output;
    run();
    return output.text();
}

// Runs `visit(service, api)` for every remote procedure.
template <class Visit> void for_each_api(Visit&& visit)
{
    for (const Service* service : all_services)
        for (const Api& api : *service)
            visit(*service, api);
}

// A record that some call carries, and the block inside it, each once.
inline void add_records(std::vector<const Record*>& records, const Api& api)
{
    const auto add = [&](const Record* record) {
        if (record && std::find(records.begin(), records.end(), record) == records.end())
            records.push_back(record);
    };
    for (const Record* record : {api.request, api.reply}) {
        add(record);
        add(record ? record->block : nullptr);
    }
}

// Every record that travels, each once, the blocks inside others too; of all services, or of one.
inline std::vector<const Record*> all_records()
{
    std::vector<const Record*> records;
    for_each_api([&](const Service&, const Api& api) { add_records(records, api); });
    return records;
}

inline std::vector<const Record*> records_of(const Service& service)
{
    std::vector<const Record*> records;
    for (const Api& api : service)
        add_records(records, api);
    return records;
}
