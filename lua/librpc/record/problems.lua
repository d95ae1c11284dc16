-- What librpc.record says when something is wrong: the codes, the shape of a
-- message, the suggestion for a misspelt name. Loaded when the first is wanted.
local problems = {}

-- What each code of librpc.record means; a failed call has librpc.status's.
problems.codes = {
  unknown_api = "no API, or no table, of that name",
  unknown_field = "the API has no field of that name",
  read_only = "the API's argument does not carry that field",
  bad_type = "a value of another type",
  bad_number = "not a number of that kind",
  out_of_range = "the number does not fit",
  bad_mac = "not a MAC address",
  bad_hex = "not bytes in hexadecimal digits",
  bad_list = "not a list of that many numbers",
  too_long = "the text would be cut",
  separator = "the text holds a character that separates fields",
  zero_byte = "the text holds a zero byte, which would end it",
  empty_text = "an empty text where the fields behind it would move up",
  not_carried = "a field that cannot be sent back as it was read",
  cut_reply = "the reply is as long as it can be: its end may be missing",
  bad_text = "the reply's text is not the API's",
  other_row = "the daemon answered with another row",
  no_end = "nothing says which row is the last",
  daemon_status = "the daemon's own result is not 0",
  repeated_row = "the daemon gave a row again",
  too_many_rows = "the daemon gave more rows than the limit",
}

-- A value as a message shows it: short, on one line, printable.
local function shown(value)
  if type(value) ~= "string" then
    return type(value) == "table" and "a table" or tostring(value)
  end
  local cut = #value > 40
  local text = value:sub(1, 40):gsub("[%c\127-\255\\\"]", function(byte)
    return (byte == '"' or byte == "\\") and "\\" .. byte or ("\\x%02x"):format(byte:byte())
  end)
  return '"' .. text .. '"' .. (cut and ("... (%d characters)"):format(#value) or "")
end

-- nil, "WHERE: expected X, found Y" and the code.
function problems.fail(code, where, expected, found)
  return nil, ("%s: expected %s, found %s"):format(where, expected, found), code
end

problems.shown = shown

-- How many single edits lie between two names.
local function distance(a, b)
  local row = {}
  for j = 0, #b do
    row[j] = j
  end
  for i = 1, #a do
    local diagonal = row[0]
    row[0] = i
    for j = 1, #b do
      local edit = a:byte(i) == b:byte(j) and diagonal or diagonal + 1
      diagonal = row[j]
      row[j] = math.min(edit, row[j] + 1, row[j - 1] + 1)
    end
  end
  return row[#b]
end

-- The name of the list that is closest to a wrong one, where one is close.
function problems.nearest(name, names)
  local best, least = nil, math.max(1, math.floor(#name / 3)) + 1
  for _, candidate in ipairs(names) do
    local edits = distance(name, candidate)
    if edits < least then
      best, least = candidate, edits
    end
  end
  return best
end

return problems
