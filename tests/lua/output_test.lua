-- What rpcctl writes without a device: cells, JSON, lines and rows in every form, in pipes
-- and on terminals; which rows its filters mean, and in which order they stand; what it
-- takes as words and as options.
local caught = require "caught"
local check = require "check"
local filters = require "rpcctl.filters"
local formats = require "rpcctl.formats"
local options = require "rpcctl.options"
local output = require "rpcctl.output"
local reading = require "rpcctl.reading"
local subject = require "rpcctl.subject"

local ends, written = caught.ends, caught.written
local bold, red, plain = caught.bold, caught.red, caught.plain

-- A text, and what is printed of it
for _, row in ipairs {
  { "", "" },
  { "plain text, 'quoted'", "plain text, 'quoted'" },
  { "tab\tline\nreturn\r", "tab\\tline\\nreturn\\r" },
  { "\27[31mred\127", "\\x1b[31mred\\x7f" },
  { "back\\slash", "back\\\\slash" },
  { "Grüße ✓ 🙂", "Grüße ✓ 🙂" },
  { "\194\155", "\\xc2\\x9b" }, -- a control character of one's own right
  { "\255\254a", "\\xff\\xfea" },
  { "cut \195", "cut \\xc3" },
  { "overlong \192\175", "overlong \\xc0\\xaf" },
  { "overlong \224\159\191", "overlong \\xe0\\x9f\\xbf" },
  { "overlong \240\143\191\191", "overlong \\xf0\\x8f\\xbf\\xbf" },
  { "the first of three and of four bytes \224\160\128 \240\144\128\128",
    "the first of three and of four bytes \224\160\128 \240\144\128\128" },
  { "a blank that does not break\194\160", "a blank that does not break\194\160" },
  { "surrogate \237\160\128", "surrogate \\xed\\xa0\\x80" },
  { "turned \226\128\174 round", "turned \\xe2\\x80\\xae round" },
  { "mark \226\128\143\216\156", "mark \\xe2\\x80\\x8f\\xd8\\x9c" },
  { "joined \226\128\141 and CJK 漢", "joined \226\128\141 and CJK 漢" },
  { "beyond \244\144\128\128", "beyond \\xf4\\x90\\x80\\x80" },
} do
  check.row(output.printable, { row[1] }, { row[2] })
end

-- A value, and its cell
for _, row in ipairs {
  { 7, "7" }, { -2147483648, "-2147483648" }, { 4294967295, "4294967295" }, { 2.5, "2.5" },
  { "18446744073709551615", "18446744073709551615" }, { { 1, 2, -3 }, "1,2,-3" }, { "a\tb", "a\\tb" },
} do
  check.row(output.cell, { row[1] }, { row[2] })
end
check.equal("no value", output.cell(nil), "")

-- A value, its order, and its JSON
for _, row in ipairs {
  { 7, nil, "7" }, { -0.25, nil, "-0.25" }, { 4294967295, nil, "4294967295" }, { 1 / 0, nil, "null" },
  { true, nil, "true" },
  { "18446744073709551615", nil, '"18446744073709551615"' },
  { 'a"b\\c\n\r\t\0\27', nil, '"a\\"b\\\\c\\n\\r\\t\\u0000\\u001b"' },
  { "c1 \194\155 rtl \226\128\174 \127", nil, '"c1 \\u009b rtl \\u202e \\u007f"' },
  { "🙂", nil, '"🙂"' },
  { 2 ^ 52 + 1, nil, "4503599627370497" }, { 2 ^ 60, nil, "1.152921504606847e+18" },
  { "Grüße\255", nil, '"Grüße\\u00ff"' },
  { { 1, "a", { 2 } }, nil, '[1,"a",[2]]' },
  { output.as_array {}, nil, "[]" },
  { {}, nil, "{}" },
  { { b = 1, a = 2 }, nil, '{"a":2,"b":1}' },
  { { b = 1, a = 2 }, { "b", "a" }, '{"b":1,"a":2}' },
  { { { b = 1, a = 2 }, { a = 3 } }, { "b", "a" }, '[{"b":1,"a":2},{"a":3}]' },
} do
  check.row(output.json, { row[1], row[2] }, { row[3] })
end

local rows = { { { "name", "header" }, { "value", "header" } }, { "ü", "1" }, { "long name", { "22", "changed" } } }
check.equal("tabs", output.lines(rows, {}), "name\tvalue\nü\t1\nlong name\t22\n")
check.equal("columns", output.lines(rows, { aligned = true }), "name       value\nü          1\nlong name  22\n")
check.equal("colours", output.lines(rows, { aligned = true, coloured = true }),
  "\27[1mname\27[0m       \27[1mvalue\27[0m\nü          1\nlong name  \27[1;33m22\27[0m\n")
check.equal("cut cells", output.lines({ { "a long text here", "b" }, { "short", "c" } }, { aligned = true, most = 10 }),
  "a long ...  b\nshort       c\n")
check.equal("a cell is as wide as its text, whatever its colour, and an empty one has no width",
  output.lines({ { { "a", "changed" }, "", "b" }, { "c", "", "d" } }, { aligned = true }), "a    b\nc    d\n")
check.equal("nothing is cut for programs", output.lines({ { "a long text here", "b" } }, { most = 10 }),
  "a long text here\tb\n")

-- What a terminal has room for
for _, row in ipairs {
  { "abc", 3 }, { "ü", 1 }, { "漢字", 4 }, { "🙂", 2 }, { "e\204\129", 1 }, { "\\xff", 4 },
  { "e\204\128", 1 }, { "λ Ж", 3 }, { "a\255b", 3 },
} do
  check.row(output.width, { row[1] }, { row[2] })
end
check.row(output.fitted, { "漢字漢字", 6 }, { "漢..." })
check.row(output.fitted, { "abcdef", 2 }, { ".." })
check.row(output.fitted, { "abcdef", 3 }, { "..." })
check.row(output.fitted, { "abcdef", 4 }, { "a..." })
check.row(output.fitted, { "abcdef", 6 }, { "abcdef" })

-- Which of some values a filter of a table's field means
for _, row in ipairs {
  { "portstat", "counter9>-9", "-100 -10 -9 -8 0 7 10 100", "-8 0 7 10 100" },
  { "portstat", "counter9<-9", "-100 -10 -9 -8 0 7 10 100", "-100 -10" },
  { "portstat", "counter9<=-9", "-10 -9 -8 0", "-10 -9" },
  { "portstat", "counter9>=-9", "-10 -9 -8 0", "-9 -8 0" },
  { "portstat", "counter9<8", "-9 -7 0 7 8 9 10", "-9 -7 0 7" },
  { "portstat", "counter9>8", "-9 -7 0 7 8 9 10", "9 10" },
  { "portstat", "counter9<=10", "-100 9 10 11 100", "-100 9 10" },
  { "portstat", "counter9=0010", "0 1 10 100", "10" },
  { "portstat", "counter9!=10", "0 10 -10", "0 -10" },
  { "portstat", "counter9=-10", "0 10 -10", "-10" },
  { "portstat", "counter9>99999999999999999998", "99999999999999999998 99999999999999999999",
    "99999999999999999999" },
  { "svi", "field1<10", "-1 9 10 100", "-1 9" }, { "svi", "field1>9", "-1 9 10 100", "10 100" },
  { "devinfo", "int1<=10", "9 10 100", "9 10" }, { "devinfo", "int1!=10", "9 10 100", "9 100" },
  { "ntp", "real1>=10", "-20 9.5 10 100.25", "10 100.25" }, { "ntp", "real1=9.50", "9.5 10", "9.5" },
  { "svi", "name<b", "a b c", "a" }, { "svi", "name>=b", "a b c", "b c" }, { "svi", "name=b", "a b c", "b" },
  { "svi", "name!=" .. ("x"):rep(40), "a b", "a b" }, -- which no row can have
  { "svi", "name~*B?d", "abcd ABED bd bbd", "abcd ABED bbd" }, { "svi", "name!~B", "abc xyz", "xyz" },
  { "svi", "name~[a.b]", "[a.b] acb", "[a.b]" }, { "svi", "name!=", "a", "a" },
  { "fdb", "mac=001e.80aa.0001", "00-1E-80-AA-00-01 00-1E-80-AA-00-02", "00-1E-80-AA-00-01" },
  { "fdb", "mac>00:1e:80:aa:00:01", "00-1E-80-AA-00-01 00-1E-80-AA-00-02", "00-1E-80-AA-00-02" },
  { "opticaldetail", "alarm=0a" .. ("0"):rep(62), ("0"):rep(64) .. " 0A" .. ("0"):rep(62), "0A" .. ("0"):rep(62) },
} do
  local this = subject.open("rows", row[1])
  local filter = filters.of(this, row[2])
  local is_number = ({ int = true, unsigned = true, real = true })[filter.field.reply.kind]
  local meant = {}
  for word in row[3]:gmatch("%S+") do
    if filter.matches { [filter.field.field] = is_number and tonumber(word) or word } then
      meant[#meant + 1] = word
    end
  end
  check.equal(row[1] .. " " .. row[2], table.concat(meant, " "), row[4])
end
local lists = filters.of(subject.open("rows", "qosifcfg"), "list1=0,1,2,3,4,5,6,7")
check.equal("a list", { lists.matches { list1 = { 0, 1, 2, 3, 4, 5, 6, 7 } },
  lists.matches { list1 = { 0, 1, 2, 3, 4, 5, 6, 8 } } }, { true, false })
for _, row in ipairs {
  { "svi", "field1=0x10",
    'rows: svi: field1: expected a number, found "0x10"; rpcctl describe TABLE shows the fields' },
  { "svi", "field1<nan", 'rows: svi: field1: expected a number, found "nan"; rpcctl describe TABLE shows the fields' },
  { "portstat", "counter9=1.5",
    'rows: portstat: counter9: expected a whole number, found "1.5"; rpcctl describe TABLE shows the fields' },
  { "svi", "=x", "rows: expected FIELD=VALUE (or != < <= > >= ~ !~), found '=x'; see rpcctl rows --help" },
  { "svi", "name!x", "rows: expected FIELD=VALUE (or != < <= > >= ~ !~), found 'name!x'; see rpcctl rows --help" },
  { "devinfo", "oper=1", "rows: expected a field of a row of devinfo, found 'oper'; see rpcctl rows --help" },
} do
  check.row(ends, { filters.of, subject.open("rows", row[1]), row[2] }, { "rpcctl: " .. row[3] .. "\n", 2 })
end
-- A field with words, and one that is secret
local told = subject.open("rows", "svi")
told.view.numbers = { field1 = { two = 2 } }
told.by_name.field1.values = { [18] = "last", [2] = "two", [9] = "nine", [17] = "next" }
check.equal("a word is its number", filters.of(told, "field1>two").matches { field1 = 3 }, true)
check.row(ends, { filters.of, told, "field1=tow" }, { 'rpcctl: rows: svi: field1: expected a number, or one of "two", '
  .. '"nine", "next", "last", found "tow"; rpcctl describe TABLE shows the fields\n', 2 })
told.by_name.field1.secret = true
check.row(ends, { filters.of, told, "field1=hush" }, { 'rpcctl: rows: svi: field1: expected a number, or one of "two", '
  .. '"nine", "next", "last", found a secret; rpcctl describe TABLE shows the fields\n', 2 })
check.equal("filters from a word on", { #filters.all(told, { "svi", "name=a", "name=b" }, 2),
  #filters.all(told, { "name=a" }) }, { 2, 1 })

-- Rows in the order of a field: numbers as numbers, texts and lists as texts; equal ones stay
for _, row in ipairs {
  { "portstat", "counter9", "10 -9 9 0 -10 007 100 -100", "-100 -10 -9 0 007 9 10 100" },
  { "portstat", "-counter9", "10 -9 9 0 -10 007 100 -100", "100 10 9 007 0 -9 -10 -100" },
  { "svi", "field1", "10 -9 9 0 100", "-9 0 9 10 100" }, { "svi", "-field1", "10 -9 9 0 100", "100 10 9 0 -9" },
  { "svi", "name", "b a c B", "B a b c" }, { "svi", "-name", "b a c B", "c b a B" },
  { "qosifcfg", "list1", "2,1 1,9 1,10", "1,10 1,9 2,1" },
} do
  local this = subject.open("rows", row[1])
  local field = row[2]:gsub("^-", "")
  local kind = this:field(field).reply.kind
  local list, sorted = {}, {}
  for word in row[3]:gmatch("%S+") do
    local value = kind == "int" and tonumber(word) or word
    if kind == "list" then
      value = {}
      for number in word:gmatch("%d+") do
        value[#value + 1] = number
      end
    end
    list[#list + 1] = { [field] = value, word = word }
  end
  reading.sort(list, reading.order(this, row[2]))
  for i, one in ipairs(list) do
    sorted[i] = one.word
  end
  check.equal(row[1] .. " by " .. row[2], table.concat(sorted, " "), row[4])
end
local twins, numbers = {}, {}
for i = 1, 12 do
  twins[i] = { field1 = i % 2, number = i }
end
reading.sort(twins, reading.order(told, "-field1"))
for i, one in ipairs(twins) do
  numbers[i] = one.number
end
check.equal("equal ones stay in their order", table.concat(numbers, " "), "1 3 5 7 9 11 2 4 6 8 10 12")
check.row(ends, { reading.order, subject.open("rows", "devinfo"), "-oper" },
  { "rpcctl: rows: expected a field of a row of devinfo, found 'oper'; see rpcctl rows --help\n", 2 })

-- Words and options. An option without a value may be said again.
local command = {
  name = "try",
  arguments = { { "FILE" }, { "TABLE", optional = true }, { "WORD", optional = true, many = true } },
  options = { { "count", "N", "times", number = 2, whole = true }, { "all", nil, "every one" },
    { "form", "FORM", "how", one_of = { "long", "short" } }, { "with", "WORD", "any", many = true } },
}
local few = { name = "few", arguments = { { "FILE" }, { "TABLE", optional = true } } }
check.equal("usage", { options.usage(command), options.usage(few), options.usage {} },
  { "FILE [TABLE] [WORD]...", "FILE [TABLE]", "" })
for _, row in ipairs {
  { { "a", "--count", "2", "--all", "--all", "-", "-5", "--with", "--all", "--with=", "--", "--count", "-h" },
    { "a", "-", "-5", "--count", "-h" }, { count = 2, all = true, with = { "--all", "" } } },
  { { "--timeout=0.001", "-h", "--form", "short", "b" }, { "b" }, { timeout = 0.001, help = true, form = "short" } },
  { { "--" }, {}, {} },
} do
  check.row(options.parse, { command, row[1], 1 }, { row[2], row[3] })
end
check.equal("from a word on", { options.parse(command, { "try", "x", "y" }, 2) }, { { "x", "y" }, {} })
for word, message in pairs {
  ["--count=1"] = "expected --count and a whole number from 2, found '1'",
  ["--count=2.5"] = "expected --count and a whole number from 2, found '2.5'",
  ["--count=0x10"] = "expected --count and a whole number from 2, found '0x10'",
  ["--count=3e1"] = "expected --count and a whole number from 2, found '3e1'",
  ["--count=1.2.3"] = "expected --count and a whole number from 2, found '1.2.3'",
  ["--timeout=0"] = "expected --timeout and a number from 0.001, found '0'",
  ["--form=sort"] = "expected --form short, found 'sort'",
  ["--form=x"] = "expected --form and one of long, short, found 'x'",
  ["--all=no"] = "expected --all without a value, found '--all=no'",
  ["--with"] = "expected WORD behind --with, found nothing",
  ["--cuont"] = "expected an option (did you mean --count?), found '--cuont'",
  ["--allow=3"] = "expected an option (did you mean --all?), found '--allow=3'",
  ["--?"] = "expected an option of --help, found '--?'", ["-x"] = "expected an option of --help, found '-x'",
} do
  check.row(ends, { options.parse, command, { word }, 1 },
    { "rpcctl: try: " .. message .. "; see rpcctl try --help\n", 2 })
end
check.row(ends, { options.parse, command, { "--form=long", "--form=long" }, 1 },
  { "rpcctl: try: expected --form once, found '--form=long' again; see rpcctl try --help\n", 2 })
for _, row in ipairs {
  { few, {}, "few: expected FILE [TABLE], found nothing" }, { few, { "a", "b", "c" }, "few: expected FILE [TABLE], "
    .. "found 'a' 'b' 'c'" }, { { name = "none" }, { "a" }, "none: expected no arguments, found 'a'" },
  { few, { "a" } }, { few, { "a", "b" } }, { command, { "a", "b", "c", "d" } }, { { name = "none" }, {} },
} do
  check.row(ends, { options.check_count, row[1], row[2] }, row[3] and { "rpcctl: " .. row[3] .. "; see rpcctl "
    .. row[1].name .. " --help\n", 2 } or { "", "nil" })
end

-- Texts in lines
for _, row in ipairs {
  { "one two six", "  ", 9, "one two\n  six" }, { "one twoo", "", 7, "one\ntwoo" }, { "one two", "", 7, "one two" },
  { "elephant cat", "", 5, "elephant\ncat" }, { "a b\nc\n\nd", "  ", 20, "a b\n  c\n\n  d" }, { "", "", 9, "" },
} do
  check.row(options.wrapped, { row[1], row[2], row[3] }, { row[4] })
end

-- Some rows in a form
local function in_form(form, columns, list, settings, room, coloured)
  return written(function(_, unsent)
    settings.people = room ~= nil
    local writer = formats.writer(form, columns, settings)
    for _, row in ipairs(list) do
      writer:row(row)
      check.equal(form .. ": a row is on its way at once", form ~= "table" and unsent(), false)
    end
    writer:finish()
  end, room, coloured)
end

local columns = {
  { name = "key", key = true }, { name = "text" }, { name = "none" }, { name = "res", minor = true },
  { name = "speed", unit = "Mbit/s" }, { name = "password", secret = true },
  { name = "state", style = function(row) return row.state == "down" and "wrong" end },
  { name = "sum", of = function(row) return row.key + 1 end },
}
local two = {
  { key = 1, text = 'a,"b', none = "", res = 0, speed = 1000, password = "x", state = "up" },
  { key = 22, text = "c d", none = "", res = 7, speed = "", password = "", state = "down" },
}
for _, row in ipairs {
  { "tsv", {}, '1\ta,"b\t\t0\t1000\t(set)\tup\t2\n22\tc d\t\t7\t\t\tdown\t23\n' },
  { "tsv", { header = true, secrets = true }, "key\ttext\tnone\tres\tspeed\tpassword\tstate\tsum\n"
    .. '1\ta,"b\t\t0\t1000\tx\tup\t2\n22\tc d\t\t7\t\t\tdown\t23\n' },
  { "csv", {}, 'key,text,none,res,speed,password,state,sum\n1,"a,""b",,0,1000,(set),up,2\n22,c d,,7,,,down,23\n' },
  { "kv", {}, 'key=1 text="a,\\"b" none="" res=0 speed=1000 password="(set)" state=up sum=2\n'
    .. 'key=22 text="c d" none="" res=7 speed="" password="" state=down sum=23\n' },
  { "jsonl", {}, '{"key":1,"text":"a,\\"b","none":"","res":0,"speed":1000,"password":"(set)","state":"up","sum":2}\n'
    .. '{"key":22,"text":"c d","none":"","res":7,"speed":"","password":"","state":"down","sum":23}\n' },
  { "json", { secrets = true },
    '[{"key":1,"text":"a,\\"b","none":"","res":0,"speed":1000,"password":"x","state":"up","sum":2},\n'
    .. '{"key":22,"text":"c d","none":"","res":7,"speed":"","password":"","state":"down","sum":23}]\n' },
  { "vertical", {}, 'key\t1\ntext\ta,"b\nnone\t\nres\t0\nspeed\t1000\npassword\t(set)\nstate\tup\nsum\t2\n\n'
    .. "key\t22\ntext\tc d\nnone\t\nres\t7\nspeed\t\npassword\t\nstate\tdown\nsum\t23\n" },
  { "table", {}, "key  text  speed  password  state  sum\n"
    .. '1    a,"b  1000   (set)     up     2\n22   c d                    down   23\n' },
  { "table", { chosen = true }, "key  text  none  res  speed  password  state  sum\n"
    .. '1    a,"b        0    1000   (set)     up     2\n22   c d         7                     down   23\n' },
} do
  check.equal(row[1] .. " in a pipe", in_form(row[1], columns, two, row[2]), row[3])
end
check.equal("one row in a pipe", in_form("table", { columns[1] }, { two[1] }, {}), "key\n1\n")
check.equal("no rows in a pipe", { in_form("table", columns, {}, {}), in_form("json", columns, {}, {}),
  in_form("csv", columns, {}, {}), in_form("tsv", columns, {}, {}), in_form("vertical", columns, {}, {}) },
  { "", "[]\n", "key,text,none,res,speed,password,state,sum\n", "", "" })
check.equal("no rows on a terminal: what there would be", in_form("table", columns, {}, {}, 80),
  "key  text  none  speed  password  state  sum\n")
check.equal("a key that is empty stands there", in_form("table", columns, { { key = 1, state = "" } },
  {}, 80), "key  sum\n1    2\n")
check.equal("an empty key", in_form("table", { { name = "name", key = true }, { name = "b" } },
  { { name = "", b = 1 } }, {}, 80), "name  b\n      1\n")
check.equal("on a terminal in colours", in_form("table", columns, two, {}, 80, true),
  (("H(key)  H(text)  H(speed)  H(password)  H(state)  H(sum)\n"):gsub("H%((%w+)%)", bold .. "%1" .. plain))
  .. '1    a,"b  1000   (set)     up     2\n22   c d                    ' .. red .. "down" .. plain .. "   23\n")
check.equal("one below the other", in_form("vertical", columns, two, {}, 80), 'key       1\ntext      a,"b\n'
  .. "speed     1000 Mbit/s\npassword  (set)\nstate     up\nsum       2\n\n"
  .. "key       22\ntext      c d\nstate     down\nsum       23\n")
check.equal("those that were asked for", in_form("vertical", { columns[3], columns[4], columns[5], columns[7] },
  { two[2] }, { chosen = true }, 80, true), bold .. "none" .. plain .. "   \n" .. bold .. "res" .. plain .. "    7\n"
  .. bold .. "speed" .. plain .. "  \n" .. bold .. "state" .. plain .. "  " .. red .. "down" .. plain .. "\n")

-- Columns share what room there is: twelve for each, then from the left what is left
local wide = { { name = "a" }, { name = "b" } }
local cells = { { a = "ABCDEFGHIJKLMN", b = "abcdefghijklmnopqrst" } }
for room, expected in pairs {
  [25] = "a\nABCDEFGHIJKLMN\nnot shown for want of ...\n",
  [26] = "a             b\nABCDEFGHI...  abcdefghi...\n",
  [27] = "a              b\nABCDEFGHIJ...  abcdefghi...\n",
  [30] = "a               b\nABCDEFGHIJKLMN  abcdefghijk...\n",
  [36] = "a               b\nABCDEFGHIJKLMN  abcdefghijklmnopqrst\n",
} do
  check.equal("in " .. room .. " columns", in_form("table", wide, cells, {}, room), expected)
end
check.equal("those left out are named", in_form("table", { wide[1], wide[2], { name = "description" } },
  { { a = "A", b = ("b"):rep(50), description = "x" } }, {}, 27, true),
  bold .. "a" .. plain .. "  " .. bold .. "b" .. plain .. "\nA  " .. ("b"):rep(21) .. "...\n"
  .. "\27[2mnot shown for want of ro..." .. plain .. "\n")
check.equal("no column is wider than forty", in_form("table", { wide[1] }, { { a = ("x"):rep(41) } }, {}, 80),
  "a\n" .. ("x"):rep(37) .. "...\n")
check.equal("asked for and too wide", in_form("table", wide, { cells[1], { a = "", b = "c" } }, { chosen = true }, 25),
  "a  ABCDEFGHIJKLMN\nb  abcdefghijklmnopqrst\n\na  \nb  c\n")
local asked = { chosen = true, people = true }
written(function()
  local lines, left_out = formats.screen(wide, cells, asked, 25)
  check.equal("a screen of those that fit", { lines, left_out, asked.chosen },
    { { "a\n", "ABCDEFGHIJKLMN\n" }, { "b" }, true })
  lines, left_out = formats.screen(wide, { cells[1], { a = "x", b = "y" } }, asked, 26)
  check.equal("of all", { lines, left_out },
    { { "a             b\n", "ABCDEFGHI...  abcdefghi...\n", "x             y\n" }, {} })
end, 25)

-- The first rows wait until the columns are chosen: a hundred of them, or half a second
local clock = require "librpc.record.clock"
local now = 10
package.loaded["librpc.record.clock"] = function() return now end
written(function(so_far, unsent)
  local writer = formats.writer("table", { { name = "a" } }, { people = true })
  local expected = "a\n"
  for i = 10, 108 do
    writer:row { a = i }
    expected = expected .. i .. "\n"
  end
  check.equal("99 rows wait", so_far(), "")
  writer:row { a = 109 }
  expected = expected .. "109\n"
  check.equal("a hundred do not", { so_far(), unsent() }, { expected, false })
  writer:row { a = 12345 }
  check.equal("nor does any behind them", { so_far(), unsent() }, { expected .. "...\n", false })
  writer:finish()
  writer = formats.writer("table", { { name = "b" } }, { people = true })
  now = 10.25
  writer:row { b = 1 }
  check.equal("a quarter of a second", so_far(), expected .. "...\n")
  now = 10.5
  writer:row { b = 2 }
  check.equal("half a second", so_far(), expected .. "...\nb\n1\n2\n")
end, 80)
package.loaded["librpc.record.clock"] = clock

-- Which form
local function form_of(given, default)
  return (formats.settings(given, default))
end
written(function()
  check.equal("forms in a pipe", { form_of({}), form_of({}, "vertical"), form_of({ json = true }, "vertical"),
    form_of({ format = "kv" }) }, { "tsv", "vertical", "json", "kv" })
end)
written(function()
  check.equal("forms on a terminal", { form_of({}), form_of({}, "vertical"), form_of({ json = true }),
    form_of({ format = "kv", json = true }) }, { "table", "vertical", "json", "kv" })
  check.equal("settings", { formats.settings { fields = "a", header = true, ["show-secrets"] = true } },
    { "table", { chosen = true, header = true, secrets = true, people = true } })
  check.equal("what is not asked for", { formats.settings {} }, { "table", { chosen = false, people = true } })
end, 80)
check.equal("words", { formats.word "", formats.word "a b", formats.word 'a"b', formats.word "a-b", formats.word "*" },
  { '""', '"a b"', '"a\\"b"', "a-b", '"*"' })

check.finish()
