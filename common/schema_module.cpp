// The Lua module librpc.schema: the descriptions as a table, made when the
// module is opened. Lua's errors are longjmps: no destructor, no heap memory.
#include <climits>
#include <cstring>
#include <lua.hpp>

#include "common/schema.h"

// Opens the module: leaves the table on the stack.
EXPORT int luaopen_librpc_schema(lua_State* L);

namespace
{
// Lua 5.1's own integers do not hold every 32-bit value on a 32-bit host.
void set_number(lua_State* L, const char* key, int64_t value)
{
#if LUA_VERSION_NUM >= 503
    lua_pushinteger(L, value);
#else
    lua_pushnumber(L, static_cast<lua_Number>(value));
#endif
    lua_setfield(L, -2, key);
}

void set_text(lua_State* L, const char* key, std::string_view text)
{
    lua_pushlstring(L, text.data(), text.size());
    lua_setfield(L, -2, key);
}

void push_position(lua_State* L, const PositionText& described, const Position& position)
{
    const bool is_list = position.text == Text::List;
    lua_createtable(L, 0, is_list ? 6 : described.size > 0 ? 3 : 2);
    set_text(L, "name", described.name);
    set_text(L, "kind", described.kind->name);
    if (described.size > 0)
        set_number(L, "size", described.size);
    if (is_list) { // the limits of others follow from kind and size
        set_number(L, "longest", list_size - 1);
        set_number(L, "least", position.kind == Kind::Char ? CHAR_MIN : INT_MIN);
        set_number(L, "most", position.kind == Kind::Char ? CHAR_MAX : INT_MAX);
    }
}

// The positions of a text, one array for all APIs that share it: the table at
// `cache` keeps them by their form.
void push_positions(lua_State* L, int cache, const TextForm& form, Side side)
{
    lua_pushlightuserdata(L, const_cast<TextForm*>(&form));
    lua_rawget(L, cache);
    if (!lua_isnil(L, -1))
        return;
    lua_pop(L, 1);
    lua_createtable(L, form.count, 0);
    int count = 0;
    for (const Position position : form) {
        if (!has_position(position, side))
            continue;
        push_position(L, describe_position(form, position, side), position);
        lua_rawseti(L, -2, ++count);
    }
    lua_pushlightuserdata(L, const_cast<TextForm*>(&form));
    lua_pushvalue(L, -2);
    lua_rawset(L, cache);
}

// How the status of a set stands in a text that a record's formatter made of
// it: the record begins with the status, and its other positions are blank.
void push_status(lua_State* L, const TextForm& form)
{
    constexpr bool low_byte_first = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    lua_createtable(L, 0, 2);
    set_text(L, "kind", form[0].kind != Kind::Char ? "int" : low_byte_first ? "little" : "big");
    void* record = lua_newuserdata(L, form.record->size);
    memset(record, 0, form.record->size);
    auto* text = static_cast<char*>(lua_newuserdata(L, form.buffer));
    format_record(form, record, text);
    const char* rest = strstr(text, form.separator);
    lua_pushstring(L, rest ? rest : "");
    lua_setfield(L, -4, "rest");
    lua_pop(L, 2);
}

const char* name_or(const Record* record, const char* otherwise) { return record ? record->name : otherwise; }

void push_api(lua_State* L, int inputs, int outputs, const Service& service, const Api& api)
{
    const ApiName name = split_name(api);
    lua_createtable(L, 0, 13);
    set_text(L, "name", api.name);
    set_text(L, "service", service.name);
    set_number(L, "program", service.program);
    set_number(L, "procedure", api.procedure);
    set_text(L, "operation", name_of(name.operation));
    set_text(L, "table", name.table);
    set_text(L, "request", name_or(api.request, "void"));
    set_text(L, "reply", name_or(api.reply, "int"));
    set_text(L, "delimiters", api.input()->delimiters[0] ? api.input()->delimiters : "&");
    if (api.request)
        push_positions(L, inputs, *api.input(), Side::Input);
    else
        lua_newtable(L); // its argument goes nowhere
    lua_setfield(L, -2, "input");
    if (api.reply) {
        set_text(L, "separator", api.output()->separator);
        set_number(L, "longest", api.output()->buffer - 1);
        push_positions(L, same_on_both_sides(*api.output()) ? inputs : outputs, *api.output(), Side::Output);
        lua_setfield(L, -2, "output");
    } else if (api.output()) {
        push_status(L, *api.output());
        lua_setfield(L, -2, "status");
    }
}

// What the module's functions share, as upvalues: the APIs and positions that
// were made so far. Each is made when it is first asked for, because a page asks
// for a few.
enum Made : int { made_apis = 1, made_inputs, made_outputs, made_count = made_outputs };

// Pushes the API's table, the same one each time.
void push_made_api(lua_State* L, const Service& service, const Api& api)
{
    lua_getfield(L, lua_upvalueindex(made_apis), api.name);
    if (!lua_isnil(L, -1))
        return;
    lua_pop(L, 1);
    push_api(L, lua_upvalueindex(made_inputs), lua_upvalueindex(made_outputs), service, api);
    lua_pushvalue(L, -1);
    lua_setfield(L, lua_upvalueindex(made_apis), api.name);
}

// schema.api(name): the API of that name, or nil.
int find_api(lua_State* L)
{
    const std::string_view name = luaL_checkstring(L, 1);
    for (const Service* service : all_services)
        for (const Api& api : *service)
            if (api.registered() && name == api.name) {
                push_made_api(L, *service, api);
                return 1;
            }
    lua_pushnil(L);
    return 1;
}

// schema.table(name): the table's APIs by their operation, or nil.
int find_table(lua_State* L)
{
    const std::string_view name = luaL_checkstring(L, 1);
    lua_settop(L, 1);
    for (const Service* service : all_services)
        for (const Api& api : *service) {
            const ApiName parts = split_name(api);
            if (!api.registered() || parts.table != name)
                continue;
            if (lua_gettop(L) == 1)
                lua_createtable(L, 0, 3);
            push_made_api(L, *service, api);
            lua_setfield(L, 2, name_of(parts.operation));
        }
    if (lua_gettop(L) == 1)
        lua_pushnil(L);
    return 1;
}

void push_services(lua_State* L)
{
    lua_createtable(L, static_cast<int>(all_services.size()), 0);
    int number = 0;
    for (const Service* service : all_services) {
        lua_createtable(L, 0, 3);
        set_text(L, "name", service->name);
        set_text(L, "title", service->title);
        set_number(L, "program", static_cast<int64_t>(service->program));
        lua_rawseti(L, -2, ++number);
    }
}

void push_apis(lua_State* L)
{
    lua_newtable(L);
    int number = 0;
    for (const Service* service : all_services)
        for (const Api& api : *service)
            if (api.registered()) {
                push_made_api(L, *service, api);
                lua_rawseti(L, -2, ++number);
            }
}

// What is said of each kind of text, by its name.
void push_kinds(lua_State* L)
{
    lua_newtable(L);
    for (const TextKind& kind : text_kinds)
        set_text(L, kind.name, kind.meaning);
}

// The lists of the table schema, which are there from their first use on.
int make_list(lua_State* L)
{
    const std::string_view name = lua_type(L, 2) == LUA_TSTRING ? lua_tostring(L, 2) : "";
    lua_settop(L, 2);
    if (name == "services")
        push_services(L);
    else if (name == "apis")
        push_apis(L);
    else if (name == "kinds")
        push_kinds(L);
    else
        return 0;
    lua_pushvalue(L, 2);
    lua_pushvalue(L, 3);
    lua_rawset(L, 1);
    return 1;
}

// A function with everything made so far, whose tables stand on top of the stack.
void set_function(lua_State* L, int table, const char* name, lua_CFunction function)
{
    for (int i = 0; i < made_count; i++)
        lua_pushvalue(L, -made_count);
    lua_pushcclosure(L, function, made_count);
    lua_setfield(L, table, name);
}
} // namespace

int luaopen_librpc_schema(lua_State* L)
{
    lua_settop(L, 0);
    luaL_checkstack(L, 20, nullptr);
    constexpr int schema = 1, meta = 2;
    lua_createtable(L, 0, 4);
    lua_createtable(L, 0, 1);
    for (int i = 0; i < made_count; i++)
        lua_newtable(L);
    set_function(L, schema, "api", find_api);
    set_function(L, schema, "table", find_table);
    set_function(L, meta, "__index", make_list);
    lua_settop(L, meta);
    lua_setmetatable(L, schema);
    return 1;
}
