// Makes a service from its description. A service.cpp includes its records.h
// (with LIBRPC_DEFINES_XDR set) and converters.h, says
//
//     #define SERVICE service_example       the descriptor, for services.cpp
//     #define SERVICE_NAME "example"        the folder's name
//     #define SERVICE_TITLE "example tables"
//     #define SERVICE_PROGRAM 50099
//     #define SERVICE_INIT oltmib_exampleinfo_init
//     #define SERVICE_CLNT_INIT oltmib_example_clnt_init
//     #define SERVICE_CLNT_DESTROY oltmib_example_clnt_destroy
//     #define SERVICE_APIS "services/example/apis.def"
//
// and includes this file, which defines the client pair, one stub a remote
// procedure and the registration function. The rows of apis.def stand in
// registration order and spell every name whole:
//
//     API(stub, procedure, request, reply, str2arg, ret2str)
//         request: a record, or void; reply: a record, or int (a set)
//     API_RECORD_TEXT(stub, procedure, request, int, str2arg, ret2str)
//         a set whose int is formatted as if it began a record
//     STUB(stub, procedure, request, reply)
//         a procedure that Lua cannot call
//
// The rows are included once for each thing that is made of them: the checks, the
// stubs' declarations, the rows' numbers, the table of the APIs, and the stubs.
// docs/row.svg is a picture of it.
#include "common/registry.h"
#include "common/service.h"
#include "common/text.h"
#include "common/text_form.h"
#include "rpc/client.h"

// An int reply's text is the text helpers' own.
template <> struct WorkOf<int2str> {
    static constexpr bool is_defined = true;
    static constexpr Formatter value = {int2str, nullptr, nullptr};
};

namespace
{
ClientPool service_clients;
constexpr ServiceClient service_client = {SERVICE_PROGRAM, &service_clients};

// A stub's static reply. Where a set's int is formatted as a record, the
// storage is the whole record, zero behind the int.
template <class Reply, class Shown> union ReplyStorage {
    Reply reply;
    Shown shown;
};
template <class Reply> union ReplyStorage<Reply, void> {
    Reply reply;
};

template <class T> constexpr const Record* record_or_null()
{
    if constexpr (std::is_class_v<T>)
        return &record_of<T>;
    else
        return nullptr;
}

// The record that a converter's table is of; void for int2str.
template <class Table> struct EntryOf {
    using Entry = typename Table::Entry;
};
template <> struct EntryOf<void> {
    using Entry = void;
};
template <auto converter> using entry_of = typename EntryOf<typename TableOf<converter>::Table>::Entry;

// The Parser or Formatter of a converter; null where CHECK_ROW has complained.
template <auto converter> constexpr auto work_of()
{
    if constexpr (WorkOf<converter>::is_defined)
        return &WorkOf<converter>::value;
    else
        return nullptr;
}

constexpr bool same_name(const char* a, const char* b)
{
    while (*a && *a == *b)
        a++, b++;
    return *a == *b;
}

template <size_t N> constexpr bool distinct(const Api (&apis)[N])
{
    for (size_t i = 0; i < N; i++)
        for (size_t j = 0; j < i; j++)
            if (apis[i].procedure == apis[j].procedure || same_name(apis[i].name, apis[j].name))
                return false;
    return true;
}
} // namespace

EXPORT CLIENT* SERVICE_CLNT_INIT() { return get_client(service_client); }
EXPORT void SERVICE_CLNT_DESTROY() { destroy_client(service_client); }

// What the compiler can check of a row.
#define CHECK_ROW(stub, Request, parser, formatter)                                                                    \
    static_assert(WorkOf<parser>::is_defined && WorkOf<formatter>::is_defined,                                         \
                  "an API's converters are defined: name the table in CONVERTERS, PARSER or FORMATTER");               \
    static_assert(sizeof #stub <= sizeof ApiNode::name, "an API's name fits char[40] with its NUL");                   \
    static_assert(std::is_void_v<Request> || std::is_same_v<Request, entry_of<parser>>,                                \
                  "an API's parser fills the API's request record: name the table of that record");
#define API(stub, procedure, Request, Reply, parser, formatter)                                                        \
    CHECK_ROW(stub, Request, parser, formatter)                                                                        \
    static_assert(std::is_same_v<Reply, entry_of<formatter>> ||                                                        \
                      (std::is_same_v<Reply, int> && std::is_void_v<entry_of<formatter>>),                             \
                  "an API's formatter takes the API's reply: a record's own arg2str, or int2str for an int");
#define API_RECORD_TEXT(stub, procedure, Request, Reply, parser, formatter)                                            \
    CHECK_ROW(stub, Request, parser, formatter)                                                                        \
    static_assert(std::is_same_v<Reply, int> && !std::is_void_v<entry_of<formatter>>,                                  \
                  "API_RECORD_TEXT is for an int that a record's formatter formats: use API");
#define STUB(stub, procedure, Request, Reply)
#include SERVICE_APIS
#undef API
#undef API_RECORD_TEXT
#undef STUB
#undef CHECK_ROW

// Each row's place in the table, and its stub.
#define API(stub, procedure, Request, Reply, parser, formatter) EXPORT void* stub(void* argp, CLIENT* clnt);
#define API_RECORD_TEXT API
#define STUB(stub, procedure, Request, Reply) API(stub, procedure, Request, Reply, , )
#include SERVICE_APIS
#undef API

namespace
{
enum Row : unsigned {
#define API(stub, procedure, Request, Reply, parser, formatter) row_of_##stub,
#include SERVICE_APIS
#undef API
#undef API_RECORD_TEXT
#undef STUB
};

constexpr Api service_apis[] = {
#define API(stub, procedure, Request, Reply, parser, formatter)                                                        \
    {#stub, procedure,         record_or_null<Request>(), record_or_null<Reply>(),                                     \
     stub,  work_of<parser>(), work_of<formatter>()},
#define API_RECORD_TEXT API
#define STUB(stub, procedure, Request, Reply)                                                                          \
    {#stub, procedure, record_or_null<Request>(), record_or_null<Reply>(), stub},
#include SERVICE_APIS
#undef API
#undef API_RECORD_TEXT
#undef STUB
};
static_assert(distinct(service_apis), "a service's procedures and names are unique");
} // namespace

// The stubs.
#define STUB_OF(stub, Reply, Shown)                                                                                    \
    void* stub(void* argp, CLIENT* clnt)                                                                               \
    {                                                                                                                  \
        static ReplyStorage<Reply, Shown> clnt_res;                                                                    \
        return call_api(argp, clnt, service_apis[row_of_##stub], &clnt_res);                                           \
    }
#define API(stub, procedure, Request, Reply, parser, formatter) STUB_OF(stub, Reply, void)
#define API_RECORD_TEXT(stub, procedure, Request, Reply, parser, formatter) STUB_OF(stub, Reply, entry_of<formatter>)
#define STUB(stub, procedure, Request, Reply) STUB_OF(stub, Reply, void)
#include SERVICE_APIS
#undef API
#undef API_RECORD_TEXT
#undef STUB
#undef STUB_OF

EXPORT int SERVICE_INIT();
extern const Service SERVICE;
const Service SERVICE = {SERVICE_NAME,    SERVICE_TITLE,     SERVICE_PROGRAM,
                         SERVICE_INIT,    SERVICE_CLNT_INIT, SERVICE_CLNT_DESTROY,
                         &service_client, service_apis,      std::size(service_apis)};

EXPORT int SERVICE_INIT() { return register_apis(SERVICE); }
