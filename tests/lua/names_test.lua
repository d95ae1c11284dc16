-- librpc.names: files of names and each mistake in one, and what librpc.record makes
-- of them, without daemons.
local check = require "check"
local shell = require "shell"

local source = os.getenv("LIBRPC_TEST_SOURCE")
local calls, answers = {}, {}
package.loaded["librpc"] = {
  callapi = function(name, argument)
    calls[#calls + 1] = name .. " " .. argument
    return table.remove(answers, 1)
  end,
}
package.loaded["librpc.status"] = { last = function() end }
local names = require "librpc.names"
local record = require "librpc.record"

local folder = os.tmpname()
os.remove(folder)
assert(shell.run("mkdir " .. folder))

local function write(name, text)
  local path = folder .. "/" .. name
  local file = assert(io.open(path, "w"))
  file:write(text)
  file:close()
  return path
end

-- Without names everything reads as the schema has it.
check.equal("nothing is loaded", names.tables, {})
check.equal("fields without names", names.fields("agsys"), {
  { field = "field1", name = "field1", title = "field1", kind = "int", argument = true },
  { field = "text", name = "text", title = "text", kind = "text", size = 32, argument = true },
  { field = "oper", name = "oper", title = "oper", kind = "int", argument = true },
  { field = "res", name = "res", title = "res", kind = "int", argument = true },
})
check.row(names.fields, { "agsy" },
  { "nil", 'librpc: expected the name of a table (did you mean agsys?), found "agsy"', "unknown_api" })

local roles = "enabled, errors_in, errors_out, link, octets_in, octets_out, packets_in, packets_out, port, "
  .. "port_name, speed"

-- Each mistake: the file, then "TABLE: FIELD: WORD: expected X, found Y".
local path = folder .. "/wrong.lua"
for _, row in ipairs {
  { "return {", "expected Lua that returns a table, found line 1: " },
  { "return 5", "expected Lua that returns a table, found 5" },
  { "", "expected Lua that returns a table, found nil" },
  { "print()", "expected Lua that returns a table, found line 1: " },
  { "local x = nil .. 1", "expected Lua that returns a table, found line 1: " },
  { "error { 1 }", "expected Lua that returns a table, found line 1: ", true },
  { "\27Lua", "expected Lua as text, found compiled Lua" },
  { "return { sv = {} }", 'expected the name of a table (did you mean svi?), found "sv"' },
  { "return { [5] = {} }", "expected the name of a table, found 5" },
  { "return { svi = 5 }", "svi: expected a table of what is known of it, found 5" },
  { "return { svi = { 5 } }",
    "svi: expected a field of the table, or one of description, ends, key, table_role, title, found 1" },
  { "return { svi = { feild1 = {} } }",
    "svi: expected a field of the table, or one of description, ends, key, table_role, title "
    .. '(did you mean field1?), found "feild1"' },
  { "return { svi = { title = 5 } }", "svi: title: expected a text of one line, found 5" },
  { "return { svi = { title = 'a\\nb' } }", 'svi: title: expected a text of one line, found "a\\nb"' },
  { "return { svi = { description = '' } }", 'svi: description: expected a text, found ""' },
  { "return { svi = { key = 'field1' } }", 'svi: key: expected a list of fields, found "field1"' },
  { "return { svi = { key = { a = 'field1' } } }", "svi: key: expected a list of fields, found a table" },
  { "return { svi = { key = { 'vlan' } } }", 'svi: key: expected fields that the argument carries, found "vlan"' },
  { "return { portstat = { key = { 'counter9' } } }",
    'portstat: key: expected fields that the argument carries, found "counter9"' },
  { "return { svi = { key = { 'field1', 'field1' } } }", 'svi: key: expected each field once, found "field1" again' },
  { "return { svi = { ends = 1 } }", "svi: ends: expected a list of numbers, found 1" },
  { "return { svi = { ends = {} } }", "svi: ends: expected a list of numbers, found a table" },
  { "return { svi = { ends = { 0 } } }", "svi: ends: expected a list of whole numbers that are not 0, found 0" },
  { "return { ['*'] = { title = 'a' } }", '*: expected ends and nothing else, found "title"' },
  { "return { svi = { field1 = 'vlan' } }",
    'svi: field1: expected a table of what is known of the field, found "vlan"' },
  { "return { svi = { field1 = { nam = 'vlan' } } }", "svi: field1: expected one of description, exact, name, role, "
    .. 'secret, title, unit, values (did you mean name?), found "nam"' },
  { "return { svi = { field1 = { name = 'a b' } } }",
    'svi: field1: name: expected a name of letters, digits and underscores, found "a b"' },
  { "return { svi = { field1 = { name = 1 } } }",
    "svi: field1: name: expected a name of letters, digits and underscores, found 1" },
  { "return { svi = { field1 = { name = 0 / 0 } } }",
    "svi: field1: name: expected a name of letters, digits and underscores, found " },
  { "return { svi = { field1 = { name = 'name' } } }",
    'svi: field1: name: expected a name of its own, found "name", which is name\'s' },
  { "return { svi = { field1 = { name = 'a' }, field3 = { name = 'a' } } }",
    'svi: field3: name: expected a name of its own, found "a", which is field1\'s' },
  { "return { svi = { field1 = { unit = '' } } }", 'svi: field1: unit: expected a text of one line, found ""' },
  { "return { svi = { field1 = { title = {} } } }", "svi: field1: title: expected a text of one line, found a table" },
  { "return { svi = { field1 = { description = 1 } } }", "svi: field1: description: expected a text, found 1" },
  { "return { svi = { table_role = 'devise' } }",
    'svi: table_role: expected one of device (did you mean device?), found "devise"' },
  { "return { svi = { field1 = { role = 'ports' } } }", "svi: field1: role: expected one of " .. roles
    .. ' (did you mean port?), found "ports"' },
  { "return { svi = { field1 = { role = 1 } } }", "svi: field1: role: expected one of " .. roles .. ", found 1" },
  { "return { svi = { field1 = { secret = 1 } } }", "svi: field1: secret: expected true or false, found 1" },
  { "return { svi = { field1 = { exact = true } } }",
    "svi: field1: exact: expected nothing, because only a real prints less than it holds, found true" },
  { "return { ntp = { real1 = { exact = 1 } } }", "ntp: real1: exact: expected true or false, found 1" },
  { "return { svi = { field3 = { values = { [0] = 'a' } } } }",
    "svi: field3: values: expected none, because the field is no whole number, found some" },
  { "return { svi = { field1 = { values = 1 } } }", "svi: field1: values: expected words by their numbers, found 1" },
  { "return { svi = { field1 = { values = {} } } }",
    "svi: field1: values: expected words by their numbers, found a table" },
  { "return { svi = { field1 = { values = { off = 0 } } } }",
    'svi: field1: values: expected whole numbers in brackets, found "off"' },
  { "return { svi = { field1 = { values = { [0] = 0 } } } }",
    "svi: field1: values: expected a text of one line for 0, found 0" },
  { "return { svi = { field1 = { values = { [0] = 'a', [1] = 'a' } } } }",
    'svi: field1: values: expected words of their own, found "a" twice' },
  { "return { svi = { field1 = { values = { [1] = '2' } } } }",
    'svi: field1: values: expected a word for 1 that is no other number, found "2"' },
} do
  write("wrong.lua", row[1])
  local right, message, code, mistakes = names.check(path)
  if row[3] then
    check.equal(row[1], { right == nil, code, #mistakes }, { true, "bad_names", 1 })
  else
    local expected = path .. ": " .. row[2]
    check.equal(row[1], { right == nil, message and message:sub(1, #expected), code, #mistakes },
      { true, expected, "bad_names", 1 })
  end
end
os.remove(path)
check.row(names.check, { path }, { "nil", path .. ": expected a file that can be read, found No such file or directory",
  "bad_names", { path .. ": expected a file that can be read, found No such file or directory" } })
check.equal("a folder is no file", select(3, names.check(folder)), "bad_names")

-- All mistakes at once, and nothing of the file applied.
write("wrong.lua", "return { svi = { title = 'Right', field1 = { name = 'vlan', unit = 5 } }, agsys = 1 }")
local _, message = names.load(path)
check.equal("every mistake", message, path .. ": agsys: expected a table of what is known of it, found 1\n"
  .. path .. ": svi: field1: unit: expected a text of one line, found 5")
check.equal("nothing half applied", { names.tables, (record.encode("oltmib_svi_set_1", { field1 = 1 })) }, { {}, "1" })

-- The files that come with it are right.
check.row(names.check, { source .. "/sim/names.lua" }, { true })
check.row(names.check, { source .. "/docs/reference/names.lua" }, { true })

-- The empty one has every table and every field.
local function fields_of(apis)
  local list = {}
  for _, api in ipairs(apis) do
    for _, positions in ipairs { api.input, api.output or {} } do
      for _, position in ipairs(positions) do
        list[position.name] = {}
      end
    end
  end
  return list
end
local by_table = {}
for _, api in ipairs(require("librpc.schema").apis) do
  by_table[api.table] = by_table[api.table] or {}
  table.insert(by_table[api.table], api)
end
local empty = dofile(source .. "/docs/reference/names.lua")
for table_name, apis in pairs(by_table) do
  check.equal("the empty names of " .. table_name, empty[table_name], fields_of(apis))
end

-- One file, and another over it, word by word.
local first = write("first.lua", [[
  local words = { [0] = "auto", [1000] = "1000", [100] = "100" }
  return {
    portinfo = {
      title = "Ports", key = { "ifx" }, description = "Every port.",
      ifx = { name = "port" },
      field8 = { name = "speed", title = "Speed", unit = "Mbit/s", values = words },
      field5 = { values = { [0] = "down", [1] = "up" } },
      field3 = { name = "label" },
    },
  }]])
local second = write("second.lua", [[
  return {
    portinfo = { title = "All ports", field8 = { unit = "MBit/s", secret = true }, field3 = { name = "note" } },
    lldpifnei = { text1 = { name = "chassis" } },
  }]])
check.row(names.load, { first }, { true })
check.row(names.load, { second }, { true })
check.equal("as data", names.tables.portinfo, {
  title = "All ports", key = { "ifx" }, description = "Every port.", fields = {
    ifx = { name = "port" },
    field8 = { name = "speed", title = "Speed", unit = "MBit/s", secret = true,
      values = { [0] = "auto", [1000] = "1000", [100] = "100" } },
    field5 = { values = { [0] = "down", [1] = "up" } },
    field3 = { name = "note" },
  },
})
local fields = names.fields("portinfo")
check.equal("fields with names", { fields[1], fields[6] }, {
  { field = "ifx", name = "port", title = "port", kind = "int", key = true, argument = true },
  { field = "field8", name = "speed", title = "Speed", unit = "MBit/s", secret = true, kind = "int", argument = true,
    values = { [0] = "auto", [1000] = "1000", [100] = "100" } },
})
check.equal("a table by its API's name", names.fields("oltmib_portinfo_set_1")[6].name, "speed")
write("wrong.lua", "return { portinfo = { ifx = { name = 'speed' } } }")
check.equal("a name that an earlier file gave", (select(2, names.load(path))), path
  .. ': portinfo: ifx: name: expected a name of its own, found "speed", which is field8\'s')

-- Arguments: either name, words or numbers.
local port = "oltmib_portinfo_set_1"
for _, row in ipairs {
  { { port = 3, speed = "auto" }, "3&&&&&0" },
  { { ifx = 3, field8 = "auto" }, "3&&&&&0" },
  { { port = 3, speed = 100 }, "3&&&&&100" },
  { { port = 3, speed = "1000" }, "3&&&&&1000" },
  { { port = 3, speed = "10" }, "3&&&&&10" },
  { { port = 3, field5 = "up" }, "3&&&&1" },
} do
  check.row(record.encode, { port, row[1] }, { row[2] })
end
check.row(record.encode, { port, { speed = "fast" } }, { "nil", 'oltmib_portinfo_set_1: speed: expected a whole '
  .. 'number, or one of "auto", "100", "1000", found a secret', "bad_number" })
check.row(record.encode, { port, { field5 = "upp" } }, { "nil", 'oltmib_portinfo_set_1: field5: expected a whole '
  .. 'number, or one of "down", "up", found "upp"', "bad_number" })
check.equal("a form's words", record.check(port, { field5 = "upp" }).field5.limits,
  { least = -2147483648, most = 2147483647, words = { "down", "up" } })
for name, form in pairs { chassis = { value1 = 1, oper = 5 }, text1 = { value1 = 1, text1 = "", oper = 5 } } do
  local wrong = record.check("oltmib_lldpifnei_get_1", form)
  check.equal("an empty text by the name that the form has, or by its own", { next(wrong) == name,
    wrong[name] and wrong[name].code }, { true, "empty_text" })
end
local both = "found field8 and speed"
local _, twice, code = record.encode(port, { speed = 1, field8 = 1 })
check.equal("both names at once", { twice:match("expected one name of the field, (.*)"), code }, { both, "same_field" })
check.row(record.encode, { port, { sped = 1 } }, { "nil", "oltmib_portinfo_set_1: expected one of its fields "
  .. '(did you mean speed?), found "sped"', "unknown_field" })

-- Rows: by the given names with words; by the schema's with numbers.
local function reply(number, speed)
  return ("%d&ge%d&a label&1&1&%d&1&&&1&1&1500&0&0&1&0&1&0&1&1&0&&0&0"):format(number, number, speed)
end
local row = record.decode("oltmib_portinfo_get_1", reply(3, 0))
check.equal("a row", { row.port, row.speed, row.note, row.field5, row.field4 }, { 3, "auto", "a label", "up", 1 })
check.equal("by the schema's names", { row.ifx, row.field8, row.field3 }, { 3, 0, "a label" })
check.equal("a number without a word", record.decode("oltmib_portinfo_get_1", reply(3, 10)).speed, 10)
check.equal("each field once", { rawget(row, "field8") == nil, rawget(row, "ifx") == nil }, { true, true })
row.field8 = 100
check.equal("what is put in by the schema's name", { row.speed, row.field8 }, { 100, 100 })
check.equal("goes back once", record.encode(port, record.carried(port, row)):match("^3&ge3&a label&1&1&100&") ~= nil,
  true)
check.equal("what is sent back has the schema's names and numbers",
  record.carried(port, record.decode("oltmib_portinfo_get_1", reply(3, 0))).field8, 0)

-- Reading, walking and changing.
calls, answers = {}, { reply(1, 1000), reply(2, 0), (reply(0, 0):gsub("0$", "1")) }
local rows, why = record.rows("portinfo", nil, { next = function(each)
  return { port = each.port, speed = each.speed }
end })
check.equal("a walk", { rows[1].speed, rows[2].speed, #rows, why }, { "1000", "auto", 2, "res" })
check.equal("asks in numbers", calls,
  { "oltmib_portinfo_getn_1 ", "oltmib_portinfo_getn_1 1&&&&&1000", "oltmib_portinfo_getn_1 2&&&&&0" })
answers = { reply(3, 0), "0" }
local status, changed = record.change("portinfo", { port = 3 }, { speed = 1000, label = nil, note = "b" })
check.equal("a change", { status, changed },
  { 0, { speed = { before = "auto", after = "1000" }, note = { before = "a label", after = "b" } } })
check.row(record.get, { "portinfo", {} }, { "nil", "portinfo: key: expected port, found no port", "no_key" })
answers = { "x" .. reply(3, 0) }
check.row(record.get, { "portinfo", { port = 3 } },
  { "nil", 'oltmib_portinfo_get_1: port: expected a whole number, found "x3"', "bad_text", "nil" })
answers = { reply(3, 100) }
check.equal("another row's secret", (select(2, record.get("portinfo", { port = 3, speed = 1000 }))),
  "oltmib_portinfo_get_1: speed: expected the row of that key, found a secret of another")
answers = { reply(1, 1000), reply(1, 1000) }
check.equal("a row of secrets again", (select(2, record.rows("portinfo"))),
  "oltmib_portinfo_getn_1: expected another row, found one again")
answers = { (reply(3, 0):gsub("&0&", "&many&", 1)) }
check.row(record.get, { "portinfo", { port = 3 } },
  { "nil", "oltmib_portinfo_get_1: speed: expected a whole number, found a secret", "bad_text", "nil" })

-- Which files are loaded.
local function loaded(environment, expression)
  return (shell.run(("%s %s -e 'local n = require \"librpc.names\" io.write(tostring(%s))' 2>&1"):format(environment,
    shell.interpreter, expression)))
end
local title = "n.tables.portinfo and n.tables.portinfo.title"
check.equal("no file", loaded("LIBRPC_NAMES=", title), "nil")
check.equal("LIBRPC_NAMES", loaded("LIBRPC_NAMES=" .. first, title), "Ports")
check.equal("several", loaded("LIBRPC_NAMES=" .. first .. ":" .. second, title), "All ports")
check.equal("later ones over earlier", loaded("LIBRPC_NAMES=" .. second .. ":" .. first, title), "Ports")
local mistake = path .. ': portinfo: ifx: name: expected a name of its own, found "speed", which is field8\'s'
check.equal("a mistake in one is none used",
  loaded("LIBRPC_NAMES=" .. first .. ":" .. path, "select(2, pcall(function() return n.tables end))"), mistake)
check.equal("and record says so", loaded("LIBRPC_NAMES=" .. first .. ":" .. path,
  'table.concat({ select(2, require("librpc.record").encode("oltmib_svi_set_1", {})) }, " ")'), mistake .. " bad_names")
for _, call in ipairs { 'get("svi", { field1 = 1 })', 'change("svi", { field1 = 1 })', 'rows("svi")',
  'call("oltmib_svi_get_1")', 'check("oltmib_svi_get_1", {})', 'decode("oltmib_svi_get_1", "")' } do
  check.equal(call .. " refuses too", loaded("LIBRPC_NAMES=" .. path .. ":" .. first .. ":" .. path,
    'select(3, require("librpc.record").' .. call .. ")"), "bad_names")
end
check.equal("a later file over a mistake", loaded("LIBRPC_NAMES=" .. first .. ":" .. path,
  'select(3, n.load("' .. second .. '"))'), "bad_names")

-- What was right once is not looked through again; another text is.
local kept = folder .. "/kept"
local function loaded_again(text)
  local file = write("again.lua", text)
  return (loaded("LIBRPC_NAMES=" .. file, ("n.keep(%q) or select(2, n.loaded()) or n.tables.svi.title")
    :format(kept):gsub('"', "[[", 1):gsub('"', "]]", 1)):gsub("^.*/again.lua: ", ""))
end
-- Every kind that says which row, and none of the others.
for _, each in ipairs { { "svi", "field1", true }, { "devinfo", "int1", true }, { "svi", "name", true },
  { "fdb", "mac", true }, { "mstp_ifstate", "bytes1", true }, { "qosifcfg", "list1" }, { "ntp", "real1" },
  { "devinfo", "mac" } } do
  local right, problem = names.load(write("key.lua", ("return { %s = { key = { %q } } }"):format(each[1], each[2])))
  check.equal(each[1] .. ": key " .. each[2], right or problem:match("fields that the argument carries"),
    each[3] or "fields that the argument carries")
end

local right, mistaken = "return { svi = { title = [[a]] } }", "return { svi = { title = [[a]], field1 = { nam = 1 } } }"
check.equal("a right file", loaded_again(right), "a")
check.equal("is kept", shell.run("tail -n 1 " .. kept), right)
check.equal("one with a mistake", loaded_again(mistaken):match("^svi: field1: expected one of"),
  "svi: field1: expected one of")
check.equal("is not", shell.run("tail -n 1 " .. kept), right)
check.equal("the right one again", loaded_again(right), "a")
shell.run(("{ echo '%s/again.lua: %d' && printf %%s '%s'; } > %s"):format(folder, #mistaken, mistaken, kept))
check.equal("what is kept is not looked through", loaded_again(mistaken), "a")
check.equal("what is not kept is", loaded_again(mistaken .. " "):match("^svi: field1: expected one of"),
  "svi: field1: expected one of")

-- The folder, in a mount namespace whose /etc is ours.
local function with_folder(commands, expression)
  local inside = "unshare -m sh -c 'mount -t tmpfs none /etc && mkdir -p /etc/librpc/names && unset LIBRPC_NAMES && "
    .. '%s %s -e "local names = require([[librpc.names]]) io.write(tostring(%s))"\' 2>&1'
  return (shell.run(inside:format(commands, shell.interpreter, expression)))
end
if shell.run("id -u") == "0\n" then
  check.equal("/etc/librpc/names", with_folder(("cp %s /etc/librpc/names/10.lua && cp %s /etc/librpc/names/20.lua && "
    .. "cp %s /etc/librpc/names/30.txt &&"):format(first, second, path), "names.tables.portinfo.title"), "All ports")
  check.equal("an empty folder", with_folder("", "next(names.tables)"), "nil")
  check.equal("a folder that cannot be listed", with_folder("PATH=/nowhere",
    "select(2, names.loaded()):match([[^.*expected a folder that can be read, found .]])"),
    "/etc/librpc/names: expected a folder that can be read, found s")
end

shell.run("rm -r " .. folder)
check.finish()
