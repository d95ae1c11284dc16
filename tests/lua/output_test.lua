-- How rpcctl writes: cells, JSON and lines.
local check = require "check"
local output = require "rpcctl.output"

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

check.finish()
